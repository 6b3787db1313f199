#pragma once

#include "vxenhlib/nonlocal/block_search.h"

namespace vx {

/// The search by exact sums of integers. A cost is |block|^2 + |position|^2 - 2 * their product,
/// and the products are summed up in columns of cells half a block wide (prim/match.h):
///
///     columns         blocks of a pair, half a block apart
///     a   b   c
///     +---+---+---+   upper block: cells 0 and 1 of columns a and b
///     | 0 | 0 | 0 |   lower block: cells 1 and 2 of the same
///     +---+---+---+   next pair to the right: columns b and c
///     | 1 | 1 | 1 |
///     +---+---+---+
///     | 2 | 2 | 2 |
///     +---+---+---+
///
/// Where pairs lie half a block apart, a pair asks for one new column only. Anything else, as at
/// the lower edge of a plane, is put together from columns of its own.
class ExactSearch final : public BlockSearch {
 public:
  bool reserve(const SearchShape& shape) override;
  void search(const QuantisedGuides& guides, int planeWidth, const BlockPair& pair,
              const SearchArea& area, std::array<CostMap, 2>& maps) override;

 private:
  /// The products of the column of cells at (x, y) with the positions from (targetX, targetY) on.
  struct Column {
    int x = -1, y = -1, targetX = -1, targetY = -1;
    bool both = false;  ///< the lower block's too
    AlignedArray<std::int32_t> upper, lower;
  };

  Column& column(const QuantisedGuides& guides, int x, int y, int targetX, int targetY, int rows,
                 bool both, const Column* other);

  SearchShape shape_;
  Column columns_[2];
};

}  // namespace vx
