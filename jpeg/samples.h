#pragma once

#include <cstdint>

namespace vx {

// Rows on their way from pixels to blocks. Samples have the level shift of 128 taken away; Cb and
// Cr reach +128.

/// Converts `width` pixels of three bytes to three rows of samples, `left` samples from their
/// starts, and repeats the first and the last pixel over the rest of `length` samples. With
/// `useYcc` they are those of primJpegYcc_8u16s; without, each channel less 128.
void jpegSampleRow(const std::uint8_t* pixels, int width, bool useYcc, int left, int length,
                   std::int16_t* const rows[3]) noexcept;

/// dst(i) = (a(2i) + a(2i + 1) + bias) >> 1 over `length` samples of dst, or with a second row
/// (the sum of four + 1 + bias) >> 2. A bias of 0 and 1 in turn from row to row keeps the mean.
///
/// @param b   may be null
void jpegReduceRow(const std::int16_t* a, const std::int16_t* b, int bias, int length,
                   std::int16_t* dst) noexcept;

}  // namespace vx
