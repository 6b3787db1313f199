#include "adjust/tone_settings.h"

#include "tests/support/test.h"

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
  // The last: times 1 / 41 in single precision; divided it would be 14.
  const std::tuple<float, int, int> cases[] = {
      {3.9f, 1, 6},   {100.0f, 4, 25},     {7.5f, 1, 7},    {15.9f, 2, 7},
      {-50.0f, 1, 6}, {-50.0f, -1, 50},    {100.0f, 0, 6},  {0.0f, 0, 6},
      {kNaN, 1, 6},   {1e30f, 1, INT_MAX}, {574.0f, 41, 13}};
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
  using S = AdjustSettings;
  using L = vx::LightnessTone;
  using T = vx::SaturationTone;
  constexpr std::pair<float S::*, float L::*> kLightness[] = {
      {&S::lumaEqPeakGain, &L::eqPeakGain},   {&S::lumaGamma, &L::gamma},
      {&S::lumaEqTopCut, &L::eqTopCut},       {&S::lumaEqFloor, &L::eqFloor},
      {&S::lumaDetailRange, &L::detailRange}, {&S::lumaDetailGain, &L::detailGain},
      {&S::lumaDetailGamma, &L::detailGamma}};
  constexpr std::pair<float S::*, float T::*> kSaturation[] = {{&S::satEqAmount, &T::eqStrength},
                                                               {&S::satContrast, &T::contrast},
                                                               {&S::satGamma, &T::gamma}};
  S settings{
      .lumaEqRadius = 21.0f, .lumaDetailRadius = 22.0f, .satEqRadius = 23.0f, .hueShift = 11.5f};
  float value = 20.5f;
  for (const auto& [from, to] : kLightness) settings.*from = value += 1.0f;
  for (const auto& [from, to] : kSaturation) settings.*from = value += 1.0f;
  AdjustToneStage tone;
  tone.saturation.eqBlend = 0.77f;
  vx::deriveToneSettings(settings, tone);
  for (const auto& [from, to] : kLightness) EXPECT_EQ(tone.lightness.*to, settings.*from);
  for (const auto& [from, to] : kSaturation) EXPECT_EQ(tone.saturation.*to, settings.*from);
  EXPECT_EQ(tone.hueShift, 11.5f);
  EXPECT_EQ(tone.lightness.eqSample, 21);
  EXPECT_EQ(tone.lightness.detailSample, 22);
  EXPECT_EQ(tone.saturation.eqSample, 23);
  EXPECT_EQ(tone.saturation.eqBlend, 0.77f) << "not for the settings to decide";
}

}  // namespace
