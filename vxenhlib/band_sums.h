#pragma once

#include "vxenhlib/aligned_array.h"
#include "vxenhlib/plane_view.h"
#include "vxenhlib/stack_selection.h"

namespace vx {

/// The weighted sums that one band of the walk collects: a plane of weights and one for each plane
/// that is filtered, over the rows that the band reaches. The sums of all bands are joined in their
/// order, which makes the result independent of the threads.
class BandSums {
 public:
  /// Makes `planes` planes and that of the weights, all 0, over the rows from `top` to below
  /// `bottom`; false, and empty, when memory is short.
  bool reserve(int planes, int width, int top, int bottom);
  void release();

  int top() const { return top_; }
  int bottom() const { return bottom_; }
  /// Row y, in image rows, of plane p; of the weights for p = planes.
  float* row(int p, int y) const {
    return sums_.data() +
           (std::ptrdiff_t{p} * (bottom_ - top_) + (y - top_)) * std::ptrdiff_t{width_};
  }

  /// Adds the blocks 0 to count - 1 of a stack to plane p at the places of the matches.
  ///
  /// @param blocks  first block; rows `pitch` floats apart, blocks `slice` floats (0: one block for
  ///   all places)
  void add(int p, const StackMatches& matches, int count, const float* blocks, int slice, int pitch,
           int blockWidth, int blockHeight);

 private:
  AlignedArray<float> sums_;
  int width_ = 0;
  int top_ = 0;
  int bottom_ = 0;
};

}  // namespace vx
