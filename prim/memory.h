#pragma once

#include "prim/types.h"

namespace vx::prim {

int primCopy_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                    int height);
int primCopy_8u_C3R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                    int height);
int primCopy_16s_C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                     int width, int height);
int primCopy_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width, int height);
int primCopy_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width, int height);
int primCopy_8u_C1MR(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                     int width, int height, const std::uint8_t* mask, int maskStep);
int primCopy_32f_C1MR(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                      const std::uint8_t* mask, int maskStep);
int primSet_8u_C1R(std::uint8_t value, std::uint8_t* dst, int dstStep, int width, int height);
int primSet_32f_C1R(float value, float* dst, int dstStep, int width, int height);
int primSet_16s_C1MR(std::int16_t value, std::int16_t* dst, int dstStep, int width, int height,
                     const std::uint8_t* mask, int maskStep);
int primSet_32f_C3R(const float* value, float* dst, int dstStep, int width, int height);
int primCopyReplicateBorder_32f_C1R(const float* src, int srcStep, int srcWidth, int srcHeight,
                                    float* dst, int dstStep, int dstWidth, int dstHeight, int top,
                                    int left);
int primCopyReplicateBorder_8u_C3R(const std::uint8_t* src, int srcStep, int srcWidth,
                                   int srcHeight, std::uint8_t* dst, int dstStep, int dstWidth,
                                   int dstHeight, int top, int left);

}  // namespace vx::prim
