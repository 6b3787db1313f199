#pragma once

#include <array>
#include <cstdint>

#include "jpeg/scan_encoder.h"
#include "lqlib/src/roughness_map.h"

namespace vx {

/// Upper bound of the length of a scan, stuffed bytes included, for a picture at any place of the
/// grid.
///
/// The bits of a quantised coefficient grow with the logarithm of its size, while the squares of a
/// block's coefficients, weighted by the eigenvalues of the differences, add up to its roughness.
/// So for any price p of a unit of roughness the blocks that begin in a cell, of roughness R with
/// what they reach of its neighbours, need no more bits than p * R + their number times the most
/// that "bits - p * roughness" of any block can be (Lagrange's method). Each cell has the best of a
/// handful of prices.
class JpegStreamBound {
 public:
  /// @param width,height   of the picture, which is coded with 8 more on both axes
  JpegStreamBound(const JpegCoding& coding, int width, int height);

  /// Whether every scan of a picture with this roughness is proven to fit into `room` bytes.
  bool fits(const RoughnessMap& map, std::int64_t room) const;
  /// Whether a scan is proven to fit whose levels but for the means, each by its size up to 8, sum
  /// up to `levels`: every place of a block pays a price, and every unit of a level pays what is
  /// missing to the dearest symbol. Some prices are tried.
  bool fits(double levels, std::int64_t room) const;

 private:
  static constexpr int kPrices = 11;
  static constexpr int kPlaces = 14;
  struct Component {
    int blockWidth, blockHeight;  // in samples of the picture
    double share;                 // of the roughness at full resolution that can reach the blocks
    double extra;                 // per block, from rounding in the reduction
    double meanBits, endBits;
    std::array<double, kPrices> bitsPerBlock;
  };
  int width_, height_, mcuWidth_, mcuHeight_;
  std::array<Component, 3> components_;
  std::array<double, kPlaces> units_{};
};

}  // namespace vx
