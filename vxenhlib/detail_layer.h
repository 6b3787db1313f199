#pragma once

#include "vxenhlib/bands.h"
#include "vxenhlib/plane_view.h"
#include "vxenhlib/tone_curve.h"

namespace vx {

/// The detail D = plane - base of some rows between the moment when both are known and its return
/// to whatever has become of the base. On the way its magnitude may be reshaped by a power curve
/// relative to the strongest detail of the image, which keeps its size: with M = |D| + 1e-12 and m
/// the largest M, D = (D / M) * curve(M).
class DetailCurve {
 public:
  /// Room for bands of up to `rows` rows; false when memory is short.
  bool reserve(int width, int rows);

  /// Fixes the curve by the peak of |D|.
  void setCurve(const Peak& peak, float exponent);
  void setNoCurve() { curved_ = false; }

  void part(const PlaneView& plane, const PlaneView& base, int slot) const;
  /// plane = layer + gain * D, with the D of the slot's last part().
  void join(float gain, const PlaneView& layer, const PlaneView& plane, int slot) const;

 private:
  PerSlot<float> detail_;  // of a band, over its magnitude when there is a curve
  PerSlot<float> size_;
  bool curved_ = false;
  PowerCurve curve_{0.0f, 1.0f};
};

/// Adds |plane - base| to the peak. `scratch` holds one row.
void addMagnitudes(const PlaneView& plane, const PlaneView& base, float* scratch, Peak& peak);

}  // namespace vx
