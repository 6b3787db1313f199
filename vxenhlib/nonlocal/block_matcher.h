#pragma once

#include <array>

#include "frame/aligned_array.h"
#include "frame/plane_view.h"
#include "vxenhlib/nonlocal/column_correlation.h"
#include "vxenhlib/nonlocal/search_transform.h"

namespace vx {

/// A tile as far as it lies in the plane. A block has (width - blockWidth + 1) by
/// (height - blockHeight + 1) positions in it.
struct Tile {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// Two blocks of one column, which are looked for in the same tiles.
struct BlockPair {
  int x = -1;
  int y[2] = {-1, -1};

  bool operator==(const BlockPair&) const = default;
};

/// Turns a plane of squares into its integral image, in place, in single precision: the element
/// itself plus ((left + above) - above left), row by row. On large planes the rounding of the sums
/// decides which blocks are taken for alike, so the order is part of the result.
void integrate(const PlaneView& squares);

/// The sum over the `width` by `height` samples at (x, y), from the four corners of an integral
/// image.
float boxSum(const PlaneView& integral, int x, int y, int width, int height);

/// The costs of pairs of blocks in a tile: sums of squared differences, over up to three guide
/// planes, between a block and all positions of the tile at once. The squares come from an integral
/// image, the products from a correlation in the frequency domain, whose price does not depend on
/// the number of positions; the guides' products are added before they are transformed back. One
/// object serves one thread.
class BlockMatcher {
 public:
  static constexpr int kMostGuides = 3;

  /// False when memory is short. The guides are looked at until the next reserve().
  ///
  /// @param integrals  of the squares of the guides, see integrate()
  bool reserve(const SearchShape& shape, int guides, const PlaneView* planes,
               const PlaneView* integrals);

  void setTile(const SearchTransform& transform, const Tile& tile);

  /// The sum of squares of a block, over all guides.
  float energy(int x, int y) const;

  /// maps[j](u, v) = the cost of block j of the pair at position (u, v) of the tile. The rest of
  /// the maps stays.
  void search(const SearchTransform& transform, const BlockPair& pair, const PlaneView maps[2]);

  /// Sums up the costs of the pair in the last `shift` columns of positions directly.
  ///
  /// @return the least one of each block, infinite when there is none
  std::array<float, 2> extend(int shift, const BlockPair& pair);

  /// Turns the map of the costs of block j in the tile `shift` columns to the left, of the same
  /// rows and size, into that of this tile. After extend().
  void slide(int shift, int j, const PlaneView& map) const;

 private:
  void setEnergies();

  SearchShape shape_;
  Tile tile_;
  int guides_ = 0;
  PlaneView planes_[kMostGuides];
  PlaneView integrals_[kMostGuides];
  FftBuffer tileSpectrum_[kMostGuides];
  FftBuffer pairSpectrum_;
  FftBuffer product_;
  AlignedArray<float> energy_;   // of each position, rows searchWidth apart
  AlignedArray<float> zeroRow_;  // above the integral image
  ColumnCorrelation columns_;
  AlignedArray<float> extension_[2];  // the costs of extend(), column by column, searchHeight apart
};

}  // namespace vx
