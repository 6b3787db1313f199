#pragma once

#include "prim/types.h"

namespace vx::prim {

// Convolutions with a caller's kernel, and the fixed Gaussians.
//
// Neighbourhood: width and height name the region that is written. The filters invent no border:
// every source pixel that a tap meets must exist, and no other one is read. Source and destination
// must not overlap.
//
// Convolution: dst(x) is the sum over j of kernel[j] * src(x + anchor - j), the kernel reversed
// against the pixels. An anchor outside 0..kernelLen - 1 only moves the neighbourhood.
//
// Single precision: every product and every sum is rounded to float, from j = kernelLen - 1 down
// to 0, which takes the pixels from left to right or top to bottom. The first product starts the
// sum (a lone tap of 1 copies bits), the others are added in turn.
//
// Integers: the sum s is formed in 32 bits, modulo 2^32, and the result is s / divisor rounded to
// nearest, ties to even, and saturated to 0..255. A divisor that is neither 1 nor another power of
// two multiplies s by the float nearest to 1 / divisor; the product is formed in double, which is
// exact while |s| < 2^29.

/// Codes of the fixed masks: columns, rows.
enum Mask : int {
  kMask13 = 13,
  kMask15 = 15,
  kMask31 = 31,
  kMask33 = 33,
  kMask51 = 51,
  kMask55 = 55
};

/// Convolves each row: dst(x, y) = sum of kernel[j] * src(x + anchor - j, y).
///
/// @param srcStep  at least 4 * (width - 1 + kernelLen)
/// @return -8; -6 also for kernelLen below 1; -14
int primFilterRow_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                          int height, const float* kernel, int kernelLen, int anchor);

/// Convolves each column: dst(x, y) = sum of kernel[j] * src(x, y + anchor - j).
///
/// @param srcStep  at least 4 * width
/// @return -8; -6 also for kernelLen below 1; -14
int primFilterColumn_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                             int height, const float* kernel, int kernelLen, int anchor);

/// Convolves each row in integers.
///
/// @param srcStep  at least width - 1 + kernelLen
/// @return -8; -6 also for kernelLen below 1; -14; -51 for divisor 0
int primFilterRow_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                         int width, int height, const int* kernel, int kernelLen, int anchor,
                         int divisor);

/// Convolves each column in integers.
///
/// @param srcStep  at least width
/// @return -8; -6 also for kernelLen below 1; -14; -51 for divisor 0
int primFilterColumn_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                            int width, int height, const int* kernel, int kernelLen, int anchor,
                            int divisor);

/// Convolves in two dimensions, in integers: dst(x, y) = sum of
/// kernel[j * kernelWidth + i] * src(x + anchorX - i, y + anchorY - j).
///
/// @param srcStep  at least width - 1 + kernelWidth
/// @return -8; -6 also for a kernel size below 1; -14; -51 for divisor 0
int primFilter_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height, const int* kernel, int kernelWidth, int kernelHeight,
                      int anchorX, int anchorY, int divisor);

/// Smooths with a fixed Gaussian.
///
/// kMask33: rows and columns weighted 1 2 1. Row sums (left + right) + 2 * middle, of these
/// (above + below) + 2 * middle, times 0.0625.
/// kMask55: the kernel 2 7 12 7 2; 7 31 52 31 7; 12 52 127 52 12; 7 31 52 31 7; 2 7 12 7 2. Row
/// sums (a * outer pair + b * inner pair) + c * middle, of these
/// ((outer pair + inner pair) + middle) / 571.
/// Pairs are added first, so that a mirrored image gives the mirrored result to the bit.
/// Needs no memory. A frame of one pixel (kMask33) or two (kMask55) is read.
///
/// @return -8, -6, -14; -33 for another mask
int primFilterGauss_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                            int height, int mask);

}  // namespace vx::prim
