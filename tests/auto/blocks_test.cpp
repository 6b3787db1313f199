// Removal of block artifacts without loss of brightness, and the coding quality that it goes by.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "hosts/auto/auto_jpeg.h"
#include "tests/auto/scenes.h"
#include "vxicore26.h"

namespace vx::test {
namespace {

constexpr int kWhite = 32767;

// One round trip without a shift is what a JPEG file does to a picture.
Bytes coded(const Scene& scene, int quality) {
  Bytes raster(scene, 255);
  vxUnblock(0, raster.samples.data(), 3, 3 * raster.width, raster.width, raster.height, quality, 0,
            8, 0);
  return raster;
}

Words deepened(const Bytes& bytes) {
  Words words(Scene(bytes.width, bytes.height), kWhite);
  for (std::size_t i = 0; i < bytes.samples.size(); ++i)
    words.samples[i] = static_cast<std::uint16_t>((bytes.samples[i] * kWhite + 127) / 255);
  return words;
}

Words unblocked(const Bytes& bytes, int quality) {
  Words words = deepened(bytes);
  EXPECT_EQ(vxAutoRemoveBlocks(words.samples.data(), 3 * words.width, words.width, words.height,
                               kWhite, quality, 0, 1),
            1);
  return words;
}

template <class Sample>
double mean(const Raster<Sample>& raster) {
  double sum = 0;
  for (const Sample sample : raster.samples) sum += sample;
  return 255 * sum / raster.white / static_cast<double>(raster.samples.size());
}

template <class Sample>
double psnr(const Scene& scene, const Raster<Sample>& raster) {
  double sum = 0;
  for (std::size_t i = 0; i < raster.samples.size(); ++i) {
    const double level = std::clamp(std::round(static_cast<double>(scene.samples[i])), 0.0, 255.0);
    sum += std::pow(level - std::round(255.0 * raster.samples[i] / raster.white), 2);
  }
  return 10 * std::log10(255 * 255 * static_cast<double>(raster.samples.size()) / sum);
}

TEST(AutoBlocks, LeavesFlatPlacesAndRampsAsTheyAre) {
  for (const int quality : {20, 40, 75}) {
    for (const double level : {0.0, 1.0, 60.0, 123.0, 124.0, 200.0, 254.0, 255.0}) {
      const Bytes grey = coded(flat(41, 23, level), quality);
      EXPECT_EQ(unblocked(grey, quality).samples, deepened(grey).samples) << level;
    }
    // Plain vxUnblock darkens them by 0.67 levels, and its trips quantise them.
    for (const double slope : {0.2, 0.5, 1.0}) {
      const Bytes ramp(Scene::of(200, 60, [=](int x, int y, int) { return slope * (x + y / 3.0); }),
                       255);
      EXPECT_EQ(unblocked(ramp, quality).samples, deepened(ramp).samples) << slope;
    }
  }
}

TEST(AutoBlocks, GetsNearerThanThePlainServiceAndAsBrightAsBefore) {
  const Scene scene = withNoise(photograph(320, 240), 2);
  for (const int quality : {20, 40, 75}) {
    SCOPED_TRACE(quality);
    const Bytes before = coded(scene, quality);
    const Words after = unblocked(before, quality);
    Bytes plain = before;
    vxUnblock(0, plain.samples.data(), 3, 3 * plain.width, plain.width, plain.height, quality, 0, 1,
              0);
    EXPECT_GT(psnr(scene, after), psnr(scene, before) + 0.3);
    EXPECT_GT(psnr(scene, after), psnr(scene, plain) + 0.1);
    EXPECT_NEAR(mean(after), mean(before), 0.1);
  }
}

TEST(AutoBlocks, KeepsGreyGreyInDarkAndBrightPlaces) {
  const Scene scene = Scene::of(120, 90, [](int x, int y, int) {
    return 128 + 150 * std::sin(x / 5.0) * std::cos(y / 7.0);  // clipped at both ends
  });
  const Words result = unblocked(coded(scene, 15), 15);
  const Words grey = unblocked(Bytes(scene, 255), 15);
  EXPECT_NE(result.samples, deepened(coded(scene, 15)).samples);
  for (std::size_t i = 0; i < grey.samples.size(); i += 3) {
    ASSERT_EQ(grey.samples[i], grey.samples[i + 1]);
    ASSERT_EQ(grey.samples[i], grey.samples[i + 2]);
  }
}

TEST(AutoBlocks, KeepsFractionsAndTakesAnySize) {
  for (const auto& [width, height] : {std::pair{1, 1}, {3, 40}, {40, 3}, {9, 17}}) {
    const Scene scene = withNoise(flat(width, height, 130), 20);
    Words words(scene, kWhite);
    const Words before = words;
    // Bottom up, so that no sample outside the block is touched unseen.
    std::uint16_t* last = words.samples.data() + std::ptrdiff_t{3} * width * (height - 1);
    EXPECT_EQ(vxAutoRemoveBlocks(last, -3 * width, width, height, kWhite, 98, 0, 4), 1);
    for (std::size_t i = 0; i < words.samples.size(); ++i)
      EXPECT_NEAR(words.samples[i], before.samples[i], 5 * kWhite / 255.0);
  }
  EXPECT_EQ(vxAutoRemoveBlocks(nullptr, 3, 1, 1, kWhite, 50, 0, 1), 1);
}

TEST(AutoJpeg, TellsTheQualityOfATable) {
  std::array<int, 64> table{};
  table.fill(1);
  EXPECT_EQ(vxAutoJpegQuality(table.data()), 100);
  table.fill(255);
  EXPECT_LE(vxAutoJpegQuality(table.data()), 10);
  table[63] = 0;
  EXPECT_EQ(vxAutoJpegQuality(table.data()), 0);
  EXPECT_EQ(vxAutoJpegQuality(nullptr), 0);
  EXPECT_EQ(vxAutoTripQuality(86), 86);
  for (const int quality : {0, -1, 87, 100}) EXPECT_EQ(vxAutoTripQuality(quality), 0);
  for (int i = 0; i < 64; ++i) table[static_cast<std::size_t>(i)] = i;
  std::array<int, 5> steps{};
  vxAutoLumaSteps(table.data(), steps.data());
  EXPECT_EQ(steps, (std::array<int, 5>{1, 8, 16, 9, 2}));
}

}  // namespace
}  // namespace vx::test
