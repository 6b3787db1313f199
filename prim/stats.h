#pragma once

#include "prim/types.h"

namespace vx::prim {

int primSum_32f_C1R(const float* src, int srcStep, int width, int height, double* sum, int hint);
int primMean_32f_C1R(const float* src, int srcStep, int width, int height, double* mean, int hint);
int primMean_16s_C1R(const std::int16_t* src, int srcStep, int width, int height, double* mean);
int primMin_16s_C1R(const std::int16_t* src, int srcStep, int width, int height, std::int16_t* min);
int primMax_32f_C1R(const float* src, int srcStep, int width, int height, float* max);
int primMinIndex_32f_C1R(const float* src, int srcStep, int width, int height, float* min,
                         int* indexX, int* indexY);
int primNormDiffL1_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                          int src2Step, int width, int height, double* result);
int primHistogramRange_16s_C1R(const std::int16_t* src, int srcStep, int width, int height,
                               int* hist, const int* levels, int levelCount);

}  // namespace vx::prim
