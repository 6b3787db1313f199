#pragma once

// One channel of an interleaved image, to or from a plane. For all of them:
//
// - C3C1 and C4C1 read every third or fourth element, C1C3 and C1C4 write it. The interleaved
//   pointer addresses the wanted channel of the first pixel: src + c, dst + c.
// - Only the wanted elements of the destination are written, so threads may fill the channels of
//   one image at the same time. Nothing is touched beyond the wanted element of a row's last pixel,
//   nor before that of its first.
// - Elements move bit by bit; 16u and 16s are the same operation. 16-bit images may start at odd
//   addresses.
// - Steps are not checked: any value is honoured, also one below 1 (an image from the bottom up).
// - Source and destination do not overlap.
// - Errors: kStatusNullPtr, then kStatusBadSize for a width or height below 1.

#include "prim/types.h"

namespace vx::prim {

/// dst[x] = src[3 * x].
int primCopy_8u_C3C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height);
/// dst[x] = src[4 * x].
int primCopy_8u_C4C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height);
/// dst[x] = src[3 * x].
int primCopy_16s_C3C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height);
/// dst[x] = src[3 * x].
int primCopy_16u_C3C1R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height);
/// dst[x] = src[4 * x].
int primCopy_16s_C4C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height);
/// dst[x] = src[4 * x].
int primCopy_16u_C4C1R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height);
/// dst[x] = src[3 * x].
int primCopy_32f_C3C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                       int height);
/// dst[3 * x] = src[x].
int primCopy_8u_C1C3R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height);
/// dst[4 * x] = src[x].
int primCopy_8u_C1C4R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height);
/// dst[3 * x] = src[x].
int primCopy_16s_C1C3R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height);
/// dst[3 * x] = src[x].
int primCopy_16u_C1C3R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height);
/// dst[4 * x] = src[x].
int primCopy_16s_C1C4R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height);
/// dst[4 * x] = src[x].
int primCopy_16u_C1C4R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height);
/// dst[3 * x] = src[x].
int primCopy_32f_C1C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                       int height);

}  // namespace vx::prim
