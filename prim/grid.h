#pragma once

// Rows of pixels against a grid whose third axis is the pixel value: which cell of that axis a
// value falls into, and the trilinear read of the grid at (column, row, value). For all of them:
//
// - One grid row is `columns` columns of `depth` cells, the cells of a column side by side.
// - Single precision at every step, in the stated order; every body gives the same bits.
// - Errors: kStatusNullPtr for any null pointer, kStatusBadSize for a length below 1. Nothing else
//   is checked: the caller ensures that all 257 cells from each column on exist.

#include "prim/types.h"

namespace vx::prim {

/// How a value becomes a coordinate on the value axis.
struct GridAxis {
  bool clip;  ///< limit the value to `high` from above, then to `low` from below
  float low;  ///< a NaN takes the limit `high`
  float high;
  float origin;  ///< coordinate = (value - origin) * scale + offset
  float scale;
  float offset;
  std::uint8_t topCell;  ///< cells of primvGridCells_32f8u end here; reads end at 255
};

/// dst = the cell of each value: its coordinate truncated, limited to 0..topCell. NaN gives 0.
int primvGridCells_32f8u(const float* src, std::uint8_t* dst, int length, const GridAxis* axis);

/// Brings the four neighbours of each cell side by side:
/// packed[4p .. 4p + 3] = near[p], near[p + depth], far[p], far[p + depth].
///
/// @param near,far   one grid row and the next one; cells + depth floats are read of each
int primvGridPack_32f(const float* near, const float* far, int depth, float* packed, int cells);

/// dst = the grid at the pixel's place and value. With z the coordinate of guide(x) truncated and
/// limited to 0..255, fz the coordinate less z, fx = fraction[x], fy = rowFraction and C the packed
/// cells: first along the value, L = C(z + 1) * fz + C(z) * (1 - fz), then along the row,
/// M = fx * L(right) + (1 - fx) * L(left), then across, (1 - fy) * M(near) + fy * M(far).
///
/// `dst` may be `guide`.
/// @param packed    of primvGridPack_32f
/// @param column    packed index of cell 0 in the column left of each pixel
int primvGridRead_32f(const float* guide, float* dst, int length, const GridAxis* axis,
                      const float* packed, const int* column, const float* fraction,
                      float rowFraction);

}  // namespace vx::prim
