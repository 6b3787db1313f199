#pragma once

#include "vxenhlib/nonlocal/block_search.h"

namespace vx {

/// The blocks of one stack, by the image positions of their first pixels. Entry 0 is the block that
/// was asked for. Entry 1 tells the local noise and is there in any case: where the block is alone,
/// it is the best one of those refused, or with a limit of 1 the block itself.
struct StackMatches {
  static constexpr int kMost = 16;

  int x[kMost];
  int y[kMost];

  /// Another choice without the positions left of this one, and with more positions whose costs are
  /// all above `bound`, is the same.
  int leftmost;
  std::int32_t bound;
};

/// What is taken for alike.
struct MatchRule {
  int limit;                   ///< most blocks, 1 to 16
  int exclusionX, exclusionY;  ///< half-widths of the square that a block keeps free of others
  std::int32_t most;           ///< largest cost, up to prim::matchMostCost()
};

/// The largest cost that MatchRule::most may be for blocks searched so.
std::int32_t mostMatchCost(const SearchShape& shape);

/// Chooses the blocks of a stack from the costs of block (x, y) in an area: the cheapest position,
/// first in row order, again and again, until one costs too much. Around each one taken, the
/// block's own position first of all, a square is excluded: blocks that overlap almost fully would
/// all say the same. Returns the number of blocks.
int selectStack(const CostMap& map, const SearchArea& area, int x, int y, int blockSize,
                const MatchRule& rule, StackMatches& matches);

/// The smallest cost in the last `columns` columns of positions of an area.
std::int32_t leastCost(const CostMap& map, const SearchArea& area, int blockSize, int columns);

}  // namespace vx
