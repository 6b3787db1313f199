#include "vxenhlib/nonlocal/band_sums.h"

#include <algorithm>
#include <cstring>

#include "vxenhlib/nonlocal/block_width.h"

namespace vx {

namespace {

// Vectors by hand: the compiler would ask for each row whether the two overlap.
using Four [[gnu::vector_size(16)]] = float;

template <int kWidth>
void addRow(std::integral_constant<int, kWidth>, const float* from, float* to) {
  static_assert(kWidth % 4 == 0);
  for (int x = 0; x < kWidth; x += 4) {
    Four sum, more;
    std::memcpy(&sum, to + x, sizeof sum);
    std::memcpy(&more, from + x, sizeof more);
    sum += more;
    std::memcpy(to + x, &sum, sizeof sum);
  }
}

void addRow(int width, const float* from, float* to) {
  for (int x = 0; x < width; ++x) to[x] += from[x];
}

}  // namespace

bool BandSums::reserve(int planes, int width, int top, int bottom) {
  planes_ = planes;
  width_ = width;
  top_ = reached_ = top;
  bottom_ = bottom;
  return sums_.reserve(static_cast<std::size_t>(planes + 1) * static_cast<std::size_t>(width) *
                       static_cast<std::size_t>(bottom - top));
}

void BandSums::release() {
  sums_.release();
  planes_ = width_ = top_ = bottom_ = reached_ = 0;
}

// Rows are set to 0 when they are reached, which is on the thread that adds to them: what the
// machine does for fresh memory is then done by all threads.
void BandSums::reach(int bottom) {
  if (bottom <= reached_) return;
  for (int p = 0; p <= planes_; ++p)
    std::fill(row(p, reached_), row(p, reached_) + std::ptrdiff_t{width_} * (bottom - reached_),
              0.0f);
  reached_ = bottom;
}

void BandSums::add(const StackShape& shape, const FilteredStacks::Stack& stack) {
  const StackMatches& matches = stack.matches;
  reach(*std::max_element(matches.y, matches.y + stack.depth) + shape.blockHeight);
  const auto addBlock = [&](const auto width, const float* from, std::ptrdiff_t pitch, float* to) {
    for (int y = 0; y < shape.blockHeight; ++y, from += pitch, to += width_)
      addRow(width, from, to);
  };
  withBlockWidth(shape.blockWidth, [&](const auto width) {
    for (int k = 0; k < stack.depth; ++k) {
      const int x = matches.x[k];
      const int y = matches.y[k];
      addBlock(width, stack.blockWeight, width, row(planes_, y) + x);
      const float* block = stack.blocks + std::ptrdiff_t{k} * shape.sliceFloats;
      for (int p = 0; p < planes_; ++p, block += shape.stackFloats)
        addBlock(width, block, shape.blockRowFloats, row(p, y) + x);
    }
  });
}

}  // namespace vx
