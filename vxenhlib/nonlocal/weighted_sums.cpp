#include "vxenhlib/nonlocal/weighted_sums.h"

#include <algorithm>

#include "prim/stack.h"

namespace vx {

bool WeightedSums::reserve(int planes, int width, int top, int bottom) {
  planes_ = planes;
  width_ = width;
  top_ = reached_ = top;
  bottom_ = bottom;
  return sums_.reserve(static_cast<std::size_t>(planes + 1) * static_cast<std::size_t>(width) *
                       static_cast<std::size_t>(bottom - top));
}

void WeightedSums::release() {
  sums_.release();
  planes_ = width_ = top_ = bottom_ = reached_ = 0;
}

// Rows are set to 0 when they are reached, which is on the thread that adds to them: what the
// machine does for fresh memory is then done by all threads.
void WeightedSums::reach(int bottom) {
  if (bottom <= reached_) return;
  for (int p = 0; p <= planes_; ++p)
    std::fill(row(p, reached_), row(p, reached_) + std::ptrdiff_t{width_} * (bottom - reached_),
              0.0f);
  reached_ = bottom;
}

void WeightedSums::add(int blockSize, const FilteredStacks::Stack& stack,
                       std::ptrdiff_t planeFloats) {
  const StackMatches& m = stack.matches;
  std::ptrdiff_t places[prim::kStackMostDepth];
  int lowest = top_;
  for (int k = 0; k < stack.depth; ++k) {
    places[k] = std::ptrdiff_t{m.y[k] - top_} * width_ + m.x[k];
    lowest = std::max(lowest, m.y[k]);
  }
  reach(lowest + blockSize);
  const auto placesIn = [&](int p, float** to) {
    float* plane = row(p, top_);
    for (int k = 0; k < stack.depth; ++k) to[k] = plane + places[k];
  };
  float* totals[prim::kStackMostDepth];
  float* weights[prim::kStackMostDepth];
  placesIn(planes_, weights);
  for (int p = 0; p < planes_; ++p) {
    placesIn(p, totals);
    prim::primStackAdd_32f(stack.blocks + p * planeFloats, stack.blockWeight, blockSize,
                           stack.depth, totals, p == 0 ? weights : nullptr,
                           width_ * static_cast<int>(sizeof(float)));
  }
}

}  // namespace vx
