#include "vxenhlib/nonlocal/stack_selection.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

namespace vx {
namespace {

constexpr float kBlanked = 1e20f;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

using Four [[gnu::vector_size(16)]] = float;

Four load(const float* from) {
  Four v;
  std::memcpy(&v, from, sizeof v);
  return v;
}

Four smaller(Four a, Four b) { return a < b ? a : b; }

// Infinity for a row without a number below it.
float leastOf(const float* row, int count) {
  float least = kInfinity;
  int u = 0;
  if (count >= 4) {
    Four best = {kInfinity, kInfinity, kInfinity, kInfinity};
    for (; u < count - 3; u += 4) best = smaller(load(row + u), best);
    best = smaller(load(row + count - 4), best);  // the rest, some elements twice
    best = smaller(__builtin_shufflevector(best, best, 2, 3, 0, 1), best);
    best = smaller(__builtin_shufflevector(best, best, 1, 0, 3, 2), best);
    return best[0];
  }
  for (; u < count; ++u) least = row[u] < least ? row[u] : least;
  return least;
}

// The first element that equals `value`; count when there is none. Where it stands is random, so
// that a loop that ended there would end in a branch that no processor foresees.
int firstOf(const float* row, int count, float value) {
  const __m128 wanted = _mm_set1_ps(value);
  const auto hits = [&](int u) {
    return static_cast<std::uint64_t>(_mm_movemask_ps(_mm_cmpeq_ps(_mm_loadu_ps(row + u), wanted)));
  };
  int u = 0;
  for (; count - u >= 4; u += std::min(count - u, 64)) {
    const int columns = std::min(count - u, 64);
    std::uint64_t found = hits(u + columns - 4) << (columns - 4);
    for (int i = 0; i < columns - 4; i += 4) found |= hits(u + i) << i;
    if (found != 0) return u + std::countr_zero(found);
  }
  while (u < count && !(row[u] == value)) ++u;
  return u;
}

}  // namespace

void StackSelection::blank(const PlaneView& costs, int u, int v, int exclusionX, int exclusionY) {
  const int left = std::max(u - exclusionX, 0);
  const int right = std::min(u + exclusionX, costs.width - 1);
  const int top = std::max(v - exclusionY, 0);
  const int bottom = std::min(v + exclusionY, costs.height - 1);
  for (int y = top; y <= bottom; ++y) {
    float* row = costs.row(y);
    for (int x = left; x <= right; ++x) row[x] = kBlanked;
    rowLeast_[static_cast<std::size_t>(y)] = leastOf(row, costs.width);
  }
}

// The rows' least values are infinite where a row holds nothing smaller, but perhaps no infinity
// either: the search goes on to the next row then.
float StackSelection::takeLeast(const PlaneView& costs, int& u, int& v) const {
  const float* rows = rowLeast_.data();
  const float least = leastOf(rows, costs.height);
  const int first = least < kInfinity ? firstOf(rows, costs.height, least) : 0;
  for (v = first; v < costs.height; ++v) {
    u = firstOf(costs.row(v), costs.width, least);
    if (u < costs.width) return least;
  }
  u = v = 0;
  return 0.0f;
}

int StackSelection::select(const PlaneView& costs, int ownU, int ownV, int tileX, int tileY,
                           int limit, int exclusionX, int exclusionY, float threshold,
                           StackMatches& matches) {
  for (int v = 0; v < costs.height; ++v)
    rowLeast_[static_cast<std::size_t>(v)] = leastOf(costs.row(v), costs.width);
  blank(costs, ownU, ownV, exclusionX, exclusionY);
  // A stack of one compares the block with entry 1, which is then the block itself.
  for (int i = 0; i < 2; ++i) {
    matches.x[i] = tileX + ownU;
    matches.y[i] = tileY + ownV;
    matches.cost[i] = 0.0f;
  }
  matches.leftmost = matches.x[0];
  matches.bound = 0.0f;
  int count = 1;
  while (count < limit) {
    int u = 0;
    int v = 0;
    const float cost = takeLeast(costs, u, v);
    blank(costs, u, v, exclusionX, exclusionY);
    matches.x[count] = tileX + u;
    matches.y[count] = tileY + v;
    matches.cost[count] = cost;
    const bool refused = cost > threshold;
    // Which block was refused matters only where it is entry 1.
    if (refused && count > 1) {
      matches.bound = threshold;
      break;
    }
    matches.leftmost = std::min(matches.leftmost, matches.x[count]);
    matches.bound = cost;
    if (refused) break;
    ++count;
  }
  return count;
}

}  // namespace vx
