#pragma once

#include <array>
#include <cstdint>

#include "jpeg/scan_encoder.h"

namespace vx {

/// The round trips of one call: the picture lies `top` rows and `left` columns inside an image that
/// is 8 larger on both axes, its edges repeated, for every top and left of the plan.
struct UnblockPlan {
  UnblockPlan(int w, int h, int quality, int jpegMode, int shiftStep) noexcept;

  int width, height;  ///< of the picture
  JpegCoding coding;
  std::array<bool, 8> taken{};  ///< tops, and lefts, that the step of the shifts takes
  int trips;                    ///< number of pairs

  /// Trips whose stream would not fit into its block: they give the picture back unchanged.
  std::array<std::array<bool, 8>, 8> fails{};  // [top][left]
  int failures = 0;

  /// Bytes of the block that a trip is given.
  std::int64_t blockBytes() const;
};

}  // namespace vx
