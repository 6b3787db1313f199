#pragma once

#include "frame/aligned_array.h"
#include "vxenhlib/grid/grid_shape.h"

namespace vx {

/// Blurs the sums of values and of weights of a grid and divides them, plane by plane while the
/// grid is being filled: of the sums only the last planes exist, and stay in cache.
///
/// The kernel is 1 2 1 along each axis. Before that the second layer of cells along x and along the
/// value is overwritten with the third, from both ends; the planes beside the first and last with
/// samples take the blurred plane next to them. The outermost cells of every axis are divided as
/// they are. (The same as blurGrid on both grids and a division.)
class SlidingBlur {
 public:
  /// For grids of at least five planes; false when memory is short.
  bool reserve(const GridShape& shape);
  /// Begins with plane 0.
  void begin() { next_ = 0; }

  /// Where the sums of the next plane go. The weights are above 0.
  float* values() const { return raw(next_, 0); }
  float* weights() const { return raw(next_, 1); }

  /// Takes the plane that values() and weights() hold, whose borders change, and writes the planes
  /// of `grid` that are complete with it: the one before it, and the first or last itself.
  void push(float* grid);

  void release();

 private:
  static constexpr int kRaw = 2;      // planes of sums that are still needed
  static constexpr int kBlurred = 3;  // and of those blurred along x and the value

  float* raw(int y, int kind) const { return plane(2 * (y % kRaw) + kind); }
  float* blurred(int y, int kind) const;
  float* plane(int i) const { return planes_.data() + static_cast<std::size_t>(i) * stride_; }
  void blur(int kind);
  void divide(int y, float* out) const;
  void joinAndDivide(int y, float* out) const;

  GridShape shape_;
  std::size_t stride_ = 0;
  AlignedArray<float> planes_;
  int next_ = 0;
};

}  // namespace vx
