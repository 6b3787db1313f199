#pragma once

#include <array>
#include <cstdint>

#include "frame/image_buffer.h"
#include "jpeg/scan_encoder.h"

namespace vx {

/// Per component the sum of squared differences of all neighbours in rows and columns.
using ComponentRoughness = std::array<double, 3>;

/// Roughness of the picture's components at full resolution, its edges repeated as far as any shift
/// and whole MCUs want them.
ComponentRoughness measureRoughness(const JpegCoding& coding,
                                    const ImageBuffer<std::uint8_t, 3>& source);

/// Upper bound of the length of a scan, stuffed bytes included, for a picture at any place of the
/// grid.
///
/// The bits of a quantised coefficient grow with the logarithm of its size, while the squares of a
/// block's coefficients, weighted by the eigenvalues of the differences, add up to its roughness.
/// So for any price p of a unit of roughness no picture of roughness R needs more bits than p * R +
/// the sum over its blocks of the most that "bits - p * roughness" of any block can be (Lagrange's
/// method). A handful of prices is tried.
class JpegStreamBound {
 public:
  JpegStreamBound(const JpegCoding& coding, int width, int height);

  /// Whether every scan of a picture with this roughness is proven to fit into `room` bytes.
  bool fits(const ComponentRoughness& roughness, std::int64_t room) const;
  /// Whether a scan is proven to fit whose levels but for the means, each by its size up to 8, sum
  /// up to `levels`: for any u a level of size n needs at most u * min(n, 8) bits when each zero
  /// pays a price in advance. Some u are tried.
  bool fits(double levels, std::int64_t room) const;

 private:
  static constexpr int kPrices = 10;
  static constexpr int kUnits = 8;
  struct Component {
    double blocks;
    double share;  // of the roughness at full resolution that can reach the blocks
    double extra;  // per block, from rounding in the reduction
    std::array<double, kUnits> zeros;  // bits of a block beyond those of its levels
    std::array<double, kPrices> bitsPerBlock;
  };
  std::array<Component, 3> components_;
};

}  // namespace vx
