#include "prim/deconvolution.h"

namespace vx::prim {
int primDeconvLRInitAlloc_32f_C1R(primDeconvLRState**, const float*, int, int, int, float) {
  return kStatusNoMemory;
}
int primDeconvLRFree_32f_C1R(primDeconvLRState*) { return kStatusNullPtr; }
int primPyrDownGetBufSize(int, int, int, int*) { return kStatusNullPtr; }
int primPyrUpGetBufSize(int, int, int, int*) { return kStatusNullPtr; }
}  // namespace vx::prim
