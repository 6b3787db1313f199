#include <functional>

#include "tests/tone/planes.h"
#include "tests/tone/reference.h"
#include "vxenhlib/unsharp_mask.h"

namespace {

using namespace vx;
using namespace vx::test;

// Everything runs, nothing at a neutral value.
AdjustToneStage fullSetting() {
  AdjustToneStage stage;
  stage.sharpenAmount = 1.6f;
  stage.sharpenSigma = 1.0f;
  stage.hueShift = 0.03f;
  stage.lightness.eqStrength = 0.8f;
  stage.lightness.eqClip = 0.3f;
  stage.lightness.eqSample = 20;
  stage.lightness.eqPeakGain = 0.5f;
  stage.lightness.eqTopCut = 0.03f;
  stage.lightness.eqFloor = 0.02f;
  stage.lightness.gamma = 0.4f;
  stage.lightness.detailRange = 0.1f;
  stage.lightness.detailSample = 9;
  stage.lightness.detailGain = 1.4f;
  stage.lightness.detailGamma = 0.8f;
  stage.saturation.eqStrength = 0.3f;
  stage.saturation.eqSample = 25;
  stage.saturation.contrast = 1.1f;
  stage.saturation.gamma = 0.9f;
  return stage;
}

struct StageCase {
  const char* name;
  int width, height;
  std::function<void(AdjustToneStage&)> change;
};

void PrintTo(const StageCase& c, std::ostream* out) { *out << c.name; }

class StageAgainstReference : public ::testing::TestWithParam<StageCase> {};

TEST_P(StageAgainstReference, bandsAndThreadsGiveTheBitsOfWholePlanePasses) {
  const StageCase& c = GetParam();
  const prim::FloatModeGuard floatMode;
  IMG3<float> image(c.width, c.height), expected(c.width, c.height);
  fill(image, 11);
  copyImage(image, expected);
  AdjustToneStage stage = fullSetting();
  c.change(stage);
  referenceStage(expected, stage);
  for (const auto& [rows, threads] : kRuns) {
    const Threads team(threads);
    IMG3<float> actual(c.width, c.height);
    copyImage(image, actual);
    stage.bandHeight = rows;
    EXPECT_EQ(stage.apply(actual), 0);
    EXPECT_TRUE(sameBits(expected, actual)) << rows << " rows, " << threads << " threads";
  }
}

const auto kNothing = [](AdjustToneStage&) {};

INSTANTIATE_TEST_SUITE_P(
    Settings, StageAgainstReference,
    ::testing::Values(
        StageCase{"full", 121, 83, kNothing}, StageCase{"onePixel", 1, 1, kNothing},
        StageCase{"oneColumn", 1, 37, kNothing}, StageCase{"oneRow", 37, 1, kNothing},
        StageCase{"fourRows", 50, 4, kNothing},
        StageCase{"onePass", 60, 41, [](AdjustToneStage& s) { s.lightness.detailRange = 0.049f; }},
        StageCase{"leastTwoPasses", 60, 41,
                  [](AdjustToneStage& s) { s.lightness.detailRange = 0.05f; }},
        StageCase{"noEqualisation", 60, 41,
                  [](AdjustToneStage& s) {
                    s.lightness.eqSample = 3;
                    s.saturation.eqStrength = 0.01f;
                  }},
        StageCase{"detailRemoved", 60, 41,
                  [](AdjustToneStage& s) {
                    s.lightness.detailGain = 0.0f;
                    s.lightness.gamma = 0.00005f;
                  }},
        StageCase{"gammaWithoutSplit", 60, 41,
                  [](AdjustToneStage& s) {
                    s.lightness.detailRange = 0.0f;
                    s.lightness.gamma = -0.6f;
                  }},
        StageCase{"nothingOnLightness", 60, 41,
                  [](AdjustToneStage& s) {
                    s.lightness = LightnessTone();
                    s.lightness.gamma = 0.0f;
                  }},
        StageCase{"softened", 60, 41,
                  [](AdjustToneStage& s) {
                    s.sharpenAmount = 0.2f;
                    s.sharpenSigma = 3.0f;
                  }},
        StageCase{"notSharpened", 60, 41, [](AdjustToneStage& s) { s.sharpenSigma = 0.5f; }},
        StageCase{"hueBack", 60, 41, [](AdjustToneStage& s) { s.hueShift = -0.7f; }},
        StageCase{"hueBeyondATurn", 60, 41, [](AdjustToneStage& s) { s.hueShift = 1.3f; }},
        StageCase{"saturationBeyondOne", 60, 41,
                  [](AdjustToneStage& s) {
                    s.saturation.eqStrength = 0.0f;
                    s.saturation.contrast = 4.0f;
                    s.saturation.gamma = 2.0f;
                  }},
        StageCase{"saturationCurve", 60, 41,
                  [](AdjustToneStage& s) {
                    s.saturation.mode = 1;
                    s.saturation.contrast = 0.7f;
                    s.saturation.lowKnee = s.saturation.highKnee = 0.1f;
                    s.saturation.detailRange = 0.1f;
                    s.saturation.detailGain = 1.3f;
                  }},
        StageCase{"saturationLogCurve", 60, 41,
                  [](AdjustToneStage& s) {
                    s.saturation.mode = 2;
                    s.saturation.contrast = 1.3f;
                    s.saturation.brightness = 0.02f;
                    s.saturation.lowKnee = s.saturation.highKnee = 0.1f;
                    s.saturation.detailRange = 0.04f;
                    s.saturation.gamma = 1.0005f;
                  }}),
    [](const auto& test) { return std::string(test.param.name); });

// What the core sequence sets when the host asks for nothing.
AdjustToneStage neutralSetting() {
  AdjustToneStage stage;
  stage.sharpenSigma = 0.7f;
  stage.lightness.gamma = 0.0f;
  stage.saturation.detailGain = 0.0f;
  return stage;
}

TEST(ToneStage, neutralSettingsLeaveThePictureButForRounding) {
  const prim::FloatModeGuard floatMode;
  IMG3<float> image(90, 40), before(90, 40);
  fill(image, 12);
  for (int x = 0; x < 90; ++x)  // greys, also the ends of the range
    for (int c = 0; c < 3; ++c) image.row(7)[3 * x + c] = static_cast<float>(x) / 89.0f;
  copyImage(image, before);
  AdjustToneStage stage = neutralSetting();
  stage.apply(image);
  EXPECT_LE(largestDifference(before, image), 1e-6f);
  for (int x = 0; x < 90; ++x) EXPECT_EQ(image.row(7)[3 * x], before.row(7)[3 * x]);
}

// One pixel of a pure hue, so that the rotation can be read off.
float turnedHue(float hue, float shift) {
  IMG3<float> image(1, 1), hls(1, 1);
  const float pixel[3] = {hue, 0.5f, 1.0f};
  prim::primHLSToRGB_32f_C3R(pixel, 12, image.data, image.step, 1, 1);
  AdjustToneStage stage = neutralSetting();
  stage.hueShift = shift;
  stage.apply(image);
  prim::primRGBToHLS_32f_C3R(image.data, image.step, hls.data, hls.step, 1, 1);
  return hls.data[0];
}

TEST(ToneStage, hueWrapsOnceAndGreyStaysGrey) {
  const prim::FloatModeGuard floatMode;
  EXPECT_NEAR(turnedHue(0.75f, 0.5f), 0.25f, 1e-6f);
  EXPECT_NEAR(turnedHue(0.25f, -0.5f), 0.75f, 1e-6f);
  EXPECT_NEAR(turnedHue(0.25f, 1e-8f), 0.25f, 1e-6f);
  IMG3<float> grey(4, 4);
  const float level[3] = {0.3f, 0.3f, 0.3f};
  prim::primSet_32f_C3R(level, grey.data, grey.step, 4, 4);
  AdjustToneStage stage = neutralSetting();
  stage.hueShift = 0.4f;
  stage.apply(grey);
  for (int i = 0; i < 12; ++i) EXPECT_EQ(grey.row(2)[i], 0.3f);
}

TEST(ToneStage, thresholdsSkipSteps) {
  const prim::FloatModeGuard floatMode;
  const auto changes = [](const std::function<void(AdjustToneStage&)>& change) {
    IMG3<float> plain(40, 30), changed(40, 30);
    fill(plain, 13);
    copyImage(plain, changed);
    AdjustToneStage stage = neutralSetting();
    stage.apply(plain);
    change(stage);
    stage.apply(changed);
    return largestDifference(plain, changed) > 0.0f;
  };
  using Stage = AdjustToneStage;
  EXPECT_FALSE(changes([](Stage& s) { s.sharpenAmount = 1.0005f; }));
  EXPECT_TRUE(changes([](Stage& s) { s.sharpenAmount = 1.002f; }));
  EXPECT_FALSE(changes([](Stage& s) { s.sharpenAmount = 2.0f, s.sharpenSigma = 0.5f; }));
  EXPECT_FALSE(changes([](Stage& s) { s.lightness.eqStrength = 0.01f; }));
  EXPECT_FALSE(changes([](Stage& s) { s.lightness.eqStrength = 1.0f, s.lightness.eqSample = 3; }));
  EXPECT_TRUE(changes([](Stage& s) { s.lightness.eqStrength = 0.02f, s.lightness.eqSample = 4; }));
  EXPECT_FALSE(changes([](Stage& s) { s.lightness.gamma = 0.0001f; }));
  EXPECT_TRUE(changes([](Stage& s) { s.lightness.gamma = 0.001f; }));
  EXPECT_FALSE(changes([](Stage& s) { s.lightness.detailRange = 0.1f; })) << "neutral detail";
  EXPECT_FALSE(changes([](Stage& s) { s.lightness.detailGain = 2.0f; })) << "no detail range";
  EXPECT_TRUE(changes([](Stage& s) {
    s.lightness.detailGain = 2.0f;
    s.lightness.detailRange = 0.1f;
  }));
  EXPECT_FALSE(changes([](Stage& s) { s.saturation.contrast = 1.00009f; }));
  EXPECT_FALSE(changes([](Stage& s) { s.saturation.gamma = 1.00009f; }));
  EXPECT_TRUE(changes([](Stage& s) { s.saturation.gamma = 1.01f; }));
  EXPECT_FALSE(changes([](Stage& s) { s.saturation.mode = 2, s.saturation.detailGain = 1.0f; }));
}

TEST(Saturation, thePeakKeepsItsPlaceUnderTheGamma) {
  const prim::FloatModeGuard floatMode;
  Plane plane(30, 10), before(30, 10);
  fill(plane, 14);
  for (int x = 0; x < 30; ++x) at(plane, x, 3) = 0.4f;
  prim::primThreshold_GT_32f_C1IR(plane.data, plane.step, 30, 10, 0.8f);
  at(plane, 7, 3) = 0.8f;
  SaturationTone tone;
  tone.mode = 0;
  tone.gamma = 0.5f;
  copyImage(plane, before);
  tone.apply(plane);
  EXPECT_EQ(at(plane, 7, 3), 0.8f);
  EXPECT_NEAR(at(plane, 8, 3), 0.8f * std::sqrt(0.5f), 0.01f);
  // A gain to 1.6 limits the curve to 1; what lies above passes.
  copyImage(before, plane);
  tone.contrast = 2.0f;
  tone.apply(plane);
  EXPECT_EQ(at(plane, 7, 3), 1.6f);
  Plane zeros(9, 9);
  prim::primSet_32f_C1R(0.0f, zeros.data, zeros.step, 9, 9);
  tone.apply(zeros);
  EXPECT_EQ(at(zeros, 4, 4), 0.0f);
}

TEST(Saturation, fivePointCurve) {
  SaturationTone tone;
  tone.lowKnee = 0.1f;
  tone.highKnee = 0.2f;
  tone.contrast = 0.5f;
  tone.brightness = 0.05f;
  tone.buildCurve();
  EXPECT_EQ(tone.curvePoints, 5);
  const float flatLevels[] = {0.0f, 0.1f, 0.5f, 0.8f, 1.0f};
  const float flatValues[] = {0.0f, 0.35f, 0.55f, 0.7f, 1.0f};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_FLOAT_EQ(tone.curveLevels[i], flatLevels[i]);
    EXPECT_FLOAT_EQ(tone.curveValues[i], flatValues[i]);
  }
  tone.contrast = 2.0f;
  tone.buildCurve();
  const float steepLevels[] = {0.0f, 0.275f, 0.5f, 0.625f, 1.0f};
  const float steepValues[] = {0.025f, 0.1f, 0.55f, 0.8f, 0.95f};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_FLOAT_EQ(tone.curveLevels[i], steepLevels[i]);
    EXPECT_FLOAT_EQ(tone.curveValues[i], steepValues[i]);
  }
}

TEST(Split, baseAndDetailAddUpAndTheDetailOfAFlatPlaneIsZero) {
  const prim::FloatModeGuard floatMode;
  LightnessTone tone;
  tone.detailRange = 0.1f;
  Plane plane(70, 50), before(70, 50), detail(70, 50);
  fill(plane, 15);
  copyImage(plane, before);
  tone.splitBaseDetail(plane, detail);
  for (int x = 0; x < 70; ++x)
    EXPECT_NEAR(at(plane, x, 25) + at(detail, x, 25), at(before, x, 25), 1e-6f);
  prim::primSet_32f_C1R(0.4f, plane.data, plane.step, 70, 50);
  tone.splitBaseDetail(plane, detail);
  prim::primAbs_32f_C1IR(detail.data, detail.step, 70, 50);
  float largest = 1.0f;
  prim::primMax_32f_C1R(detail.data, detail.step, 70, 50, &largest);
  // Two passes, each with half a unit of rounding in each of 256 additions to a cell.
  EXPECT_LE(largest, 2 * 256 * 6e-8f * 0.4f);
}

TEST(Unsharp, bandsGiveTheBitsOfWholePlanePasses) {
  const prim::FloatModeGuard floatMode;
  for (const auto& [w, h] : {std::pair{53, 41}, {1, 1}, {1, 9}, {9, 1}, {6, 2}, {200, 3}}) {
    Plane before(w, h), expected(w, h);
    fill(before, 16);
    copyImage(before, expected);
    UnsharpMask mask;
    mask.amount = 1.7f;
    mask.sigma = 1.1f;
    referenceUnsharp(expected, mask.amount, mask.sigma);
    for (const int rows : {0, 1, 2, 3, 4, 7, h}) {
      Plane actual(w, h);
      copyImage(before, actual);
      mask.bandHeight = rows;
      EXPECT_EQ(mask.apply(actual), 0);
      EXPECT_TRUE(sameBits(expected, actual)) << w << "x" << h << ", " << rows << " rows";
    }
    if (w * h == 1) {
      EXPECT_NEAR(at(expected, 0, 0), at(before, 0, 0), 1e-6f);
    }
  }
}

TEST(Unsharp, amountOneAndNarrowSigmasDoNothing) {
  const prim::FloatModeGuard floatMode;
  Plane plane(20, 20), before(20, 20);
  fill(plane, 17);
  copyImage(plane, before);
  UnsharpMask mask;
  mask.amount = 1.0009f;
  mask.sigma = 2.0f;
  mask.apply(plane);
  mask.amount = 2.0f;
  mask.sigma = 0.4f;
  mask.apply(plane);
  EXPECT_TRUE(sameBits(before, plane));
}

}  // namespace
