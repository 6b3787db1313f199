#pragma once

#include "vxenhlib/aligned_array.h"
#include "vxenhlib/plane_view.h"
#include "vxenhlib/tone_curve.h"

namespace vx {

/// Reshapes the magnitude of a detail layer by a power curve relative to the strongest detail of
/// the image, which keeps its size: with M = |D| + 1e-12 and m the largest M, D = (D / M) *
/// curve(M).
class DetailCurve {
 public:
  /// Room for bands of up to `rows` rows; false when memory is short.
  bool reserve(int width, int rows);

  /// Fixes the curve by the peak of |D|.
  void setCurve(const Peak& peak, float exponent);

  void apply(const PlaneView& detail) const;

 private:
  AlignedArray<float> magnitude_;
  PowerCurve curve_{0.0f, 1.0f};
};

/// Adds |D| of some rows to the peak. `scratch` holds one row.
void addMagnitudes(const PlaneView& detail, float* scratch, Peak& peak);

}  // namespace vx
