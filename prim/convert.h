#pragma once

// Conversions between element types. For all of them:
//
// - Widths and heights count pixels; C3 rows hold three interleaved elements per pixel, converted
//   alike.
// - To float: exact. From float: saturated first (at or above the top of the range the top, at or
//   below the bottom the bottom), then rounded as `roundMode` says; any value is accepted:
//
//   | roundMode             | rule                        |  0.5 |  1.5 |  2.5 | 254.5 |
//   |-----------------------|-----------------------------|------|------|------|-------|
//   | 0, primRndZero        | truncate toward zero        |    0 |    1 |    2 |   254 |
//   | 1, primRndNear        | nearest, ties to even       |    0 |    2 |    2 |   254 |
//   | others                | nearest, ties away from 0   |    1 |    2 |    3 |   255 |
//
//   Ties are exact: the float just below 0.5 gives 0 in every mode. NaN gives 0.
// - primRndNear converts by the thread's rounding mode, which is to be nearest (see float_mode.h).
// - 16-bit images may start at odd addresses. Source and destination do not overlap.
// - Errors: kStatusNullPtr; kStatusBadSize for a width or height below 1; kStatusBadStep for a step
//   below 1.

#include "prim/types.h"

namespace vx::prim {

/// dst = src as float.
int primConvert_8u32f_C1R(const std::uint8_t* src, int srcStep, float* dst, int dstStep, int width,
                          int height);
/// dst = src as float.
int primConvert_8u32f_C3R(const std::uint8_t* src, int srcStep, float* dst, int dstStep, int width,
                          int height);
/// dst = src as float.
int primConvert_16u32f_C1R(const std::uint16_t* src, int srcStep, float* dst, int dstStep,
                           int width, int height);
/// dst = src as float.
int primConvert_16u32f_C3R(const std::uint16_t* src, int srcStep, float* dst, int dstStep,
                           int width, int height);

/// dst = round(clamp(src, 0, 255)).
int primConvert_32f8u_C1R(const float* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                          int height, int roundMode);
/// dst = round(clamp(src, 0, 255)).
int primConvert_32f8u_C3R(const float* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                          int height, int roundMode);
/// dst = round(clamp(src, 0, 65535)).
int primConvert_32f16u_C1R(const float* src, int srcStep, std::uint16_t* dst, int dstStep,
                           int width, int height, int roundMode);
/// dst = round(clamp(src, 0, 65535)).
int primConvert_32f16u_C3R(const float* src, int srcStep, std::uint16_t* dst, int dstStep,
                           int width, int height, int roundMode);
/// dst = round(clamp(src, -32768, 32767)).
int primConvert_32f16s_C1R(const float* src, int srcStep, std::int16_t* dst, int dstStep, int width,
                           int height, int roundMode);

}  // namespace vx::prim
