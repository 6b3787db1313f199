#pragma once

#include "prim/types.h"

namespace vx::prim {

int primLUT_Linear_32f_C1IR(float* srcDst, int srcDstStep, int width, int height,
                            const float* values, const float* levels, int count);
int primLUT_Cubic_32f_C1IR(float* srcDst, int srcDstStep, int width, int height,
                           const float* values, const float* levels, int count);

}  // namespace vx::prim
