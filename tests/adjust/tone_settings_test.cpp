#include "adjust/tone_settings.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace {

using vx::AdjustSettings;
using vx::AdjustToneStage;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

float sigma(float amount, int previewScale) {
  AdjustToneStage tone;
  vx::deriveToneSettings({.previewScale = previewScale, .sharpenAmount = amount}, tone);
  EXPECT_EQ(tone.sharpenAmount, amount);
  return tone.sharpenSigma;
}

int radius(float pixels, int previewScale) {
  AdjustToneStage tone;
  vx::deriveToneSettings({.previewScale = previewScale,
                          .lumaEqRadius = pixels,
                          .lumaDetailRadius = pixels,
                          .satEqRadius = pixels},
                         tone);
  EXPECT_EQ(tone.lightness.eqSample, tone.lightness.detailSample);
  EXPECT_EQ(tone.lightness.eqSample, tone.saturation.eqSample);
  return tone.lightness.eqSample;
}

TEST(ToneSettings, sharpeningBlurFollowsAmountAndPreview) {
  EXPECT_FLOAT_EQ(sigma(1.0f, 1), 0.7f);
  EXPECT_FLOAT_EQ(sigma(2.0f, 1), 1.2f);
  EXPECT_FLOAT_EQ(sigma(0.0f, 1), 2.2f);
  EXPECT_FLOAT_EQ(sigma(0.5f, 1), 1.325f);
  EXPECT_FLOAT_EQ(sigma(0.0f, 4), 0.7f);
  EXPECT_FLOAT_EQ(sigma(2.0f, 4), 0.45f);
  EXPECT_FLOAT_EQ(sigma(std::nextafter(1.0f, 2.0f), 2), 0.45f) << "above 1 the square is gone";
}

TEST(ToneSettings, radiiTruncateTwiceAndKeepSixPixels) {
  EXPECT_EQ(radius(3.9f, 1), 6);
  EXPECT_EQ(radius(100.0f, 4), 25);
  EXPECT_EQ(radius(7.5f, 1), 7);
  EXPECT_EQ(radius(15.9f, 2), 7) << "15 / 2, not 15.9 / 2";
  EXPECT_EQ(radius(-50.0f, 1), 6);
  EXPECT_EQ(radius(-50.0f, -1), 50);
  EXPECT_EQ(radius(100.0f, 0), 6);
  EXPECT_EQ(radius(0.0f, 0), 6);
  EXPECT_EQ(radius(kNaN, 1), 6);
  EXPECT_EQ(radius(1e30f, 1), INT_MAX);
}

TEST(ToneSettings, equalisationAmountSetsStrengthAndClip) {
  const struct {
    float amount, strength, clip;
  } cases[] = {{0.0f, 0.0f, 0.0f},         {0.1f, 0.18126925f, 0.02008f},
               {0.5f, 0.99326205f, 0.15f}, {1.0f, 1.0f, 1.0f},
               {2.0f, 1.0f, 1.0f},         {-0.5f, 0.99326205f, 0.0f},  // the clip is limited at 0
               {kNaN, 0.0f, 0.0f}};
  for (const auto& c : cases) {
    AdjustToneStage tone;
    vx::deriveToneSettings({.lumaEqAmount = c.amount}, tone);
    EXPECT_NEAR(tone.lightness.eqStrength, c.strength, 2e-7f) << c.amount;
    EXPECT_NEAR(tone.lightness.eqClip, c.clip, 1e-7f) << c.amount;
  }
}

// Different values everywhere, so that no two fields can be exchanged unseen.
TEST(ToneSettings, everyOtherFieldHasItsSourceOrItsConstant) {
  AdjustToneStage tone;
  tone.saturation.eqBlend = 0.77f;
  vx::deriveToneSettings({.lumaEqPeakGain = 1.5f,
                          .lumaGamma = 2.5f,
                          .lumaEqTopCut = 3.5f,
                          .lumaEqFloor = 4.5f,
                          .lumaDetailRange = 5.5f,
                          .lumaDetailGamma = 6.5f,
                          .lumaDetailGain = 7.5f,
                          .satEqAmount = 8.5f,
                          .satContrast = 9.5f,
                          .satGamma = 10.5f,
                          .hueShift = 11.5f},
                         tone);
  EXPECT_EQ(tone.hueShift, 11.5f);
  EXPECT_EQ(tone.lightness.eqPeakGain, 1.5f);
  EXPECT_EQ(tone.lightness.gamma, 2.5f);
  EXPECT_EQ(tone.lightness.eqTopCut, 3.5f);
  EXPECT_EQ(tone.lightness.eqFloor, 4.5f);
  EXPECT_EQ(tone.lightness.detailRange, 5.5f);
  EXPECT_EQ(tone.lightness.detailGamma, 6.5f);
  EXPECT_EQ(tone.lightness.detailGain, 7.5f);
  EXPECT_EQ(tone.saturation.eqStrength, 8.5f);
  EXPECT_EQ(tone.saturation.contrast, 9.5f);
  EXPECT_EQ(tone.saturation.gamma, 10.5f);
  EXPECT_EQ(tone.saturation.eqBlend, 0.77f) << "not for the settings to decide";
  EXPECT_EQ(tone.saturation.reserved1, 0.02f);
  EXPECT_EQ(tone.saturation.detailRange, 0.0f);
  EXPECT_EQ(tone.saturation.detailSample, 10);
  EXPECT_EQ(tone.saturation.mode, 0);
  EXPECT_EQ(tone.saturation.brightness, 0.0f);
  EXPECT_EQ(tone.saturation.highKnee, 0.1f);
  EXPECT_EQ(tone.saturation.lowKnee, 0.1f);
  EXPECT_EQ(tone.saturation.detailGain, 0.0f);
}

}  // namespace
