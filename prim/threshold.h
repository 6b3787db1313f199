#pragma once

#include "prim/types.h"

namespace vx::prim {

int primThreshold_GT_8u_C1IR(std::uint8_t* srcDst, int srcDstStep, int width, int height,
                             std::uint8_t level);
int primThreshold_GT_16u_C3IR(std::uint16_t* srcDst, int srcDstStep, int width, int height,
                              const std::uint16_t* level);
int primThreshold_GT_16u_AC4IR(std::uint16_t* srcDst, int srcDstStep, int width, int height,
                               const std::uint16_t* level);
int primThreshold_GT_32f_C1IR(float* srcDst, int srcDstStep, int width, int height, float level);
int primThreshold_GT_32f_C3IR(float* srcDst, int srcDstStep, int width, int height,
                              const float* level);
int primThreshold_LT_32f_C1IR(float* srcDst, int srcDstStep, int width, int height, float level);
int primThreshold_LT_32f_C3IR(float* srcDst, int srcDstStep, int width, int height,
                              const float* level);
int primCompare_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                       int src2Step, std::uint8_t* dst, int dstStep, int width, int height,
                       int selector);
int primCompare_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step,
                        std::uint8_t* dst, int dstStep, int width, int height, int selector);
int primCompareC_32f_C1R(const float* src, int srcStep, float value, std::uint8_t* dst, int dstStep,
                         int width, int height, int selector);
int primCompareC_16s_C1R(const std::int16_t* src, int srcStep, std::int16_t value,
                         std::uint8_t* dst, int dstStep, int width, int height, int selector);

}  // namespace vx::prim
