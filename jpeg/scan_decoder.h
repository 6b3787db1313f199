#pragma once

#include <cstdint>
#include <vector>

#include "jpeg/jpeg_work.h"

namespace vx {

/// The decoded samples of one component. Rows have one sample before the first and some behind the
/// last for the filters.
struct JpegPlane {
  int width, height;   ///< in samples, as the sampling factors give them
  int hRatio, vRatio;  ///< pixels of the image to a sample
  int columns, rows;   ///< blocks of whole MCUs
  int step;            ///< bytes from row to row
  std::vector<std::uint8_t> samples;
  bool decoded = false;

  std::uint8_t* row(int y) { return samples.data() + 1 + std::ptrdiff_t{step} * y; }
};

/// Sizes and allocates the planes of a frame.
std::vector<JpegPlane> jpegMakePlanes(const JpegFrame& frame);

/// Decodes the entropy-coded data of the scan whose header was read last.
///
/// @return 0 or a negative code
int jpegDecodeScan(JpegWork& work, std::vector<JpegPlane>& planes);

}  // namespace vx
