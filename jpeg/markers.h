#pragma once

#include "jpeg/jpeg_work.h"

namespace vx {

/// Reads the start of image and everything up to the first scan header.
///
/// @return 0 or a negative code
int jpegReadHeaders(JpegWork& work, const std::uint8_t* data, int size) noexcept;

/// Reads on to the next scan header, wherever the entropy-coded bytes before it ended.
///
/// @param found   whether there is one; the end of the image counts as none
/// @return 0 or a negative code
int jpegNextScan(JpegWork& work, bool& found) noexcept;

}  // namespace vx
