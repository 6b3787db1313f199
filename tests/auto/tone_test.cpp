// The restraint of the automatic tone, in numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "hosts/auto/auto_tone.h"
#include "tests/auto/scenes.h"
#include "vxicore26.h"

namespace vx::test {
namespace {

VxAutoTone toneOf(const Bytes& raster) {
  const VxAutoPicture picture = raster.picture();
  VxAutoNoise noise{};
  vxAutoMeasureNoise(&picture, nullptr, &noise);
  VxAutoTone tone{};
  EXPECT_EQ(vxAutoChooseTone(&picture, &noise, &tone), 1);
  return tone;
}

Bytes toned(Bytes raster, const VxAutoTone& tone) {
  EXPECT_EQ(vxAdjustRgb(raster.samples.data(), 1, 3 * raster.width, raster.width, raster.height, 1,
                        nullptr, nullptr, nullptr, nullptr, tone.lumaEqAmount, tone.lumaEqRadius, 0,
                        tone.lumaGamma, 0, 0, 0, 0, 1, 1, 1, 0, 0, tone.satContrast, 1, 0, 0,
                        nullptr, 0, 0, 0),
            1);
  return raster;
}

bool changes(const VxAutoTone& tone) {
  return tone.lumaGamma != 0 || tone.lumaEqAmount != 0 || tone.satContrast != 1;
}

double mean(const Bytes& raster) {
  double sum = 0;
  for (const std::uint8_t sample : raster.samples) sum += sample;
  return sum / static_cast<double>(raster.samples.size());
}

double difference(const Bytes& a, const Bytes& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.samples.size(); ++i) sum += std::abs(a.samples[i] - b.samples[i]);
  return sum / static_cast<double>(a.samples.size());
}

// In hundredths of all pixels.
double clippedPoints(const Bytes& raster) {
  double clipped = 0;
  for (std::size_t i = 0; i < raster.samples.size(); i += 3) {
    const auto [low, high] =
        std::minmax({raster.samples[i], raster.samples[i + 1], raster.samples[i + 2]});
    clipped += low == 0 || high == 255 ? 1 : 0;
  }
  return 300 * clipped / static_cast<double>(raster.samples.size());
}

// A photograph around `middle`, with so much contrast and colour, and fine noise so that it is none
// of the drawings.
Bytes photo(double middle, double contrast, double colour, unsigned seed = 3) {
  const Scene scene = Scene::of(240, 180, [&](int x, int y, int c) {
    const double wave = std::sin(x / 3.0) * std::cos(y / 4.0) + 0.5 * std::sin(x / 31.0 + y / 17.0);
    const double hue = colour * std::cos(2.1 * c + x / 80.0);
    return middle + contrast * wave + hue;
  });
  return Bytes(withNoise(scene, 3, 1, seed), 255);
}

// Kinds of which every one is treated in some way: dark, flat, pale, bright, clipped, saturated.
std::vector<Bytes> kinds() {
  std::vector<Bytes> all;
  for (const double middle : {30.0, 70.0, 110.0, 210.0})
    for (const double contrast : {20.0, 40.0, 60.0})
      for (const double colour : {0.0, 26.0}) all.push_back(photo(middle, contrast, colour));
  return all;
}

TEST(AutoTone, IsRestrainedOnEveryKindOfPicture) {
  int changed = 0;
  for (const Bytes& before : kinds()) {
    const VxAutoTone tone = toneOf(before);
    if (!changes(tone)) continue;
    ++changed;
    const Bytes after = toned(before, tone);
    char told[128];
    vxAutoDescribeTone(&tone, told, sizeof told);
    SCOPED_TRACE("mean " + std::to_string(mean(before)) + ", " + told);
    EXPECT_LE(clippedPoints(after), clippedPoints(before) + 1);
    EXPECT_NE(tone.seen, VX_AUTO_TONE_NIGHT);
    EXPECT_NE(tone.seen, VX_AUTO_TONE_DRAWING);
    if (tone.seen == VX_AUTO_TONE_WELL_EXPOSED) {
      EXPECT_NEAR(mean(after), mean(before), 4);
    } else {
      EXPECT_GT(mean(after), mean(before)) << "dark";
      EXPECT_LT(mean(after), mean(before) + 30) << "dark";
    }
    const double first = difference(before, after);
    const double second = difference(after, toned(after, toneOf(after)));
    EXPECT_LT(second, std::max(first / 3, 0.3));
  }
  EXPECT_GT(changed, 8);
}

TEST(AutoTone, CorrectsExposureContrastAndColourThatAreALittleOff) {
  const VxAutoTone dark = toneOf(photo(76, 30, 20));
  EXPECT_EQ(dark.seen, VX_AUTO_TONE_DARK);
  EXPECT_GT(dark.lumaGamma, 0.2F);
  EXPECT_GT(toneOf(photo(110, 40, 0)).lumaEqAmount, 0.02F);
  EXPECT_GT(toneOf(photo(110, 40, 26)).satContrast, 1.03F);
  EXPECT_FALSE(changes(toneOf(photo(110, 60, 70))));
}

TEST(AutoTone, LeavesNightAndDrawingsAndTinyPicturesAlone) {
  const VxAutoTone night = toneOf(photo(30, 10, 10));
  EXPECT_EQ(night.seen, VX_AUTO_TONE_NIGHT);
  EXPECT_FALSE(changes(night));
  const VxAutoTone drawing = toneOf(Bytes(
      Scene::of(300, 200, [](int x, int y, int c) { return (x / 40 + y / 40 + c) % 3 * 40 + 40; }),
      255));
  EXPECT_EQ(drawing.seen, VX_AUTO_TONE_DRAWING);
  EXPECT_FALSE(changes(drawing));
  const VxAutoTone tiny = toneOf(Bytes(flat(63, 400, 80), 255));
  EXPECT_EQ(tiny.seen, VX_AUTO_TONE_NOTHING_SEEN);
  EXPECT_FALSE(changes(tiny));
  EXPECT_EQ(vxAutoChooseTone(nullptr, nullptr, nullptr), 1);
}

TEST(AutoTone, KeepsGreyGrey) {
  for (const double middle : {76.0, 110.0}) {
    const Bytes before = photo(middle, 30, 0);
    Bytes grey = before;
    for (std::size_t i = 0; i < grey.samples.size(); i += 3)
      grey.samples[i + 1] = grey.samples[i + 2] = grey.samples[i];
    const VxAutoTone tone = toneOf(grey);
    EXPECT_EQ(tone.satContrast, 1);
    const Bytes after = toned(grey, tone);
    for (std::size_t i = 0; i < after.samples.size(); i += 3) {
      ASSERT_EQ(after.samples[i], after.samples[i + 1]);
      ASSERT_EQ(after.samples[i], after.samples[i + 2]);
    }
  }
}

// A picture larger than the copy, at both depths and upside down, gives the same choice.
TEST(AutoTone, ReadsEveryLayoutAlike) {
  const Scene small = photograph(1000, 700);
  const Scene scene = Scene::of(1000, 700, [&](int x, int y, int c) {
    return 50 + 0.3 * small.samples[static_cast<std::size_t>(3 * (y * 1000 + x) + c)];
  });
  const Bytes bytes(scene, 255);
  const Words words(scene, 32768);
  VxAutoTone first{}, second{}, third{};
  VxAutoPicture picture = bytes.picture();
  EXPECT_EQ(vxAutoChooseTone(&picture, nullptr, &first), 1);
  picture = words.picture();
  EXPECT_EQ(vxAutoChooseTone(&picture, nullptr, &second), 1);
  EXPECT_EQ(first.seen, VX_AUTO_TONE_DARK);
  EXPECT_NEAR(first.lumaGamma, second.lumaGamma, 0.03);
  picture.pixels = words.samples.data() + std::ptrdiff_t{3} * 1000 * 699;
  picture.rowStep = -picture.rowStep;
  EXPECT_EQ(vxAutoChooseTone(&picture, nullptr, &third), 1);
  EXPECT_NEAR(third.lumaGamma, second.lumaGamma, 0.03);
}

}  // namespace
}  // namespace vx::test
