#pragma once

#include "edge/enh_edge.h"

namespace vx {

/// Rows of interleaved float RGB to rows of the planes Y, U, V of analogue television (ITU-R BT.601
/// weights):
///
///     Y = 0.299 R + 0.587 G + 0.114 B
///     U = -0.147 R - 0.289 G + 0.436 B
///     V = 0.615 R - 0.515 G - 0.1 B
///
/// Computed as chains of products over one channel after the other, each step rounded to single
/// precision, nothing clipped.
/// @param rgb   `rows` rows of 3 * width floats, `rgbStep` bytes apart
/// @param yuv   three planes; rows `top` to `top` + `rows` - 1 are written
void rgbToYuv(const float* rgb, int rgbStep, EdgePlane (&yuv)[3], int top, int rows);

/// The way back: R = Y + 1.14 V, G = Y - 0.394 U - 0.581 V, B = Y + 2.032 U. Not an exact inverse.
void yuvToRgb(const EdgePlane (&yuv)[3], int top, int rows, float* rgb, int rgbStep);

}  // namespace vx
