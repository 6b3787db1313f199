#pragma once

// The tone chain as it is defined: whole planes, one step after the other, every pixel on its own.
// Of the library it uses only the primitives for curves, filters and colour.

#include "prim/float_mode.h"
#include "tests/support/images.h"
#include "vxenhlib/tone/adjust_tone_stage.h"

namespace vx::test {

/// LightnessTone::splitBaseDetail.
void referenceSplit(Plane& plane, Plane& detail, float rangeStep, int spatialSample);

void referenceUnsharp(Plane& plane, float amount, float sigma);
void referenceStage(IMG3<float>& image, const AdjustToneStage& stage);

/// Everything runs, nothing at a neutral value, no two alike that could be exchanged.
inline AdjustToneStage fullSetting() {
  AdjustToneStage stage;
  stage.sharpenAmount = 1.6f;
  stage.sharpenSigma = 1.0f;
  stage.hueShift = 0.03f;
  // equalisation: strength, clip, sample, peak; gamma, top cut, floor; detail: range, sample, gain,
  // gamma
  stage.lightness = {0.8f, 0.3f, 20, 0.5f, 0.4f, 0.03f, 0.02f, 0.1f, 9, 1.4f, 0.8f};
  SaturationTone& saturation = stage.saturation;
  saturation.eqStrength = 0.3f;
  saturation.eqSample = 25;
  saturation.contrast = 1.1f;
  saturation.gamma = 0.9f;
  saturation.lowKnee = 0.1f;
  saturation.highKnee = 0.15f;
  saturation.detailGain = 1.3f;
  return stage;
}

}  // namespace vx::test
