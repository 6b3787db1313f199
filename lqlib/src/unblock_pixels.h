#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/image_buffer.h"

namespace vx {

/// The host's picture as vxUnblock is told of it.
struct UnblockPixels {
  bool deep;      ///< 16-bit samples of 0..32767 instead of bytes
  void* first;    ///< first sample
  int pixelStep;  ///< samples from pixel to pixel
  int rowStep;    ///< bytes from row to row, or samples when deep
  int width, height;

  /// Whether two rows share memory, so that they must be written in their order.
  bool rowsOverlap() const noexcept;
};

/// Takes three samples from every pixel, as bytes: 16-bit samples v become min(255, v >> 7).
void readUnblockSource(const UnblockPixels& pixels, ImageBuffer<std::uint8_t, 3>& source) noexcept;

/// Writes row y from three planes of sums of `trips` results: sum * (1 / trips), or times 128 /
/// trips when deep, in single precision, limited to 0..255 (32767) and truncated.
void writeUnblockRow(const UnblockPixels& pixels, int y, const std::uint16_t* const sums[3],
                     int trips) noexcept;

}  // namespace vx
