#pragma once

#include "frame/aligned_array.h"
#include "vxenhlib/nonlocal/filtered_stacks.h"

namespace vx {

/// The weighted sums that one share of the walk collects: a plane of weights and one for each plane
/// that is filtered, over the rows that the share reaches. The sums of all shares are joined in
/// their order, which makes the result independent of the threads.
///
///     total(x, y) = sum over the blocks there of weight * sample, weights(x, y) = of weight
class WeightedSums {
 public:
  /// Makes `planes` planes and that of the weights over the rows from `top` to below `bottom`;
  /// false, and empty, when memory is short.
  bool reserve(int planes, int width, int top, int bottom);
  void release();

  /// The rows that hold sums are those from top() to below reached(): so far has add() come.
  int top() const { return top_; }
  int reached() const { return reached_; }
  /// Row y, in image rows, of plane p; of the weights for p = planes.
  float* row(int p, int y) const {
    return sums_.data() +
           (std::ptrdiff_t{p} * (bottom_ - top_) + (y - top_)) * std::ptrdiff_t{width_};
  }

  /// Adds a filtered stack at the places of its matches.
  void add(int blockSize, const FilteredStacks::Stack& stack, std::ptrdiff_t planeFloats);

 private:
  void reach(int bottom);

  AlignedArray<float> sums_;
  int planes_ = 0;
  int width_ = 0;
  int top_ = 0;
  int bottom_ = 0;
  int reached_ = 0;
};

}  // namespace vx
