#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primRGBToHLS_32f_C3R(const float*, int, float*, int, int, int) { return -9999; }
int primHLSToRGB_32f_C3R(const float*, int, float*, int, int, int) { return -9999; }
int primColorTwist_32f_P3IR(float* const*, int, int, int, const float (*)[4]) { return -9999; }

}  // namespace vx::prim::VX_VARIANT
