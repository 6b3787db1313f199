#pragma once

#include "prim/types.h"

namespace vx::prim {

int primTranspose_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);
int primPyrDown_Gauss5x5_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                                 int height, void* buffer);
int primPyrUp_Gauss5x5_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                               int height, void* buffer);
int primResize_32f_C1R(const float* src, int srcWidth, int srcHeight, int srcStep, int roiX,
                       int roiY, int roiWidth, int roiHeight, float* dst, int dstStep, int dstWidth,
                       int dstHeight, double xFactor, double yFactor, int interpolation);
int primDeconvLR_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height, int iterations, primDeconvLRState* state);

}  // namespace vx::prim
