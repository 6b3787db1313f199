#pragma once

// The arithmetic of baseline JPEG (ITU-T T.81) on 8x8 blocks and rows of samples: encoder, decoder
// and the round trip without a stream call the same functions, and so agree bit for bit.
//
// Transforms. Both directions are the separable DCT of T.81, A.3.3, as exact integer matrix
// products: each one-dimensional sum is formed in 32 bits from 16-bit factors and rounded once,
// half up. With K(s, j) = round(s * cos(j * pi / 16)) the passes are
//
//   | pass                | gives                                       | s       | shift |
//   |---------------------|---------------------------------------------|---------|-------|
//   | vertical, forward   | 44 * the 1-D coefficients of samples        | 22528   | 10    |
//   | horizontal, forward | 30 * the 2-D coefficients                   | 22341.8 | 16    |
//   | horizontal, inverse | 44 * the half-way values of dequantised     | 22528   | 10    |
//   |                     | coefficients                                |         |       |
//   | vertical, inverse   | samples                                     | 11915.6 | 20    |
//
// each saturated to 16 bits. 44 and 30 are the largest even scales at which no sum of samples
// within -128..128 leaves its 16 bits (first pass doubled in the butterfly of the second) or 32
// bits. The order of terms does not matter: any factorisation gives the same numbers. The bodies
// take sums and differences of mirrored samples first, then the 4x4 halves of the matrix by
// multiply-add of pairs. Coefficients and samples before rounding are within 1/16 of the
// real-valued transform.
//
// Layout. A column is 8 values, one per vertical frequency. A block is 64 values, that of
// horizontal frequency u and vertical frequency v at 8 * u + v: eight columns.
//
// Errors: kStatusNullPtr for any null pointer, kStatusBadSize for a length or count below 1.
// Nothing else is checked; steps are in bytes and signed; pointers suit their elements.

#include "prim/types.h"

namespace vx::prim {

/// Scale of unquantised coefficients.
inline constexpr int kJpegCoefficientScale = 30;

/// A quantisation table made ready for one multiplication each way, in the layout of a block.
struct JpegQuantiser {
  std::int16_t step[64];         ///< the table's entries, 1 to 255
  std::uint16_t half[64];        ///< 15 * step: half a step in the scale of coefficients
  std::uint16_t reciprocal[64];  ///< ceil(2^(16 + s) / (30 * step)), 2^s <= 30 * step < 2^(s + 1)
  std::uint16_t scale[64];       ///< 2^(16 - s)
};

/// Converts pixels of three bytes to samples with the level shift taken away:
/// y = (77 R + 150 G + 29 B - 32640) >> 8, cb = (-43 R - 85 G + 128 B + 128) >> 8,
/// cr = (128 R - 107 G - 21 B + 128) >> 8; cb and cr reach +128.
int primJpegYcc_8u16s(const std::uint8_t* rgb, std::int16_t* y, std::int16_t* cb, std::int16_t* cr,
                      int length);

/// Vertical transform of eight rows of samples within -128..128: column x of dst is that of the
/// samples at x.
///
/// @param rows     eight of them
/// @param length   samples in a row; 8 * length values are written
int primJpegForward_16s(const std::int16_t* const* rows, std::int16_t* dst, int length);

/// Horizontal transform of the blocks that begin at columns 0, 8, 16, ..., and quantisation:
/// dst = sign(F) * floor((|F| + half) / (30 * step)), a division rounded half away from zero.
int primJpegQuantise_16s(const std::int16_t* columns, std::int16_t* dst, int blocks,
                         const JpegQuantiser* quantiser);

/// The same, dequantised and transformed back: eight rows of 8 * blocks samples, 128 added, limited
/// to 0..255.
int primJpegRequantise_16s8u(const std::int16_t* columns, std::uint8_t* dst, int dstStep,
                             int blocks, const JpegQuantiser* quantiser);

/// Adds to *sum what primJpegQuantise_16s would give for all but the mean of each block, each value
/// by its size up to 8: sum of min(|level|, 8).
int primJpegLevels_16s(const std::int16_t* columns, int blocks, const JpegQuantiser* quantiser,
                       double* sum);

/// Inverse transform of dequantised blocks within -2048..2047: eight rows of 8 * blocks samples,
/// 128 added, limited to 0..255.
int primJpegInverse_16s8u(const std::int16_t* coefficients, std::uint8_t* dst, int dstStep,
                          int blocks);

/// Doubles a row by the triangle filter, with rounding that alternates:
/// dst(2i) = (3 src(i) + src(i - 1) + 1) >> 2, dst(2i + 1) = (3 src(i) + src(i + 1) + 2) >> 2.
///
/// @param src   readable from -1 to length
int primJpegUpsample_8u(const std::uint8_t* src, std::uint8_t* dst, int length);

/// The same in both directions, with v(i) = 3 near(i) + far(i):
/// dst(2i) = (3 v(i) + v(i - 1) + 8) >> 4, dst(2i + 1) = (3 v(i) + v(i + 1) + 7) >> 4.
///
/// @param near,far   the row nearer to the one wanted and the one beyond, readable from -1 to
/// length
int primJpegUpsampleRows_8u(const std::uint8_t* near, const std::uint8_t* far, std::uint8_t* dst,
                            int length);

/// Converts Y, Cb and Cr of 0..255 to RGB and adds that to three rows of sums:
/// R = Y + ((91881 Cr - 11760828) >> 16), G = Y + ((-22554 Cb - 46802 Cr + 8877496) >> 16),
/// B = Y + ((116130 Cb - 14864613) >> 16), each limited to 0..255. Sums wrap at 65536.
int primJpegAddYcc_8u16u(const std::uint8_t* y, const std::uint8_t* cb, const std::uint8_t* cr,
                         std::uint16_t* sumR, std::uint16_t* sumG, std::uint16_t* sumB, int length);

/// srcDst += src. Sums wrap at 65536.
int primJpegAdd_8u16u(const std::uint8_t* src, std::uint16_t* srcDst, int length);

}  // namespace vx::prim
