#pragma once

#include "prim/types.h"

namespace vx::prim {

int primFilterMedian_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                            int width, int height, int maskWidth, int maskHeight, int anchorX,
                            int anchorY);
int primFilterMedianCross_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                 int dstStep, int width, int height, int mask);
int primFilterMedianCross_16s_C1R(const std::int16_t* src, int srcStep, std::int16_t* dst,
                                  int dstStep, int width, int height, int mask);
int primFilterMedianVert_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                int dstStep, int width, int height, int mask);
int primFilterMedianHoriz_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                 int dstStep, int width, int height, int mask);
int primDilate3x3_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                          int height);
int primErode3x3_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height);

}  // namespace vx::prim
