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

}  // namespace vx::test
