#pragma once

#include "prim/types.h"

namespace vx::prim {

// The Gaussian pyramid (Burt and Adelson, 1983, The Laplacian pyramid as a compact image code),
// with weights 1 4 6 4 1 in both directions.
//
// Both steps handle their own edges, allocate nothing and read each row once. They keep rows in the
// caller's buffer, which may lie at any address; the two queries give its size. Single precision
// throughout, sums from left to right and top to bottom. Source, destination and buffer must not
// overlap.

/// Code of single-precision images in the size queries.
inline constexpr int kPyramid32f = 13;

/// Halves an image to (width + 1) / 2 by (height + 1) / 2.
///
/// Each row at even positions: h(i) = s(2i-2) + 4 s(2i-1) + 6 s(2i) + 4 s(2i+1) + s(2i+2), the same
/// sum down the columns of h, times 0.00390625. Positions outside mirror about the edge pixel
/// without repeating it, again and again on one or two pixels.
/// @param srcStep,dstStep  at least 4 * width, 4 * output width
/// @param buffer           bytes by primPyrDownGetBufSize for this width or a larger one
/// @return -8, -6, -14; -108 for a step that is no multiple of 4
int primPyrDown_Gauss5x5_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                                 int height, void* buffer);

/// Doubles an image to 2 * width by 2 * height.
///
/// Each row: e(2i) = s(i-1) + 6 s(i) + s(i+1), e(2i+1) = 4 * (s(i) + s(i+1)); the same down the
/// columns of e, times 0.015625. Left and top mirror (s(-1) is s(1), or s(0) on one pixel), right
/// and bottom repeat the last pixel.
/// @param srcStep,dstStep  at least 4 * width, 8 * width
/// @param buffer           bytes by primPyrUpGetBufSize for this width or a larger one
/// @return -8, -6, -14; -108 for a step that is no multiple of 4
int primPyrUp_Gauss5x5_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                               int height, void* buffer);

/// Bytes of the buffer for halving: ((width * channels * 4 + 15) & ~15) * 6 + 32.
///
/// @param dataType  kPyramid32f; 1 and 3 are accepted too
/// @param channels  1 or 3
/// @return -8; -6 also when the size would exceed INT_MAX; -12, -53
int primPyrDownGetBufSize(int width, int dataType, int channels, int* size);

/// Bytes of the buffer for doubling: ((width * 2 * channels * 4 + 15) & ~15) * 3 + 32.
int primPyrUpGetBufSize(int width, int dataType, int channels, int* size);

}  // namespace vx::prim
