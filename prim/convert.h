#pragma once

#include "prim/types.h"

namespace vx::prim {

int primConvert_8u32f_C1R(const std::uint8_t* src, int srcStep, float* dst, int dstStep, int width,
                          int height);
int primConvert_8u32f_C3R(const std::uint8_t* src, int srcStep, float* dst, int dstStep, int width,
                          int height);
int primConvert_16u32f_C1R(const std::uint16_t* src, int srcStep, float* dst, int dstStep,
                           int width, int height);
int primConvert_16u32f_C3R(const std::uint16_t* src, int srcStep, float* dst, int dstStep,
                           int width, int height);
int primConvert_32f8u_C1R(const float* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                          int height, int roundMode);
int primConvert_32f8u_C3R(const float* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                          int height, int roundMode);
int primConvert_32f16u_C1R(const float* src, int srcStep, std::uint16_t* dst, int dstStep,
                           int width, int height, int roundMode);
int primConvert_32f16u_C3R(const float* src, int srcStep, std::uint16_t* dst, int dstStep,
                           int width, int height, int roundMode);
int primConvert_32f16s_C1R(const float* src, int srcStep, std::int16_t* dst, int dstStep, int width,
                           int height, int roundMode);

}  // namespace vx::prim
