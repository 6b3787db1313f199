#include "adjust/noise_stage.h"
#include "tests/grid/reference.h"
#include "tests/support/float_mode.h"
#include "vxenhlib/noise/luma_chroma.h"

namespace {

using namespace vx;
using namespace vx::test;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// Level and noise of luma and chroma alike, as an estimate gives them.
NoiseProfile profile(float level, float noise) {
  return {level, noise, 0.0f, level, 0.35f * noise, 0.0f};
}

// The three geometries of the pipeline. In all tables blocks grow with the noise, and their tile
// holds them at every step.
TEST(NoiseFilterRecord, theNoiseChoosesTheGeometry) {
  const auto geometry = [](float noise, float level, bool tierFlag = true, bool twoStage = true) {
    NoiseFilterRecord record;
    EXPECT_EQ(record.configure(profile(level, noise), tierFlag, twoStage), 0);
    const BlockGeometry& g = record.geometry;
    return std::array{g.blockSize, g.stackLimit, g.blockStep, g.searchSize};
  };
  constexpr std::array kSmall = {8, 8, 4, 32}, kMiddle = {12, 12, 6, 48}, kLarge = {16, 12, 8, 48};
  constexpr float kFirst = 30.0f / 255.0f, kSecond = 45.0f / 255.0f;
  EXPECT_EQ(geometry(0.0f, 0.7f), kSmall);
  EXPECT_EQ(geometry(std::nextafter(kFirst, 0.0f), 0.51f), kSmall);
  EXPECT_EQ(geometry(kFirst, 0.51f), kMiddle) << "above mid-grey the noise counts as it is";
  EXPECT_EQ(geometry(0.0625f, 0.25f), kMiddle) << "in a dark picture for more";
  EXPECT_EQ(geometry(std::nextafter(kSecond, 0.0f), 0.7f), kMiddle);
  EXPECT_EQ(geometry(kSecond, 0.7f), kLarge);
  EXPECT_EQ(geometry(0.01f, 0.0f), kLarge) << "in a black one for infinitely much";
  EXPECT_EQ(geometry(kNan, 0.7f), kLarge) << "nonsense";
  for (const auto& [tierFlag, twoStage] : {std::pair{false, false}, {true, false}, {false, true}}) {
    auto last = geometry(0.0f, 0.7f, tierFlag, twoStage);
    for (int n = 1; n < 60; ++n) {
      const auto g = geometry(static_cast<float>(n) / 255.0f, 0.7f, tierFlag, twoStage);
      EXPECT_TRUE(g[0] >= last[0] && g[1] >= last[1] && 2 * g[2] > g[0] - 3 && g[0] + g[2] < g[3]);
      last = g;
    }
    EXPECT_EQ(last[0], 16);
  }
}

// Amounts instead of the grids of the fast mode: the luma's range is limited after the boost, the
// chroma's before it too.
TEST(NoiseFilterRecord, amountsOfTheBilateralPasses) {
  NoiseFilterRecord record;
  record.configure(profile(0.3f, 0.002f), true, true);
  for (const float off : {0.0f, 0.01f, kNan, -kInfinity}) {
    EXPECT_EQ(record.lumaGrid(off).sample, 0);
    EXPECT_EQ(record.chromaGrid(off).sample, 0);
  }
  EXPECT_EQ(record.lumaGrid(0.011f).sample, 8);
  EXPECT_EQ(record.lumaGrid(0.2f).sample, 10);
  EXPECT_EQ(record.lumaGrid(0.2f).range, 0.005f);
  EXPECT_EQ(record.chromaGrid(0.2f).range, 0.0053725503f);
  const double boost = (0.5 + 4.0 * 0.0625) * 0.02;
  EXPECT_NEAR(record.lumaGrid(0.75f).range, 0.002 * 0.5 * 0.75 + boost, 1e-7);
  EXPECT_NEAR(record.chromaGrid(0.75f).range, 0.005 + boost, 1e-7);
}

struct Planes : ThreePlanes {
  Planes(int w, int h) : ThreePlanes(w, h) {
    for (unsigned p = 0; p < 3; ++p) fill(plane[p], p);
    for (int p = 1; p < 3; ++p)
      paint(plane[p], [&](int x, int y) { return at(plane[p], x, y) - 0.45f; });
  }
  int denoise(NoiseFilterRecord& record, float sharpen = 0.0f, float bilateral = 0.0f) {
    return record.denoise(
        all, {.sharpen = sharpen, .lumaBilateral = bilateral, .chromaBilateral = bilateral});
  }
  // The bilateral passes, plane by plane.
  void smooth(const NoiseFilterRecord& record, float amount) {
    for (int p = 0; p < 3; ++p) {
      const GridStep grid = p == 0 ? record.lumaGrid(amount) : record.chromaGrid(amount);
      Plane guide(plane[p].width, plane[p].height);
      copyImage(plane[p], guide);
      referenceFilter(
          plane[p], guide,
          p == 0 ? Range{0.0f, 1.0f, grid.range} : Range{-0.61176f, 0.46275002f, grid.range},
          grid.sample);
    }
  }
};

TEST(NoiseFilterRecord, bilateralPassesAreTwoGrids) {
  Planes planes(97, 64), wanted(97, 64);
  NoiseFilterRecord record;
  record.configure(profile(0.3f, 0.02f), true, true);
  ASSERT_EQ(planes.denoise(record, 0.0f, 0.6f), 0);
  wanted.smooth(record, 0.6f);
  for (int p = 0; p < 3; ++p) EXPECT_TRUE(sameBits(wanted.plane[p], planes.plane[p])) << p;
}

// The fast mode works in the rows of the image; its grids grow with the noise.
TEST(NoiseFilterRecord, theFastModeIsThreeGridsOverTheImage) {
  struct Case {
    float level, noise, strength;
    int lumaSample;
    double lumaRange, chromaRange;
  };
  for (const Case& c : {Case{0.3f, 0.0f, 0.8f, 4, 0.005, 0.0053725503},
                        {0.25f, 0.03f, 0.5f, 8, 0.03 * 0.5 * 2.5, 0.75 * 0.03 * 0.5 * 2.5},
                        {0.3f, 0.09f, 0.8f, 23, 0.18, 0.135}}) {
    const NoiseProfile noise = profile(c.level, c.noise);
    AdjustSettings settings{.denoiseStrength = c.strength, .noiseProfile = &noise};
    NoiseFilterRecord record;
    record.configure(noise, true, true);
    EXPECT_EQ(deriveNoiseSettings(settings, record), 0.0f);
    EXPECT_EQ(record.lumaGrid(0.0f).sample, c.lumaSample);
    EXPECT_EQ(record.chromaGrid(0.0f).sample, c.lumaSample + 2);
    EXPECT_NEAR(record.lumaGrid(0.0f).range, c.lumaRange, 1e-7);
    EXPECT_NEAR(record.chromaGrid(0.0f).range, c.chromaRange, 1e-7);

    IMG3<float> image(97, 70), filtered(97, 70), wanted(97, 70);
    fill(image, 5);
    Planes planes(97, 70);
    for (int p = 0; p < 3; ++p)
      paint(planes.plane[p], [&](int x, int y) { return image.row(y)[3 * x + p]; });
    toLumaChroma(planes.all, true);
    planes.smooth(record, 0.0f);
    fromLumaChroma(planes.all, true);
    for (int i = 0; i < 3 * 97 * 70; ++i)
      wanted.row(i / 291)[i % 291] = at(planes.plane[i % 3], i % 291 / 3, i / 291);
    for (const float grain : {0.0f, 1.0f}) {
      copyImage(image, filtered);
      settings.grainRestore = grain;
      NoiseStage stage;
      stage.filter(filtered, settings);
      EXPECT_TRUE(sameBits(wanted, filtered)) << c.noise << ", " << grain;
      EXPECT_EQ(stage.hasGrain(), grain > 0.0f);
      stage.restoreGrain(filtered, settings);
      EXPECT_TRUE(grain == 0.0f || largestDifference(image, filtered) < 2e-7f);
    }
  }
  NoiseFilterRecord record;
  record.configure(profile(0.25f, 0.03f), true, true);
  EXPECT_EQ(deriveNoiseSettings({.denoiseStrength = 0.5f, .denoiseMode = 1}, record), 0.5f * 1.2f);
  EXPECT_EQ(record.lumaGrid(0.0f).sample, 0);
  EXPECT_EQ(record.chromaGrid(0.0f).sample, 0);
}

TEST(NoiseFilterRecord, planesThatItRefusesStay) {
  for (const auto& [w, h, other, code] : {std::tuple(31, 80, 31, kVxrcBadArgument),
                                          {80, 31, 80, kVxrcBadArgument},
                                          {64, 64, 63, kVxrcSizeMismatch}}) {
    Planes planes(w, h), before(w, h);
    Plane last(other, h);
    if (other != w) planes.all[2] = &last;
    NoiseFilterRecord record;
    record.configure(profile(0.3f, 0.02f), true, true);
    deriveNoiseSettings({.denoiseStrength = 0.8f}, record);
    EXPECT_EQ(planes.denoise(record), code);
    for (int p = 0; p < 3; ++p) EXPECT_TRUE(sameBits(before.plane[p], planes.plane[p]));
    EXPECT_EQ(record.strength, 1.2f);
  }
}

TEST(NoiseFilterRecord, sharpeningWorksOnTheLumaAlone) {
  Planes planes(64, 64), before(64, 64);
  NoiseFilterRecord record;
  record.configure(profile(0.3f, 0.02f), true, true);
  ASSERT_EQ(planes.denoise(record, 0.01f), 0);
  EXPECT_TRUE(sameBits(before.plane[0], planes.plane[0]));
  ASSERT_EQ(planes.denoise(record, 0.6f), 0);
  EXPECT_GT(largestDifference(before.plane[0], planes.plane[0]), 0.01f);
  for (int p = 1; p < 3; ++p) EXPECT_TRUE(sameBits(before.plane[p], planes.plane[p]));
}

// Profiles that no estimate gives: no crash, and pictures that can still be read.
TEST(NoiseFilterRecord, anyProfileIsSurvived) {
  const float odd[] = {0.0f, -0.5f, 1e-30f, 0.02f, 3.0f, 1e30f, kInfinity, -kInfinity, kNan};
  for (const float noise : odd)
    for (const float level : {0.0f, 0.3f, -0.3f, kNan})
      for (const float strength : {1.0f, kInfinity}) {
        IMG3<float> image(50, 49);
        fill(image, 2);
        const NoiseProfile any = profile(level, noise);
        NoiseStage().filter(image, {.denoiseStrength = strength, .noiseProfile = &any});
        float sum = 0.0f;
        for (int i = 0; i < 150 * 49; ++i) sum += image.row(i / 150)[i % 150];
        EXPECT_TRUE(std::isfinite(sum)) << noise << ", " << level << ", " << strength;
      }
}

}  // namespace
