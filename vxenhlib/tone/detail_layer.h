#pragma once

#include "frame/bands.h"
#include "frame/plane_view.h"
#include "vxenhlib/tone/base_detail_split.h"
#include "vxenhlib/tone/tone_curve.h"

namespace vx {

/// The base of a plane, and the detail D = plane - base from the moment when both are known to its
/// return to whatever has become of the base. On the way its magnitude may be reshaped by a power
/// curve relative to the strongest detail of the image, which keeps its size: with M = |D| + 1e-12
/// and m the largest M, D = (D / M) * curve(M).
///
/// Runs in steps: begin(), collect() from the top row down, makeBase(), then part() and join() for
/// each band of rows, by several threads at a time.
class DetailLayer {
 public:
  /// The plane must stay where it is. Memory of an earlier plane is used again.
  ///
  /// @return false when memory is short; the plane is not to be split then
  bool begin(const PlaneView& plane, float rangeStep, int spatialStep, int bandHeight);

  /// Takes rows y to y + count - 1 of the plane.
  void collect(int y, int count) { split_.collect(y, count); }

  /// Makes the base, on the team of threads; the detail keeps its form.
  void makeBase();
  /// The same, with a power curve for the detail.
  void makeBase(float exponent);

  /// Rows of the base, free to be changed after their part().
  PlaneView base(int y, int count) const { return base_.rows(y, count); }
  void part(int y, int count, int slot) const;
  /// plane = base + gain * D, with the D of the slot's last part().
  void join(float gain, int y, int count, int slot) const;

 private:
  BaseDetailSplit split_;
  AlignedArray<float> baseMemory_;
  PlaneView plane_;
  PlaneView base_;
  PerSlot<float> detail_;  // of a band, over its magnitude when there is a curve
  PerSlot<float> size_;
  bool curved_ = false;
  PowerCurve curve_{0.0f, 1.0f};
};

}  // namespace vx
