#pragma once

#include "frame/aligned_array.h"
#include "frame/plane_view.h"

namespace vx {

/// The correlation of blocks with the positions of a few columns of a tile, summed up directly:
/// where a tile has moved by one step of the walk, that is less work than transforms. One object
/// serves one thread.
class ColumnCorrelation {
 public:
  /// For blocks of that size and `columns` columns of positions in tiles of up to `rows` rows;
  /// false when memory is short.
  bool reserve(int blockWidth, int blockHeight, int columns, int rows);

  /// Takes the region that the positions (x + u, y + v) cover, with u below `columns` and blocks
  /// inside the `rows` rows from y.
  void setRegion(const PlaneView& plane, int x, int y, int columns, int rows);

  /// Sums up the products of the block at (x, y) of a plane with all positions of the region.
  void correlate(const PlaneView& plane, int x, int y);

  /// The sum of position (u, v) is sums(u)[v].
  const float* sums(int u) const { return sums_.data() + u * sumsPitch_; }

 private:
  int blockWidth_ = 0;
  int blockHeight_ = 0;
  int columns_ = 0;  // of positions
  int rows_ = 0;     // of positions
  std::ptrdiff_t regionPitch_ = 0;
  std::ptrdiff_t sumsPitch_ = 0;
  // All of them column by column, so that the rows of positions lie in vectors.
  AlignedArray<float> region_;
  AlignedArray<float> block_;
  AlignedArray<float> sums_;
};

}  // namespace vx
