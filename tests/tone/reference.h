#pragma once

// The tone chain as it is defined: whole planes, one step after the other, every pixel on its own.
// The grids share nothing with the library; the classes around them are chains of primitives over
// whole planes, and so are the planes of scratch.

#include "tests/tone/planes.h"
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
void referenceSplit(Plane& plane, Plane& detail, float rangeStep, int spatialStep);
void referenceLightness(Plane& plane, const LightnessTone& tone);
void referenceSaturation(Plane& plane, const SaturationTone& tone);
void referenceStage(IMG3<float>& image, const AdjustToneStage& stage);

}  // namespace vx::test
