#include "vxenhlib/nonlocal/column_correlation.h"

#include <algorithm>

#include "prim/search.h"

namespace vx {
namespace {

// Positions are looked at in whole vectors of the widest kind, two together.
constexpr int kTogether = 32;

}  // namespace

bool ColumnCorrelation::reserve(int blockWidth, int blockHeight, int columns, int rows) {
  blockWidth_ = blockWidth;
  blockHeight_ = blockHeight;
  sumsPitch_ = (rows + kTogether - 1) / kTogether * kTogether;
  regionPitch_ = sumsPitch_ + blockHeight - 1;
  const auto width = static_cast<std::size_t>(blockWidth);
  const auto positions = static_cast<std::size_t>(columns);
  return region_.reserve((positions + width) * static_cast<std::size_t>(regionPitch_)) &&
         sums_.reserve(positions * static_cast<std::size_t>(sumsPitch_)) &&
         block_.reserve(width * static_cast<std::size_t>(blockHeight));
}

// Behind the last row stand zeros, for the positions that fill up the last vectors.
void ColumnCorrelation::setRegion(const PlaneView& plane, int x, int y, int columns, int rows) {
  columns_ = columns;
  rows_ = rows - blockHeight_ + 1;
  const int across = columns + blockWidth_ - 1;
  for (int v = 0; v < rows; ++v) {
    const float* from = plane.row(y + v) + x;
    float* to = region_.data() + v;
    for (int u = 0; u < across; ++u) to[u * regionPitch_] = from[u];
  }
  for (int u = 0; u < across; ++u)
    std::fill(region_.data() + u * regionPitch_ + rows, region_.data() + (u + 1) * regionPitch_,
              0.0f);
}

void ColumnCorrelation::correlate(const PlaneView& plane, int x, int y) {
  float* block = block_.data();
  for (int c = 0; c < blockWidth_; ++c)
    for (int r = 0; r < blockHeight_; ++r) *block++ = plane.row(y + r)[x + c];
  const auto bytes = [](std::ptrdiff_t floats) { return static_cast<int>(floats * 4); };
  const int positions = (rows_ + kTogether - 1) / kTogether * kTogether;
  prim::primCrossCorr_32f_C1R(region_.data(), bytes(regionPitch_), block_.data(), blockHeight_,
                              blockWidth_, sums_.data(), bytes(sumsPitch_), positions, columns_);
}

}  // namespace vx
