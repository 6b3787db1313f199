#pragma once

// The two grid classes as they are defined: whole planes, every pixel on its own. Of the library it
// uses only the primitives for filters.

#include "tests/support/images.h"

namespace vx::test {

struct Range {
  float low, high, step;
};

/// BilateralFilter::filter.
void referenceFilter(Plane& data, const Plane& guide, const Range& range, int spatialSample);

struct EqSettings {
  float outLow, outScale, peakGain, peakPosition, strength, clipScale;
  float rangeStep = 0.01f, low = 0.0f;
};

/// BilateralLocalHistEq::equalize over `low` to low + 1.
void referenceEqualize(Plane& image, int spatialSample, const EqSettings& settings);

}  // namespace vx::test
