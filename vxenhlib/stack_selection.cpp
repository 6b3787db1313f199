#include "vxenhlib/stack_selection.h"

#include <algorithm>
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

// Infinity for a row without a number below it.
float leastOf(const float* row, int count) {
  float least = kInfinity;
  int u = 0;
  if (count >= 4) {
    Four best = {kInfinity, kInfinity, kInfinity, kInfinity};
    for (; u < count - 3; u += 4) {
      const Four v = load(row + u);
      best = v < best ? v : best;
    }
    const Four v = load(row + count - 4);  // the rest, some elements twice
    best = v < best ? v : best;
    for (int i = 0; i < 4; ++i) least = best[i] < least ? best[i] : least;
    return least;
  }
  for (; u < count; ++u) least = row[u] < least ? row[u] : least;
  return least;
}

}  // namespace

void StackSelection::blank(const PlaneView& costs, int u, int v, int exclusionX, int exclusionY) {
  const int left = std::max(u - exclusionX, 0);
  const int right = std::min(u + exclusionX, costs.width - 1);
  const int top = std::max(v - exclusionY, 0);
  const int bottom = std::min(v + exclusionY, costs.height - 1);
  for (int y = top; y <= bottom; ++y) {
    float* row = costs.row(y);
    float& least = rowLeast_[static_cast<std::size_t>(y)];
    bool lost = false;
    for (int x = left; x <= right; ++x) {
      lost |= row[x] <= least;
      row[x] = kBlanked;
    }
    if (lost) {
      least = leastOf(row, costs.width);
    } else if (least > kBlanked) {
      least = kBlanked;
    }
  }
}

// The rows' least values are infinite where a row holds nothing smaller, but perhaps no infinity
// either: the search goes on to the next row then.
float StackSelection::takeLeast(const PlaneView& costs, int& u, int& v) const {
  const float* rows = rowLeast_.data();
  float least = kInfinity;
  int first = 0;
  for (int y = 0; y < costs.height; ++y) {
    if (!(rows[y] < least)) continue;
    least = rows[y];
    first = y;
  }
  for (v = first; v < costs.height; ++v) {
    const float* row = costs.row(v);
    for (u = 0; u < costs.width; ++u)
      if (row[u] == least) return least;
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
