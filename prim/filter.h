#pragma once

#include "prim/types.h"

namespace vx::prim {

int primFilterRow_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                          int height, const float* kernel, int kernelLen, int anchor);
int primFilterColumn_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                             int height, const float* kernel, int kernelLen, int anchor);
int primFilterRow_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                         int width, int height, const int* kernel, int kernelLen, int anchor,
                         int divisor);
int primFilterColumn_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                            int width, int height, const int* kernel, int kernelLen, int anchor,
                            int divisor);
int primFilter_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height, const int* kernel, int kernelWidth, int kernelHeight,
                      int anchorX, int anchorY, int divisor);
int primFilterGauss_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                            int height, int mask);

}  // namespace vx::prim
