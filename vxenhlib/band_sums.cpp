#include "vxenhlib/band_sums.h"

#include <algorithm>

#include "vxenhlib/block_width.h"

namespace vx {

bool BandSums::reserve(int planes, int width, int top, int bottom) {
  width_ = width;
  top_ = top;
  bottom_ = bottom;
  const auto count = static_cast<std::size_t>(planes + 1) * static_cast<std::size_t>(width) *
                     static_cast<std::size_t>(bottom - top);
  if (!sums_.reserve(count)) return false;
  std::fill(sums_.data(), sums_.data() + count, 0.0f);
  return true;
}

void BandSums::release() {
  sums_.release();
  width_ = top_ = bottom_ = 0;
}

void BandSums::add(int p, const StackMatches& matches, int count, const float* blocks, int slice,
                   int pitch, int blockWidth, int blockHeight) {
  withBlockWidth(blockWidth, [&](const auto width) {
    for (int k = 0; k < count; ++k) {
      const float* from = blocks + std::ptrdiff_t{k} * slice;
      float* to = row(p, matches.y[k]) + matches.x[k];
      for (int y = 0; y < blockHeight; ++y) {
        for (int x = 0; x < width; ++x) to[x] += from[x];
        from += pitch;
        to += width_;
      }
    }
  });
}

}  // namespace vx
