#include "vxenhlib/grid/grid_reader.h"

#include <algorithm>

namespace vx {
namespace {

int packedDepth(const GridShape& shape) { return std::min(shape.depth, kUsedDepth); }

}  // namespace

bool GridReader::reserve(int imageWidth, const GridShape& shape) {
  const std::size_t cells =
      static_cast<std::size_t>(shape.width) * static_cast<std::size_t>(packedDepth(shape)) +
      kSpareCells;
  return columns_.reserve(imageWidth) && packed_.reserve(4 * cells) && packedRow_.reserve(1);
}

void GridReader::begin(const float* grid, const GridShape& shape, int spatialSample, int imageWidth,
                       const prim::GridAxis& axis) {
  grid_ = grid;
  shape_ = shape;
  spatialSample_ = spatialSample;
  imageWidth_ = imageWidth;
  axis_ = axis;
  packedDepth_ = packedDepth(shape);
  columns_.fill(imageWidth, spatialSample, shape, packedDepth_);
  for (int slot = 0; slot < bandSlots(); ++slot) *packedRow_.at(slot) = -1;
}

void GridReader::pack(int gridRow, int slot) {
  *packedRow_.at(slot) = gridRow;
  const std::size_t plane = shape_.planeCells();
  const float* near = grid_ + plane * static_cast<std::size_t>(gridRow);
  const float* far = near + plane;
  float* packed = packed_.at(slot);
  const int lastColumn = shape_.width - 3;
  if (shape_.depth < kUsedDepth) {
    // One run over all columns: a bin beyond its column reads the columns that follow.
    prim::primvGridPack_32f(near, far, shape_.depth, packed,
                            lastColumn * shape_.depth + kUsedDepth);
    return;
  }
  for (int x = 0; x <= lastColumn; ++x) {
    const std::size_t from = static_cast<std::size_t>(x) * static_cast<std::size_t>(shape_.depth);
    const std::size_t to = static_cast<std::size_t>(x) * kUsedDepth;
    prim::primvGridPack_32f(near + from, far + from, shape_.depth, packed + 4 * to, kUsedDepth);
  }
}

// Strip by strip through all rows between the same two grid rows, so that the cells of the strip
// stay in the first-level cache.
void GridReader::readRows(int y, const PlaneView& guide, const PlaneView& out, int slot) {
  constexpr int kStrip = 256;
  for (int first = 0, last = 0; first < guide.height; first = last) {
    const int cell = gridPosition(y + first, spatialSample_, shape_.height).cell;
    if (*packedRow_.at(slot) != cell) pack(cell, slot);
    while (last < guide.height &&
           gridPosition(y + last, spatialSample_, shape_.height).cell == cell)
      ++last;
    for (int x = 0; x < imageWidth_; x += kStrip) {
      const int count = std::min(kStrip, imageWidth_ - x);
      for (int i = first; i < last; ++i)
        prim::primvGridRead_32f(guide.row(i) + x, out.row(i) + x, count, &axis_, packed_.at(slot),
                                columns_.offset() + x, columns_.fraction() + x,
                                gridPosition(y + i, spatialSample_, shape_.height).fraction);
    }
  }
}

}  // namespace vx
