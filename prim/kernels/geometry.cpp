#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primTranspose_32f_C1IR(float*, int, int, int) { return -9999; }
int primPyrDown_Gauss5x5_32f_C1R(const float*, int, float*, int, int, int, void*) { return -9999; }
int primPyrUp_Gauss5x5_32f_C1R(const float*, int, float*, int, int, int, void*) { return -9999; }
int primResize_32f_C1R(const float*, int, int, int, int, int, int, int, float*, int, int, int,
                       double, double, int) {
  return -9999;
}
int primDeconvLR_32f_C1R(const float*, int, float*, int, int, int, int, primDeconvLRState*) {
  return -9999;
}

}  // namespace vx::prim::VX_VARIANT
