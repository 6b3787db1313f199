#pragma once

#include "prim/types.h"

namespace vx::prim {

int primWinBartlett2D_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);
int primvWinHamming_32f_I(float* srcDst, int length);

}  // namespace vx::prim
