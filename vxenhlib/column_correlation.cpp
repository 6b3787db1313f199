#include "vxenhlib/column_correlation.h"

#include <algorithm>
#include <cstring>

namespace vx {
namespace {

using Four [[gnu::vector_size(16)]] = float;
constexpr int kLanes = 4;
constexpr int kMostVectors = 7;  // sums that stay in registers

// kVectors vectors of positions of one column.
template <int kVectors>
void correlateRows(const float* region, std::ptrdiff_t pitch, const float* block, int width,
                   int height, float* sums) {
  Four sum[kVectors] = {};
  for (int c = 0; c < width; ++c, region += pitch)
    for (int r = 0; r < height; ++r) {
      const float b = *block++;
      const Four factor = {b, b, b, b};
      for (int i = 0; i < kVectors; ++i) {
        Four v;
        std::memcpy(&v, region + r + kLanes * i, sizeof v);
        sum[i] += factor * v;
      }
    }
  std::memcpy(sums, sum, sizeof sum);
}

using CorrelateRows = void (*)(const float*, std::ptrdiff_t, const float*, int, int, float*);
constexpr CorrelateRows kCorrelateRows[kMostVectors] = {
    correlateRows<1>, correlateRows<2>, correlateRows<3>, correlateRows<4>,
    correlateRows<5>, correlateRows<6>, correlateRows<7>};

}  // namespace

bool ColumnCorrelation::reserve(int blockWidth, int blockHeight, int columns, int rows) {
  blockWidth_ = blockWidth;
  blockHeight_ = blockHeight;
  pitch_ = (rows + 2 * kLanes - 1) / kLanes * kLanes;
  const auto pitch = static_cast<std::size_t>(pitch_);
  const auto width = static_cast<std::size_t>(blockWidth);
  const auto positions = static_cast<std::size_t>(columns);
  if (!region_.reserve((positions + width) * pitch) || !sums_.reserve(positions * pitch) ||
      !block_.reserve(width * static_cast<std::size_t>(blockHeight)))
    return false;
  return true;
}

// Behind the last row stand zeros, for positions that fill up the last vector.
void ColumnCorrelation::setRegion(const PlaneView& plane, int x, int y, int columns, int rows) {
  columns_ = columns;
  rows_ = rows - blockHeight_ + 1;
  const int across = columns + blockWidth_ - 1;
  for (int v = 0; v < rows; ++v) {
    const float* from = plane.row(y + v) + x;
    float* to = region_.data() + v;
    for (int u = 0; u < across; ++u) to[u * pitch_] = from[u];
  }
  for (int u = 0; u < across; ++u)
    std::fill(region_.data() + u * pitch_ + rows, region_.data() + (u + 1) * pitch_, 0.0f);
}

void ColumnCorrelation::correlate(const PlaneView& plane, int x, int y) {
  float* block = block_.data();
  for (int c = 0; c < blockWidth_; ++c)
    for (int r = 0; r < blockHeight_; ++r) *block++ = plane.row(y + r)[x + c];
  constexpr int kMostRows = kMostVectors * kLanes;
  for (int u = 0; u < columns_; ++u)
    for (int v = 0; v < rows_; v += kMostRows) {
      const int vectors = (std::min(rows_ - v, kMostRows) + kLanes - 1) / kLanes;
      kCorrelateRows[vectors - 1](region_.data() + u * pitch_ + v, pitch_, block_.data(),
                                  blockWidth_, blockHeight_, sums_.data() + u * pitch_ + v);
    }
}

}  // namespace vx
