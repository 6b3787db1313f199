#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "frame/image_buffer.h"
#include "jpeg/scan_encoder.h"

namespace vx {

/// Energy (sum of squares) of each component of an image at full resolution without the means of
/// the regions that become blocks: an upper bound.
using ComponentEnergies = std::array<double, 3>;

/// Upper bound of the length of a scan.
///
/// The bits of a quantised coefficient grow with the logarithm of its size, while squares of the
/// coefficients add up to the energy of the samples (Parseval). So for any price p per unit of
/// energy no picture of energy E needs more than E * p + the sum over all coefficients of the
/// largest "bits - p * least square that needs so many bits" (Lagrange). A handful of prices is
/// tried. Zeros are counted as a bit each, which covers runs and blocks' ends; every byte may need
/// a stuffed one.
class JpegStreamBound {
 public:
  JpegStreamBound(const JpegCoding& coding, int width, int height);

  /// Whether every scan of an image with these energies is proven to fit into `room` bytes.
  bool fits(const ComponentEnergies& energies, std::int64_t room) const;

 private:
  static constexpr int kPrices = 16;  // 2^0 to 2^-15 bits
  struct Component {
    double blocks;
    double energyShare;  // of the energy at full resolution that can reach the blocks
    double energyExtra;  // per block, from rounding in the reduction
    std::array<double, kPrices> bitsPerBlock;
  };
  std::array<Component, 3> components_;
};

/// Energies about the mean of the whole picture, edges repeated: a bound for every shift, at the
/// cost of one pass.
ComponentEnergies roughEnergies(const JpegCoding& coding,
                                const ImageBuffer<std::uint8_t, 3>& source);

/// Energies for each top and left about the means of the regions that become blocks.
using ShiftEnergies = std::array<std::array<ComponentEnergies, 8>, 8>;
ShiftEnergies shiftEnergies(const JpegCoding& coding, const ImageBuffer<std::uint8_t, 3>& source);

}  // namespace vx
