#include "vxenhlib/nonlocal/exact_search.h"

#include <algorithm>

#include "prim/match.h"

namespace vx {

bool ExactSearch::reserve(const SearchShape& shape) {
  shape_ = shape;
  const std::size_t size =
      static_cast<std::size_t>(shape.lanes()) * static_cast<std::size_t>(shape.positions());
  for (Column& c : columns_) {
    c.x = -1;
    if (!c.upper.reserve(size) || !c.lower.reserve(size)) return false;
  }
  return true;
}

// The one that is asked for, from the pair before or made in place of the one that is not `other`.
ExactSearch::Column& ExactSearch::column(const QuantisedGuides& guides, int x, int y, int targetX,
                                         int targetY, int rows, bool both, const Column* other) {
  for (Column& c : columns_)
    if (c.x == x && c.y == y && c.targetX == targetX && c.targetY == targetY && c.both == both)
      return c;
  Column& c = columns_[other == &columns_[0] ? 1 : 0];
  c.x = x;
  c.y = y;
  c.targetX = targetX;
  c.targetY = targetY;
  c.both = both;
  for (int g = 0; g < guides.count(); ++g)
    prim::primMatchColumn_32s(guides.pairs(g, x, y), guides.pairs(g, targetX, targetY),
                              guides.pitch(), shape_.blockSize / 2, rows, shape_.lanes(), g > 0,
                              c.upper.data(), both ? c.lower.data() : nullptr);
  return c;
}

void ExactSearch::search(const QuantisedGuides& guides, int planeWidth, const BlockPair& pair,
                         const SearchArea& area, std::array<CostMap, 2>& maps) {
  const int half = shape_.blockSize / 2;
  const int rows = area.height - shape_.blockSize + 1;
  const bool together = pair.y[1] == pair.y[0] + half;
  for (std::size_t j = 0; j < 2; ++j) {
    const int y = pair.y[j];
    const int top = together ? pair.y[0] : y;
    const Column& left = column(guides, pair.x, top, area.x, area.y, rows, together, nullptr);
    const Column& right =
        column(guides, pair.x + half, top, area.x + half, area.y, rows, together, &left);
    const bool lower = together && j == 1;
    CostMap& map = maps[j];
    map.rows = rows;
    map.columns =
        std::min(shape_.positions() + shape_.step, planeWidth - shape_.blockSize + 1 - area.x);
    map.x = area.x;
    map.y = area.y;
    prim::primMatchCosts_32s(*guides.energies(pair.x, y), guides.energies(area.x, area.y),
                             guides.pitch(), (lower ? left.lower : left.upper).data(),
                             (lower ? right.lower : right.upper).data(), rows, map.lanes,
                             map.costs.data());
  }
}

}  // namespace vx
