#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/aligned_array.h"
#include "prim/grid.h"

namespace vx {

/// Padding cells on each side of x and y, and on each end of the value axis.
inline constexpr int kSpatialPad = 1;
inline constexpr int kRangePad = 1;

/// Bins are bytes and a read takes the cell above its bin: no column is used beyond this depth,
/// plus one cell that a bin's neighbourhood blurs in and the two of the padding.
inline constexpr int kUsedDepth = 257;
inline constexpr int kDeepest = 260;

/// A bin may lie beyond its column and then means a cell of the following columns, in the end cells
/// behind the grid.
inline constexpr int kSpareCells = 257;

/// Cells of a grid along x, y and the value, padding included. Element (y, x, z) of the grid stands
/// at (y * width + x) * depth + z; all y of one value make a plane.
struct GridShape {
  int width = 0;
  int height = 0;
  int depth = 0;

  bool operator==(const GridShape&) const = default;
  std::size_t planeCells() const {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(depth);
  }
  std::size_t cells() const { return planeCells() * static_cast<std::size_t>(height); }
};

/// The shape for a plane of width by height: one cell per `spatialSample` pixels begun, plus 2,
/// plus the padding; along the value one cell per `rangeSample` begun, plus 2, plus the padding,
/// but at most `deepest`. All zero when no such grid can be held (a size that is not positive, or a
/// plane of the grid with more cells than an int counts).
GridShape gridShape(int width, int height, float rangeMin, float rangeMax, int spatialSample,
                    float rangeSample, int deepest);

/// The value axis of a grid:
/// coordinate = (value - rangeMin) * ((rangeMax - rangeMin) / rangeSample) + offset. The factor is
/// the span over the step, not one over the step: for a span other than 1 the coordinates stretch
/// by the span.
prim::GridAxis gridAxis(float rangeMin, float rangeMax, float rangeSample, float offset, bool clip);

/// Where each image column falls in a grid: with fx = 1.5 + x / spatialSample, the index of the
/// column trunc(fx) at a given depth, and the fraction fx - trunc(fx).
class GridColumns {
 public:
  /// False when memory is short.
  bool reserve(int width);
  void fill(int width, int spatialSample, const GridShape& shape, int depth);

  const int* offset() const { return offset_.data(); }
  const float* fraction() const { return fraction_.data(); }

 private:
  AlignedArray<int> offset_;
  AlignedArray<float> fraction_;
};

/// Position of pixel `i` along an axis of `cells` cells: the cell before it and the way to the
/// next.
struct GridPosition {
  int cell;
  float fraction;
};
GridPosition gridPosition(int i, int spatialSample, int cells);

}  // namespace vx
