#pragma once

#include "prim/types.h"

namespace vx::prim {

int primCopy_8u_C3C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height);
int primCopy_8u_C4C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height);
int primCopy_16s_C3C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height);
int primCopy_16u_C3C1R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height);
int primCopy_16s_C4C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height);
int primCopy_16u_C4C1R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height);
int primCopy_32f_C3C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                       int height);
int primCopy_8u_C1C3R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height);
int primCopy_8u_C1C4R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height);
int primCopy_16s_C1C3R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height);
int primCopy_16u_C1C3R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height);
int primCopy_16s_C1C4R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height);
int primCopy_16u_C1C4R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height);
int primCopy_32f_C1C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                       int height);

}  // namespace vx::prim
