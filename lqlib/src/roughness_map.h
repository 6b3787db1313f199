#pragma once

#include <cstdint>

#include "frame/image_buffer.h"
#include "jpeg/scan_encoder.h"

namespace vx {

/// The picture's components at full resolution, cut into squares, its edges repeated as far as any
/// shift and whole MCUs want them: in each square the sum of squared differences of every sample
/// and its neighbours to the right and below.
struct RoughnessMap {
  static constexpr int kPart = 8;     ///< size of a square
  static constexpr int kCell = 32;    ///< squares that are bounded as one
  static constexpr int kBefore = 16;  ///< samples before the picture at which the first one begins

  RoughnessMap(const JpegCoding& coding, const ImageBuffer<std::uint8_t, 3>& source);

  int columns, rows;
  ImageBuffer<int> squares[3];  ///< one for each component
};

}  // namespace vx
