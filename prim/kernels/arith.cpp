#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primAdd_32f_C1IR(const float*, int, float*, int, int, int) { return -9999; }
int primAdd_32f_C3IR(const float*, int, float*, int, int, int) { return -9999; }
int primAdd_32f_C1R(const float*, int, const float*, int, float*, int, int, int) { return -9999; }
int primSub_32f_C1IR(const float*, int, float*, int, int, int) { return -9999; }
int primSub_32f_C1R(const float*, int, const float*, int, float*, int, int, int) { return -9999; }
int primMul_32f_C1IR(const float*, int, float*, int, int, int) { return -9999; }
int primDiv_32f_C1IR(const float*, int, float*, int, int, int) { return -9999; }
int primAddC_32f_C1IR(float, float*, int, int, int) { return -9999; }
int primAddC_32f_C3IR(const float*, float*, int, int, int) { return -9999; }
int primSubC_32f_C1IR(float, float*, int, int, int) { return -9999; }
int primSubC_32f_C1R(const float*, int, float, float*, int, int, int) { return -9999; }
int primMulC_32f_C1IR(float, float*, int, int, int) { return -9999; }
int primMulC_32f_C3IR(const float*, float*, int, int, int) { return -9999; }
int primMulC_32f_C1R(const float*, int, float, float*, int, int, int) { return -9999; }
int primAbs_32f_C1R(const float*, int, float*, int, int, int) { return -9999; }
int primAbs_32f_C1IR(float*, int, int, int) { return -9999; }
int primAbsDiff_32f_C1R(const float*, int, const float*, int, float*, int, int, int) {
  return -9999;
}
int primSqr_32f_C1IR(float*, int, int, int) { return -9999; }
int primExp_32f_C1IR(float*, int, int, int) { return -9999; }
int primLn_32f_C1IR(float*, int, int, int) { return -9999; }

}  // namespace vx::prim::VX_VARIANT
