#include "adjust/tone_settings.h"

#include <cmath>

#include "frame/to_int.h"

namespace vx {
namespace {

// A grid cell below this many pixels would cost more than it shows, also on the smallest preview.
constexpr int kLeastRadius = 6;

float limitToOne(float value) {
  const float positive = value > 0.0f ? value : 0.0f;  // NaN becomes 0
  return positive < 1.0f ? positive : 1.0f;
}

// Truncated before the scaling and after it. A preview scale of 0 has no finite scaled radius and
// gets the least one.
int scaledRadius(float radius, float invScale) {
  const float scaled = static_cast<float>(toInt(radius)) * invScale;
  if (!std::isfinite(scaled)) return kLeastRadius;
  const int pixels = toInt(scaled);
  return pixels > kLeastRadius ? pixels : kLeastRadius;
}

// Softening (an amount up to 1) widens the blur the more it takes away, sharpening the more it
// adds.
float sharpenSigma(float amount, float invScale) {
  const float softening = 2.0f - amount;
  const float spread = amount <= 1.0f ? invScale * (softening * softening) : amount * invScale;
  return spread * 0.5f + 0.2f;
}

}  // namespace

void deriveToneSettings(const AdjustSettings& settings, AdjustToneStage& tone) {
  const float invScale = 1.0f / static_cast<float>(settings.previewScale);

  tone.sharpenAmount = settings.sharpenAmount;
  tone.sharpenSigma = sharpenSigma(settings.sharpenAmount, invScale);
  tone.hueShift = settings.hueShift;

  const float amount = settings.lumaEqAmount;
  const float square = amount * amount;
  LightnessTone& lightness = tone.lightness;
  lightness.eqStrength = limitToOne(1.0f - std::exp(-square / 0.05f));
  lightness.eqClip = limitToOne((amount + 4.0f * (square * square)) * 0.2f);
  lightness.eqSample = scaledRadius(settings.lumaEqRadius, invScale);
  lightness.eqPeakGain = settings.lumaEqPeakGain;
  lightness.gamma = settings.lumaGamma;
  lightness.eqTopCut = settings.lumaEqTopCut;
  lightness.eqFloor = settings.lumaEqFloor;
  lightness.detailRange = settings.lumaDetailRange;
  lightness.detailSample = scaledRadius(settings.lumaDetailRadius, invScale);
  lightness.detailGain = settings.lumaDetailGain;
  lightness.detailGamma = settings.lumaDetailGamma;

  SaturationTone& saturation = tone.saturation;
  saturation.eqStrength = settings.satEqAmount;
  saturation.eqSample = scaledRadius(settings.satEqRadius, invScale);
  saturation.reserved1 = 0.02f;
  saturation.detailRange = 0.0f;
  saturation.detailSample = 10;
  saturation.mode = 0;
  saturation.contrast = settings.satContrast;
  saturation.brightness = 0.0f;
  saturation.highKnee = 0.1f;
  saturation.lowKnee = 0.1f;
  saturation.detailGain = 0.0f;
  saturation.gamma = settings.satGamma;
}

}  // namespace vx
