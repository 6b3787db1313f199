#pragma once

#include "frame/bands.h"
#include "frame/plane_view.h"
#include "frame/step_order.h"
#include "vxenhlib/tone/base_detail_split.h"
#include "vxenhlib/tone/tone_curve.h"

namespace vx {

/// The base of a plane, and the detail D = plane - base from the moment when both are known to its
/// return to whatever has become of the base. On the way its magnitude may be reshaped by a power
/// curve relative to the strongest detail of the image, which keeps its size: with M = |D| + 1e-12
/// and m the largest M, D = (D / M) * curve(M).
///
/// Runs in the steps of StepOrder.
class DetailLayer {
 public:
  /// The plane must stay where it is. Memory of an earlier plane is used again.
  ///
  /// @param rows   most rows of a band, 1 or more
  /// @return false when memory is short; then the plane cannot be split
  bool begin(const PlaneView& plane, float rangeStep, int spatialStep, int rows);

  /// Takes rows y to y + count - 1 of the plane.
  void collect(int y, int count) {
    order_.collect();
    split_.collect(y, count);
  }

  /// Makes the base, on the team of threads; the detail keeps its form.
  void process();
  /// The same, with a power curve for the detail.
  void process(float exponent);

  /// plane = changed base + gain * D in rows y to y + count - 1. D is taken before the base is
  /// handed to changeBase(rows).
  template <class Change>
  void finish(int y, int count, int slot, float gain, const Change& changeBase) const {
    order_.finish();
    part(y, count, slot);
    changeBase(base_.rows(y, count));
    join(gain, y, count, slot);
  }

  void end() { order_.end(); }

 private:
  void part(int y, int count, int slot) const;
  void join(float gain, int y, int count, int slot) const;

  StepOrder order_;
  BaseDetailSplit split_;
  AlignedArray<float> baseMemory_;
  PlaneView plane_;
  PlaneView base_;
  int rows_ = 0;
  PerSlot<float> detail_;  // of a band, over its magnitude when there is a curve
  PerSlot<float> size_;
  PerSlot<Peak> peaks_;
  bool curved_ = false;
  PowerCurve curve_{0.0f, 1.0f};
};

}  // namespace vx
