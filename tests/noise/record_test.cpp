#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "adjust/noise_stage.h"
#include "prim/prims.h"
#include "tests/tone/reference.h"
#include "vxenhlib/noise_filter_record.h"
#include "vxicore26.h"

namespace {

using namespace vx;
using namespace vx::test;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
// Level and noise of luma and chroma alike, as an estimate gives them.
NoiseProfile profile(float level, float noise) {
  return {level, noise, 0.0f, level, 0.35f * noise, 0.0f};
}

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(NoiseFilterRecord, theNoiseChoosesTheGeometry) {
  struct Row {
    bool twoStage, tierFlag;
    float from;  // the row holds from this noise on
    int stackLimit, blockSize, blockStep, searchSize;
  };
  constexpr Row kRows[] = {{false, true, 0.0f, 8, 12, 7, 32},
                           {false, true, 40.0f / 255.0f, 12, 16, 9, 48},
                           {false, false, 0.0f, 8, 8, 4, 32},
                           {false, false, 30.0f / 255.0f, 12, 12, 6, 48},
                           {false, false, 45.0f / 255.0f, 12, 16, 8, 48},
                           {true, true, 0.0f, 8, 8, 4, 32},
                           {true, true, 30.0f / 255.0f, 12, 12, 6, 48},
                           {true, true, 45.0f / 255.0f, 12, 16, 8, 48},
                           {true, false, 0.0f, 12, 8, 3, 48},
                           {true, false, 30.0f / 255.0f, 16, 12, 5, 64},
                           {true, false, 45.0f / 255.0f, 16, 16, 7, 64}};
  const auto expect = [](float noise, float level, const Row& row) {
    NoiseFilterRecord record;
    EXPECT_EQ(record.configure({level, noise, 1, 2, 3, 4}, row.tierFlag, row.twoStage), 0);
    const BlockGeometry& g = record.geometry;
    EXPECT_TRUE(g.stackLimit == row.stackLimit && g.blockSize == row.blockSize &&
                g.blockStep == row.blockStep && g.searchSize == row.searchSize)
        << row.twoStage << row.tierFlag << ", noise " << noise << " at " << level;
    EXPECT_EQ(record.profile.chromaReserved, 4.0f);
    EXPECT_EQ(record.twoStage, row.twoStage);
    EXPECT_EQ(record.tierFlag, row.tierFlag);
  };
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    // Above mid-grey the noise counts as it is; a bound belongs to the next row.
    expect(kRows[i].from, 0.51f, kRows[i]);
    if (kRows[i].from > 0.0f) expect(std::nextafter(kRows[i].from, 0.0f), 0.7f, kRows[i - 1]);
    const bool last = i + 1 == std::size(kRows) || kRows[i + 1].from == 0.0f;
    if (!last) continue;
    // A dark picture counts for more, a black one for infinitely much; so does nonsense.
    expect(0.1f, 0.1f, kRows[i]);
    expect(0.01f, 0.0f, kRows[i]);
    expect(kNan, 0.7f, kRows[i]);
  }
  expect(0.05f, 0.25f, kRows[5]);
  expect(0.05f, 0.1f, kRows[7]);
}

TEST(NoiseFilterRecord, theFastModeDerivesItsGridsFromTheNoise) {
  NoiseFilterRecord record;
  record.configure(profile(0.25f, 0.03f), true, true);
  AdjustSettings s{.denoiseStrength = 0.5f, .denoiseMode = 1};
  EXPECT_EQ(deriveNoiseSettings(s, record), 0.5f * 1.2f);
  EXPECT_EQ(record.lumaSample, -1.0f);
  EXPECT_EQ(record.chromaRange, -1.0f);
  EXPECT_EQ(record.lumaGrid(0.0f).sample, 0);
  EXPECT_EQ(record.chromaGrid(0.0f).sample, 0);

  s.denoiseMode = 0;
  EXPECT_EQ(deriveNoiseSettings(s, record), 0.0f);
  EXPECT_NEAR(record.lumaSample, 0.03 * 0.5 / 0.25 * 0.5 * 160.0 + 4.0, 1e-5);
  EXPECT_NEAR(record.lumaRange, 0.03 * 0.5 * 2.5, 1e-7);
  EXPECT_EQ(record.lumaGrid(0.0f).sample, 8);
  EXPECT_EQ(record.lumaGrid(0.0f).range, record.lumaRange);
  EXPECT_EQ(record.chromaGrid(0.0f).sample, 10);
  EXPECT_EQ(record.chromaGrid(0.0f).range, record.lumaRange * 0.75f);

  record.configure(profile(0.0f, 0.0f), true, true);
  deriveNoiseSettings(s, record);
  EXPECT_EQ(record.lumaSample, 4.0f);
  EXPECT_EQ(record.chromaSample, 6.0f);
  EXPECT_EQ(record.lumaGrid(0.0f).range, 0.005f);
  EXPECT_EQ(record.chromaGrid(0.0f).range, 0.0053725503f);
}

// Amounts instead of the derived grids: the luma's range is limited after the boost, the chroma's
// before it too.
TEST(NoiseFilterRecord, amountsOfTheBilateralPasses) {
  NoiseFilterRecord record;
  record.configure(profile(0.3f, 0.002f), true, true);
  EXPECT_EQ(record.lumaGrid(0.01f).sample, 0);
  EXPECT_EQ(record.lumaGrid(0.011f).sample, 8);
  EXPECT_EQ(record.lumaGrid(0.2f).sample, 10);
  EXPECT_EQ(record.lumaGrid(0.2f).range, 0.005f);
  const double boost = (0.5 + 4.0 * 0.0625) * 0.02;
  EXPECT_NEAR(record.lumaGrid(0.75f).range, 0.002 * 0.5 * 0.75 + boost, 1e-7);
  EXPECT_NEAR(record.chromaGrid(0.75f).range, 0.005 + boost, 1e-7);
  EXPECT_EQ(record.chromaGrid(0.2f).range, 0.0053725503f);
  EXPECT_EQ(record.lumaGrid(kNan).sample, 0);
  EXPECT_EQ(record.chromaGrid(-kInfinity).sample, 0);
}

struct Planes {
  Plane y, c1, c2;
  GIMG<float>* all[3] = {&y, &c1, &c2};

  Planes(int w, int h) : y(w, h), c1(w, h), c2(w, h) {
    for (unsigned p = 0; p < 3; ++p) fill(*all[p], p);
    for (int p = 1; p < 3; ++p)
      for (int i = 0; i < h; ++i)
        for (int x = 0; x < w; ++x) at(*all[p], x, i) -= 0.45f;
  }
};

int denoise(NoiseFilterRecord& record, Planes& planes, float sharpen = 0.0f) {
  return record.denoise(planes.all, 0.01f, 0.0f, 1.0f, 3.0f, 1.5f, 1.0f, sharpen, 0.0f, 0.0f);
}

TEST(NoiseFilterRecord, theFastModeIsTwoBilateralGrids) {
  const prim::FloatModeGuard floatMode;
  for (const float noise : {0.0f, 0.02f, 0.09f}) {
    Planes planes(97, 64), wanted(97, 64);
    NoiseFilterRecord record;
    record.configure(profile(0.3f, noise), true, true);
    deriveNoiseSettings({.denoiseStrength = 0.8f}, record);
    ASSERT_EQ(denoise(record, planes), 0);
    const GridStep luma = record.lumaGrid(0.0f), chroma = record.chromaGrid(0.0f);
    for (int p = 0; p < 3; ++p) {
      Plane guide(97, 64);
      copyImage(*wanted.all[p], guide);
      const Range range =
          p == 0 ? Range{0.0f, 1.0f, luma.range} : Range{-0.61176f, 0.46275002f, chroma.range};
      referenceFilter(*wanted.all[p], guide, range, p == 0 ? luma.sample : chroma.sample);
      EXPECT_TRUE(sameBits(*wanted.all[p], *planes.all[p])) << noise << ", plane " << p;
    }
    EXPECT_EQ(record.strength, 0.0f);
    EXPECT_EQ(record.kneeRatio, 3.0f);
  }
}

TEST(NoiseFilterRecord, planesBelowTheSearchTileStay) {
  const prim::FloatModeGuard floatMode;
  for (const auto& [w, h] : {std::pair(31, 80), {80, 31}}) {
    Planes planes(w, h), before(w, h);
    NoiseFilterRecord record;
    record.configure(profile(0.3f, 0.02f), true, true);
    deriveNoiseSettings({.denoiseStrength = 0.8f}, record);
    EXPECT_EQ(denoise(record, planes), kVxrcBadArgument);
    for (int p = 0; p < 3; ++p) EXPECT_TRUE(sameBits(*before.all[p], *planes.all[p]));
    EXPECT_EQ(record.strength, 1.2f);
  }
  Planes planes(64, 64);
  Plane other(64, 63);
  planes.all[2] = &other;
  NoiseFilterRecord record;
  record.configure(profile(0.3f, 0.02f), true, true);
  EXPECT_EQ(denoise(record, planes), kVxrcSizeMismatch);
}

TEST(NoiseFilterRecord, sharpeningWorksOnTheLumaAlone) {
  const prim::FloatModeGuard floatMode;
  Planes planes(64, 64), before(64, 64);
  NoiseFilterRecord record;
  record.configure(profile(0.3f, 0.02f), true, true);
  ASSERT_EQ(denoise(record, planes, 0.01f), 0);
  EXPECT_TRUE(sameBits(before.y, planes.y));
  ASSERT_EQ(denoise(record, planes, 0.6f), 0);
  EXPECT_GT(largestDifference(before.y, planes.y), 0.01f);
  EXPECT_TRUE(sameBits(before.c1, planes.c1));
  EXPECT_TRUE(sameBits(before.c2, planes.c2));
}

// Profiles that no estimate gives: no crash, and planes that can still be read.
TEST(NoiseFilterRecord, anyProfileIsSurvived) {
  const prim::FloatModeGuard floatMode;
  const float odd[] = {0.0f, -0.5f, 1e-30f, 0.02f, 3.0f, 1e30f, kInfinity, -kInfinity, kNan};
  for (const float noise : odd)
    for (const float level : {0.0f, 0.3f, -0.3f, kNan})
      for (const float strength : {1.0f, kInfinity}) {
        Planes planes(50, 49);
        NoiseFilterRecord record;
        record.configure(profile(level, noise), true, true);
        deriveNoiseSettings({.denoiseStrength = strength}, record);
        denoise(record, planes);
        float sum = 0.0f;
        for (int p = 0; p < 3; ++p)
          for (int y = 0; y < 49; ++y)
            for (int x = 0; x < 50; ++x) sum += at(*planes.all[p], x, y);
        EXPECT_TRUE(std::isfinite(sum)) << noise << ", " << level << ", " << strength;
      }
}

}  // namespace
