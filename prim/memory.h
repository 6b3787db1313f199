#pragma once

// Copies and sets: elements move bit by bit, nothing is converted. For all of them:
//
// - Widths and heights count pixels; C3 rows hold three interleaved elements per pixel.
// - Steps are not checked unless a function says so: any value is honoured, also one below 1 (an
//   image from the bottom up). 16-bit images may start at odd addresses.
// - Under a mask (M), pixels where the 8-bit mask is nonzero are written; the others keep their
//   value. They may be stored again, so no other thread may write them meanwhile.
// - Source and destination are the same image or do not overlap.
// - Errors: kStatusNullPtr for any null pointer, kStatusBadSize for a width or height below 1.

#include "prim/types.h"

namespace vx::prim {

/// dst = src.
int primCopy_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                    int height);
/// dst = src.
int primCopy_8u_C3R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                    int height);
/// dst = src.
int primCopy_16s_C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                     int width, int height);
/// dst = src.
int primCopy_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width, int height);
/// dst = src.
int primCopy_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width, int height);

/// dst = src where the mask is nonzero.
int primCopy_8u_C1MR(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                     int width, int height, const std::uint8_t* mask, int maskStep);
/// dst = src where the mask is nonzero.
int primCopy_32f_C1MR(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                      const std::uint8_t* mask, int maskStep);

/// dst = value.
int primSet_8u_C1R(std::uint8_t value, std::uint8_t* dst, int dstStep, int width, int height);
/// dst = value.
int primSet_32f_C1R(float value, float* dst, int dstStep, int width, int height);
/// dst = value where the mask is nonzero.
int primSet_16s_C1MR(std::int16_t value, std::int16_t* dst, int dstStep, int width, int height,
                     const std::uint8_t* mask, int maskStep);
/// Channel c of every pixel = value[c].
///
/// @param value   three floats; they may lie inside the destination and are read first
int primSet_32f_C3R(const float* value, float* dst, int dstStep, int width, int height);

/// Copies the source into the destination at row `top`, column `left`, and fills the rest with the
/// nearest pixel of the source: dst(x, y) = src(clamp(x - left), clamp(y - top)).
///
/// Source and destination do not overlap.
/// @param srcWidth,srcHeight   pixels of the source; it must fit into the destination at its place
/// @param top,left   rows above and columns left of the source, at least 0
/// @return kStatusNullPtr; kStatusBadSize for a size below 1, a negative `top` or `left`, or a
///   source that does not fit; kStatusBadStep for a step below 1
int primCopyReplicateBorder_32f_C1R(const float* src, int srcStep, int srcWidth, int srcHeight,
                                    float* dst, int dstStep, int dstWidth, int dstHeight, int top,
                                    int left);
/// The same for pixels of three bytes.
int primCopyReplicateBorder_8u_C3R(const std::uint8_t* src, int srcStep, int srcWidth,
                                   int srcHeight, std::uint8_t* dst, int dstStep, int dstWidth,
                                   int dstHeight, int top, int left);

}  // namespace vx::prim
