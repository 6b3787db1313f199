#pragma once

// One-sided clips and comparisons. For all of them:
//
// - GT sets what exceeds the level to the level, LT what falls below it. An element equal to the
//   level keeps its bits (-0 stays -0 at a level of 0). A NaN takes the level.
// - C3 and AC4 forms have one level per channel, three in all, which may lie inside the image and
//   are read first. The fourth channel of AC4 keeps its value; it is stored again, so no other
//   thread may write it meanwhile. That of a row's last pixel is not touched.
// - Comparisons write 255 where the relation holds, else 0. A NaN stands in no relation.
// - Each operand is the destination itself, where the types allow it, or does not overlap it.
// - 16-bit images may start at odd addresses.
// - Errors: kStatusNullPtr for any null pointer, kStatusBadSize for a width or height below 1, and
//   for comparisons only kStatusBadStep for a step below 1. Clips honour any step.

#include "prim/types.h"

namespace vx::prim {

/// srcDst = min(srcDst, level).
int primThreshold_GT_8u_C1IR(std::uint8_t* srcDst, int srcDstStep, int width, int height,
                             std::uint8_t level);
/// srcDst = min(srcDst, level[channel]).
int primThreshold_GT_16u_C3IR(std::uint16_t* srcDst, int srcDstStep, int width, int height,
                              const std::uint16_t* level);
/// srcDst = min(srcDst, level[channel]) in the first three of four channels.
int primThreshold_GT_16u_AC4IR(std::uint16_t* srcDst, int srcDstStep, int width, int height,
                               const std::uint16_t* level);
/// srcDst = srcDst <= level ? srcDst : level.
int primThreshold_GT_32f_C1IR(float* srcDst, int srcDstStep, int width, int height, float level);
/// srcDst = srcDst <= level[channel] ? srcDst : level[channel].
int primThreshold_GT_32f_C3IR(float* srcDst, int srcDstStep, int width, int height,
                              const float* level);
/// srcDst = srcDst >= level ? srcDst : level.
int primThreshold_LT_32f_C1IR(float* srcDst, int srcDstStep, int width, int height, float level);
/// srcDst = srcDst >= level[channel] ? srcDst : level[channel].
int primThreshold_LT_32f_C3IR(float* srcDst, int srcDstStep, int width, int height,
                              const float* level);

/// dst = src1 RELATION src2 ? 255 : 0.
///
/// @param selector   a CompareSelector; any other value does nothing and is no error
int primCompare_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                       int src2Step, std::uint8_t* dst, int dstStep, int width, int height,
                       int selector);
/// dst = src1 RELATION src2 ? 255 : 0.
///
/// @param selector   as for primCompare_8u_C1R
int primCompare_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step,
                        std::uint8_t* dst, int dstStep, int width, int height, int selector);
/// dst = src RELATION value ? 255 : 0.
///
/// @param selector   as for primCompare_8u_C1R
int primCompareC_32f_C1R(const float* src, int srcStep, float value, std::uint8_t* dst, int dstStep,
                         int width, int height, int selector);
/// dst = src RELATION value ? 255 : 0.
///
/// @param selector   as for primCompare_8u_C1R
int primCompareC_16s_C1R(const std::int16_t* src, int srcStep, std::int16_t value,
                         std::uint8_t* dst, int dstStep, int width, int height, int selector);

}  // namespace vx::prim
