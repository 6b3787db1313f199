#pragma once

#include "prim/types.h"

namespace vx::prim {

int primDeconvLRInitAlloc_32f_C1R(primDeconvLRState** state, const float* kernel, int kernelSize,
                                  int maxWidth, int maxHeight, float threshold);
int primDeconvLRFree_32f_C1R(primDeconvLRState* state);
int primPyrDownGetBufSize(int width, int dataType, int channels, int* size);
int primPyrUpGetBufSize(int width, int dataType, int channels, int* size);

}  // namespace vx::prim
