#include "adjust/tone_settings.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <tuple>

namespace {

using vx::AdjustSettings;
using vx::AdjustToneStage;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

AdjustToneStage derive(const AdjustSettings& settings) {
  AdjustToneStage tone;
  vx::deriveToneSettings(settings, tone);
  return tone;
}

TEST(ToneSettings, sharpeningBlurFollowsAmountAndPreview) {
  const float above = std::nextafter(1.0f, 2.0f);  // there the square is gone
  const std::tuple<float, int, float> cases[] = {
      {1.0f, 1, 0.7f}, {2.0f, 1, 1.2f},  {0.0f, 1, 2.2f},  {0.5f, 1, 1.325f},
      {0.0f, 4, 0.7f}, {2.0f, 4, 0.45f}, {above, 2, 0.45f}};
  for (const auto& [amount, previewScale, sigma] : cases) {
    const auto tone = derive({.previewScale = previewScale, .sharpenAmount = amount});
    EXPECT_EQ(tone.sharpenAmount, amount);
    EXPECT_FLOAT_EQ(tone.sharpenSigma, sigma) << amount << " " << previewScale;
  }
}

TEST(ToneSettings, radiiTruncateTwiceAndKeepSixPixels) {
  const std::tuple<float, int, int> cases[] = {
      {3.9f, 1, 6},     {100.0f, 4, 25}, {7.5f, 1, 7}, {15.9f, 2, 7}, {-50.0f, 1, 6},
      {-50.0f, -1, 50}, {100.0f, 0, 6},  {0.0f, 0, 6}, {kNaN, 1, 6},  {1e30f, 1, INT_MAX}};
  for (const auto& [pixels, previewScale, radius] : cases) {
    const auto tone = derive({.previewScale = previewScale, .lumaEqRadius = pixels});
    EXPECT_EQ(tone.lightness.eqSample, radius) << pixels << " " << previewScale;
  }
}

TEST(ToneSettings, equalisationAmountSetsStrengthAndClip) {
  const std::tuple<float, float, float> cases[] = {
      {0.0f, 0.0f, 0.0f},         {0.1f, 0.18126925f, 0.02008f},
      {0.5f, 0.99326205f, 0.15f}, {1.0f, 1.0f, 1.0f},
      {2.0f, 1.0f, 1.0f},         {-0.5f, 0.99326205f, 0.0f},  // the clip is limited at 0
      {kNaN, 0.0f, 0.0f}};
  for (const auto& [amount, strength, clip] : cases) {
    const auto tone = derive({.lumaEqAmount = amount});
    EXPECT_NEAR(tone.lightness.eqStrength, strength, 2e-7f) << amount;
    EXPECT_NEAR(tone.lightness.eqClip, clip, 1e-7f) << amount;
  }
}

// Different values everywhere, so that no two fields can be exchanged unseen.
TEST(ToneSettings, everyOtherFieldHasItsSource) {
  AdjustToneStage tone;
  tone.saturation.eqBlend = 0.77f;
  vx::deriveToneSettings({.lumaEqRadius = 21.0f,
                          .lumaEqPeakGain = 1.5f,
                          .lumaGamma = 2.5f,
                          .lumaEqTopCut = 3.5f,
                          .lumaEqFloor = 4.5f,
                          .lumaDetailRange = 5.5f,
                          .lumaDetailRadius = 22.0f,
                          .lumaDetailGamma = 6.5f,
                          .lumaDetailGain = 7.5f,
                          .satEqAmount = 8.5f,
                          .satEqRadius = 23.0f,
                          .satContrast = 9.5f,
                          .satGamma = 10.5f,
                          .hueShift = 11.5f},
                         tone);
  EXPECT_EQ(tone.hueShift, 11.5f);
  EXPECT_EQ(tone.lightness.eqSample, 21);
  EXPECT_EQ(tone.lightness.detailSample, 22);
  EXPECT_EQ(tone.saturation.eqSample, 23);
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
}

}  // namespace
