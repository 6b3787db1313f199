#pragma once

#include "frame/bands.h"
#include "frame/plane_view.h"
#include "vxenhlib/grid/grid_shape.h"

namespace vx {

/// Reads a grid back at every pixel by trilinear interpolation. The two grid rows that an image row
/// lies between change only every `spatialSample` rows; they are repacked once (prim/grid.h) and
/// kept per thread.
class GridReader {
 public:
  /// Memory for the threads of the team as it is now; false when it is short.
  bool reserve(int imageWidth, const GridShape& shape);

  /// Starts reading a grid that is not written any more. The spare cells behind it are read.
  void begin(const float* grid, const GridShape& shape, int spatialSample, int imageWidth,
             const prim::GridAxis& axis);

  /// out = the grid at the rows of the image from `y` on, its columns and the values of `guide`,
  /// both of as many rows. `out` may be `guide`. Slots may run at the same time.
  void readRows(int y, const PlaneView& guide, const PlaneView& out, int slot);

 private:
  void pack(int gridRow, int slot);

  GridShape shape_;
  int spatialSample_ = 2;
  int imageWidth_ = 0;
  int packedDepth_ = 0;
  prim::GridAxis axis_{};
  const float* grid_ = nullptr;
  GridColumns columns_;
  PerSlot<float> packed_;
  PerSlot<int> packedRow_;
};

}  // namespace vx
