#pragma once

// The noise estimate written out pixel by pixel, on plain integers and without a primitive.

#include <vector>

#include "tests/support/picture.h"

namespace vx::test {

struct ReferenceEstimate {
  float minLevel = 0.0f;
  float meanLevel = 0.0f;
  float noiseSigma = 0.0f;
};

/// A plane with rows one after the other.
struct FloatPlane {
  int width = 0;
  int height = 0;
  std::vector<float> data;

  float& at(int x, int y) {
    return data[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(x)];
  }
};

ReferenceEstimate referenceEstimate(FloatPlane luma, int maskSize);

/// The luma of columns x0 on and rows y0 on of the picture; a picture of no known format is black.
FloatPlane referenceLuma(Picture& picture, int x0, int y0, int width, int height);

}  // namespace vx::test
