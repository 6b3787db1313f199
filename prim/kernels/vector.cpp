#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primvSet_32f(float, float*, int) { return -9999; }
int primvZero_32f(float*, int) { return -9999; }
int primvCopy_32f(const float*, float*, int) { return -9999; }
int primvAdd_32f_I(const float*, float*, int) { return -9999; }
int primvAddC_32f_I(float, float*, int) { return -9999; }
int primvSubC_32f_I(float, float*, int) { return -9999; }
int primvMulC_32f_I(float, float*, int) { return -9999; }
int primvDiv_32f_I(const float*, float*, int) { return -9999; }
int primvSqr_32f_I(float*, int) { return -9999; }
int primvMagnitude_32fc(const Complex32f*, float*, int) { return -9999; }
int primvMul_32fc_I(const Complex32f*, Complex32f*, int) { return -9999; }
int primvMul_32f32fc_I(const float*, Complex32f*, int) { return -9999; }
int primvThreshold_GT_32f_I(float*, int, float) { return -9999; }
int primvThreshold_LT_32f_I(float*, int, float) { return -9999; }

}  // namespace vx::prim::VX_VARIANT
