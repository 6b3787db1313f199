#pragma once

#include <cstddef>

#include "vxenhlib/aligned_array.h"
#include "vxenhlib/fft_plan.h"
#include "vxenhlib/plane_view.h"

namespace vx {

/// Blocks and the tiles in which they are searched, in pixels.
struct SearchShape {
  int blockWidth = 0;
  int blockHeight = 0;
  int searchWidth = 0;
  int searchHeight = 0;
};

/// A tile as far as it lies in the plane. A block has (width - blockWidth + 1) by
/// (height - blockHeight + 1) positions in it.
struct Tile {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

/// Turns a plane of squares into its integral image, in place, in single precision: the element
/// itself plus ((left + above) - above left), row by row. On large planes the rounding of the sums
/// decides which blocks are taken for alike, so the order is part of the result.
void integrate(const PlaneView& squares);

/// The sum over the `width` by `height` samples at (x, y), from the four corners of an integral
/// image.
float boxSum(const PlaneView& integral, int x, int y, int width, int height);

/// The costs of one guide plane: sums of squared differences between a block and all positions of a
/// tile at once. The squares come from an integral image, the products from a correlation in the
/// frequency domain, whose price does not depend on the number of positions. One object serves one
/// thread; the tile's transform is shared by the blocks that are asked for after it, and the walk
/// asks for a block in two tiles, for which it is transformed once.
class BlockMatcher {
 public:
  /// False when memory is short. The guide plane is one and the same until the next reserve().
  bool reserve(const SearchShape& shape);

  void setTile(const FftPlan& plan, const PlaneView& guide, const PlaneView& integral,
               const Tile& tile);

  /// costs(u, v) = (first ? 0 : costs(u, v)) + difference between the block at (x, y) and the
  /// position (u, v) of the tile. The rest of `costs` stays.
  ///
  /// @return the energy of the block
  float addCosts(const FftPlan& plan, const PlaneView& guide, const PlaneView& integral, int x,
                 int y, bool first, const PlaneView& costs);

 private:
  // A block turned by half a turn, transformed.
  struct Turned {
    int x = -1;
    int y = -1;
    FftBuffer spectrum;
  };
  const float* turnedSpectrum(const FftPlan& plan, const PlaneView& guide, int x, int y);

  // Those of two steps of the walk, the oldest replaced first.
  static constexpr int kTurned = 4;

  SearchShape shape_;
  Tile tile_;
  int rowFloats_ = 0;
  std::size_t floats_ = 0;
  FftBuffer tileSpectrum_;
  FftBuffer product_;
  Turned turned_[kTurned];
  int oldest_ = 0;
  AlignedArray<float> energy_;   // of each position, rows searchWidth apart
  AlignedArray<float> zeroRow_;  // above the integral image
};

}  // namespace vx
