#include "vxenhlib/nonlocal/stack_selection.h"

#include <algorithm>
#include <limits>

#include "prim/match.h"

namespace vx {

std::int32_t mostMatchCost(const SearchShape& shape) { return prim::matchMostCost(shape.lanes()); }

int selectStack(const CostMap& map, const SearchArea& area, int x, int y, int blockSize,
                const MatchRule& rule, StackMatches& matches) {
  const prim::MatchWindow window = {
      .rows = map.rows,
      .lanes = map.lanes,
      .first = area.x - map.x,
      .across = area.width - blockSize + 1,
      .ownLane = x - map.x,
      .ownRow = y - map.y,
      .exclusionX = rule.exclusionX,
      .exclusionY = rule.exclusionY,
      .limit = rule.limit,
      .most = rule.most,
  };
  int picks[StackMatches::kMost] = {};
  int count = 1;
  std::int32_t last = 0;
  prim::primMatchSelect_32s(map.costs.data(), &window, picks, &count, &last);
  const bool alone = count == 1 && rule.limit > 1;
  const int filled = alone ? 2 : count;
  matches.leftmost = x;
  for (int i = 0; i < filled; ++i) {
    const int row = prim::matchRow(picks[i], map.lanes);
    matches.x[i] = map.x + picks[i] - row * map.lanes;
    matches.y[i] = map.y + row;
    matches.leftmost = std::min(matches.leftmost, matches.x[i]);
  }
  if (filled == 1) {
    matches.x[1] = x;
    matches.y[1] = y;
  }
  // A choice that ended with a refusal goes on with what is not refused.
  matches.bound = alone || count == rule.limit ? last : rule.most;
  return count;
}

std::int32_t leastCost(const CostMap& map, const SearchArea& area, int blockSize, int columns) {
  std::int32_t least = std::numeric_limits<std::int32_t>::max();
  if (columns > 0)
    prim::primMatchLeast_32s(map.costs.data(), map.rows, map.lanes,
                             area.x - map.x + area.width - blockSize + 1 - columns, columns,
                             &least);
  return least;
}

}  // namespace vx
