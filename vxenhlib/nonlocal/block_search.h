#pragma once

#include <array>

#include "frame/aligned_array.h"
#include "vxenhlib/nonlocal/quantised_guides.h"

namespace vx {

/// Blocks and the areas in which they are searched, in pixels.
struct SearchShape {
  int blockSize = 0;
  int searchSize = 0;
  int step = 0;  ///< from one area to the next

  /// Positions of a block in an area, one way.
  int positions() const { return searchSize - blockSize + 1; }
  /// Lanes of the maps: the positions of two areas side by side.
  int lanes() const {
    const int columns = positions() + step;
    return columns <= 32 ? 32 : columns <= 48 && positions() <= 42 ? 48 : 64;
  }
};

/// The part of a plane in which a block is searched. A block has (width - blockSize + 1) by
/// (height - blockSize + 1) positions in it.
struct SearchArea {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// Two blocks of one column, which are looked for in the same areas.
struct BlockPair {
  int x = -1;
  int y[2] = {-1, -1};

  bool operator==(const BlockPair&) const = default;
};

/// The costs of a block: element (u, v) is that of the position (x + u, y + v), rows `lanes` apart.
struct CostMap {
  AlignedArray<std::int32_t> costs;
  int lanes = 0;
  int rows = 0;
  int columns = 0;  ///< of the lanes that are positions
  int x = 0;
  int y = 0;

  bool reserve(const SearchShape& shape) {
    lanes = shape.lanes();
    return costs.reserve(static_cast<std::size_t>(lanes) *
                         static_cast<std::size_t>(shape.positions()));
  }
};

/// Finds the costs of blocks: sums of squared differences to all positions of an area, over all
/// quantised guides. One object serves one thread.
class BlockSearch {
 public:
  virtual ~BlockSearch() = default;

  /// False when memory is short.
  virtual bool reserve(const SearchShape& shape) = 0;

  /// Fills both maps, with the positions of the area at least; the guides cover its rows. The maps
  /// may reach further to the right, up to the plane's edge, so that the next area finds its
  /// positions too.
  virtual void search(const QuantisedGuides& guides, int planeWidth, const BlockPair& pair,
                      const SearchArea& area, std::array<CostMap, 2>& maps) = 0;
};

}  // namespace vx
