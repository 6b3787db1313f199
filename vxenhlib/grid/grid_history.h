#pragma once

#include "frame/aligned_array.h"
#include "vxenhlib/grid/grid_shape.h"

namespace vx {

/// The grid of the call before, for grids that are blended from call to call.
class GridHistory {
 public:
  bool reserve(const GridShape& shape) { return grid_.reserve(shape.cells()); }
  void release() { grid_.release(); }

  /// Unless it is the `first` grid: grid = history * share + grid * (1 - share), with `share`
  /// limited to 0..1, where 0 and 1 leave nothing of the other grid, whatever it holds. Then the
  /// history becomes the grid.
  void blend(float* grid, const GridShape& shape, float share, bool first);

 private:
  AlignedArray<float> grid_;
};

}  // namespace vx
