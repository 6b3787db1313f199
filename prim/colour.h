#pragma once

#include "prim/types.h"

namespace vx::prim {

int primRGBToHLS_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height);
int primHLSToRGB_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height);
int primColorTwist_32f_P3IR(float* const* planes, int step, int width, int height,
                            const float (*twist)[4]);

}  // namespace vx::prim
