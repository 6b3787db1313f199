#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "adjust/load_crop.h"
#include "frame/img.h"
#include "prim/prims.h"
#include "tests/noise/reference_estimator.h"
#include "tests/prim/plane.h"
#include "tests/support/variants.h"
#include "vxenhlib/noise_estimator.h"
#include "vxicore26.h"

namespace {

using namespace vx;
using vx::test::Picture;

constexpr NoiseProfile kUnset = {-1, -1, -1, -1, -1, -1};

NoiseProfile estimate(Picture& p) {
  NoiseProfile profile = kUnset;
  EXPECT_EQ(vxDenoiseEstNoise(p.bytes.data(), p.format, p.step, p.width, p.height, &profile), 1);
  return profile;
}

NoiseProfile reference(Picture& p, int x0, int y0, int width, int height) {
  const auto e = test::referenceEstimate(test::referenceLuma(p, x0, y0, width, height), 5);
  const float noise = 1.4f * e.noiseSigma;
  return {e.meanLevel, noise, 0.0f, e.meanLevel, 0.35f * noise, 0.0f};
}

void expectSame(const NoiseProfile& wanted, const NoiseProfile& got) {
  EXPECT_EQ(wanted.lumaLevel, got.lumaLevel);
  EXPECT_EQ(wanted.lumaNoise, got.lumaNoise);
  EXPECT_EQ(got.lumaReserved, 0.0f);
  EXPECT_EQ(wanted.chromaLevel, got.chromaLevel);
  EXPECT_EQ(wanted.chromaNoise, got.chromaNoise);
  EXPECT_EQ(got.chromaReserved, 0.0f);
}

// A ramp and two flat fields under Gaussian noise of `sigma` levels, samples up to `top`.
void paint(Picture& p, double sigma, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> noise(0.0, sigma);
  const double top = test::deep(p.format) ? 32768.0 : 255.0;
  p.forEachSample([&](int x, int y, int c) {
    const double field = (x / 61 + y / 47) % 3 == 0 ? 0.3 + 0.05 * c : 0.25 + 0.4 * x / p.width;
    return static_cast<int>(
        std::clamp(std::lround(field * top + noise(random)), 0L, std::lround(top)));
  });
}

TEST(EstNoise, everyFormatAndTinySizeAgainstThePixelByPixelReference) {
  for (const int format : test::kFormats) {
    for (const auto& [w, h] : std::vector<std::array<int, 2>>{
             {203, 151}, {128, 5}, {9, 90}, {8, 8}, {7, 6}, {4, 4}, {4, 400}, {3, 50}, {1, 1}}) {
      SCOPED_TRACE(::testing::Message() << "format " << format << ", " << w << "x" << h);
      Picture p(format, w, h, 5);
      p.randomise(1, test::deep(format) ? 32768 : 255);
      paint(p, test::deep(format) ? 900.0 : 12.0, 3);
      const auto before = p.bytes;
      const NoiseProfile wanted = reference(p, 0, 0, w & ~3, h & ~3);
      vx::test::onEveryVariant([&] { expectSame(wanted, estimate(p)); });
      EXPECT_TRUE(p.bytes == before);

      // The same picture stored from the bottom up.
      Picture flipped = p;
      flipped.forEachSample([&](int x, int y, int c) { return p.get(x, h - 1 - y, c); });
      NoiseProfile profile = kUnset;
      const auto* top = flipped.bytes.data() + static_cast<std::ptrdiff_t>(flipped.step) * (h - 1);
      EXPECT_EQ(vxDenoiseEstNoise(top, format, -flipped.step, w, h, &profile), 1);
      expectSame(wanted, profile);
    }
  }
}

TEST(EstNoise, cropsAtTheEdgesOfTheLimit) {
  const auto expectAxis = [](int size, int start, int cropped) {
    EXPECT_EQ(cropAxis(size).start, start) << size;
    EXPECT_EQ(cropAxis(size).size, cropped) << size;
  };
  expectAxis(3, 0, 0);
  expectAxis(2047, 0, 2044);
  expectAxis(2048, 0, 2048);
  expectAxis(2051, 0, 2048);
  expectAxis(2052, 2, 2048);
  expectAxis(std::numeric_limits<int>::max(), 1073740798, 2048);

  // The noise lies where only the right crop looks.
  for (const int w : {2047, 2048, 2052, 2061}) {
    Picture p(6, w, 23);
    paint(p, 700.0, 5);
    const CropAxis crop = cropAxis(w);
    for (int y = 0; y < p.height; ++y)
      for (int x = 0; x < w; ++x)
        if (x < crop.start || x >= crop.start + crop.size || y >= 20) p.set(x, y, 1, 32768);
    expectSame(reference(p, crop.start, 0, crop.size, 20), estimate(p));
  }
  Picture tall(1, 21, 2053);
  paint(tall, 9.0, 6);
  expectSame(reference(tall, 0, 2, 20, 2048), estimate(tall));
}

// The luma of 16-bit white is one below 1 / 1.402 of the scale, far from saturation.
TEST(EstNoise, flatPicturesHaveTheLeastNoise) {
  const float least = 1.4f * (0.5f / 32767.0f * 1.54f);
  for (const int format : test::kFormats)
    for (int step = 0; step <= 16; ++step) {
      Picture p(format, 40, 40);
      const int level = (test::deep(format) ? 32768 : 255) * step / 16;
      p.forEachSample([&](int, int, int) { return level; });
      const NoiseProfile profile = estimate(p);
      // The frame holds the luma, which widens the bins, and a median of 0 is told as half a bin.
      const float bin = std::max(
          1.0f, std::floor(2.0f * 304.0f / 1600.0f * profile.lumaLevel * 32767.0f / 110.0f));
      EXPECT_NEAR(profile.lumaNoise, least * bin, least) << "format " << format << ", " << level;
      const double luma =
          (0.21327 + 0.41869 + 0.081312) * (level + 0.49) / (test::deep(format) ? 32768.0 : 256.0);
      EXPECT_NEAR(profile.lumaLevel, luma, 2.0 / 32767.0);
    }
}

TEST(EstNoise, whatCannotBeReadCountsAsBlack) {
  Picture black(1, 60, 44);
  paint(black, 9.0, 1);
  const float least = 1.4f * (0.5f / 32767.0f * 1.54f);
  for (const int format : {0, 2, 4, 7, 8, 9, -1, std::numeric_limits<int>::max()}) {
    NoiseProfile profile = kUnset;
    EXPECT_EQ(vxDenoiseEstNoise(black.bytes.data(), format, black.step, 60, 44, &profile), 1);
    expectSame({0, least, 0, 0, 0.35f * least, 0}, profile);
  }
  NoiseProfile profile = kUnset;
  EXPECT_EQ(vxDenoiseEstNoise(nullptr, 1, 180, 60, 44, &profile), 1);
  expectSame({0, least, 0, 0, 0.35f * least, 0}, profile);
  EXPECT_EQ(vxDenoiseEstNoise(black.bytes.data(), 1, black.step, 60, 44, nullptr), 1);

  // Without a pixel the result is the bin above all bins.
  const float most = 1.4f * ((32766.0f + 0.5f) / 32767.0f * 1.54f);
  constexpr int kLeastInt = std::numeric_limits<int>::min();
  for (const auto& [w, h] : {std::array{0, 9}, {9, -4}, {3, 9}, {kLeastInt, kLeastInt}}) {
    EXPECT_EQ(vxDenoiseEstNoise(black.bytes.data(), 1, black.step, w, h, &profile), 1);
    expectSame({0, most, 0, 0, 0.35f * most, 0}, profile);
  }
}

TEST(NoiseEstimator, bothMasksAndThePlaneComesBack) {
  const prim::FloatModeGuard floatMode;
  NoiseEstimator estimator;  // one for both: the second run reuses its images
  Picture p(3, 120, 75);
  paint(p, 500.0, 9);
  auto luma = test::referenceLuma(p, 0, 0, 120, 75);
  GIMG<float> plane(120, 75);
  for (const int mask : {3, 5, 4}) {
    for (int y = 0; y < 75; ++y)
      for (int x = 0; x < 120; ++x) plane.row(y)[x] = luma.at(x, y);
    estimator.maskSize = mask;
    if (mask == 4) {
      EXPECT_EQ(estimator.estimate(plane), -1.0f);
      EXPECT_EQ(plane.row(74)[119], luma.at(119, 74));
      break;
    }
    const auto wanted = test::referenceEstimate(luma, mask);
    EXPECT_EQ(estimator.estimate(plane), wanted.noiseSigma);
    EXPECT_EQ(estimator.minLevel, wanted.minLevel);
    EXPECT_EQ(estimator.meanLevel, wanted.meanLevel);
    for (int y = 0; y < 75; ++y)
      for (int x = 0; x < 120; ++x) ASSERT_NEAR(plane.row(y)[x], luma.at(x, y), 2e-7f);
  }
}

// Values that no picture holds: a defined answer, no more.
TEST(NoiseEstimator, oddValuesGiveAFiniteAnswer) {
  const prim::FloatModeGuard floatMode;
  for (const float odd : {std::numeric_limits<float>::quiet_NaN(), 1e30f, -1e30f,
                          std::numeric_limits<float>::infinity()}) {
    GIMG<float> plane(40, 30);
    for (int y = 0; y < 30; ++y)
      for (int x = 0; x < 40; ++x) plane.row(y)[x] = (x + y) % 3 == 0 ? odd : 0.4f;
    NoiseEstimator estimator;
    EXPECT_TRUE(std::isfinite(estimator.estimate(plane)));
    EXPECT_TRUE(std::isfinite(estimator.meanLevel));
  }
}

// On a flat field under Gaussian noise the medians of medians see 0.8934 of the sigma of the luma
// 0.299 R + 0.587 G + 0.114 B (the limit over 9 million pixels, computed in double apart from this
// code). The picture's ramps and edges, the bins and the rounding to bytes move that by little.
TEST(EstNoise, gaussianNoiseIsRecoveredInProportion) {
  constexpr double kShareSeen = 0.8934;
  for (const double sigma : {2.5, 5.0, 10.0, 25.0, 40.0}) {
    Picture p(1, 640, 480);
    paint(p, sigma, 77);
    const double luma = sigma * std::sqrt(0.299 * 0.299 + 0.587 * 0.587 + 0.114 * 0.114) / 256.0;
    const double seen = static_cast<double>(estimate(p).lumaNoise) / luma;
    EXPECT_NEAR(seen / kShareSeen, 1.0, 0.03) << "sigma " << sigma;
  }
}

}  // namespace
