#pragma once

// The tone chain as it is defined: whole planes, one step after the other, every pixel on its own.
// Of the library it uses only the primitives for curves, filters and colour.

#include "prim/float_mode.h"
#include "tests/support/images.h"
#include "vxenhlib/adjust_tone_stage.h"

namespace vx::test {

struct Range {
  float low, high, step;
};

/// BilateralFilter::filter.
void referenceFilter(Plane& data, const Plane& guide, const Range& range, int spatialSample);

struct EqSettings {
  float outLow, outScale, peakGain, peakPosition, strength, clipScale;
};

/// BilateralLocalHistEq::equalize with 0.01 per bin over 0 to 1.
void referenceEqualize(Plane& image, int spatialSample, const EqSettings& settings);

void referenceUnsharp(Plane& plane, float amount, float sigma);
void referenceStage(IMG3<float>& image, const AdjustToneStage& stage);

/// Everything runs, nothing at a neutral value, no two alike that could be exchanged.
inline AdjustToneStage fullSetting() {
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
  stage.saturation.lowKnee = 0.1f;
  stage.saturation.highKnee = 0.15f;
  stage.saturation.detailGain = 1.3f;
  return stage;
}

}  // namespace vx::test
