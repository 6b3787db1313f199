#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primSum_32f_C1R(const float*, int, int, int, double*, int) { return -9999; }
int primMean_32f_C1R(const float*, int, int, int, double*, int) { return -9999; }
int primMean_16s_C1R(const std::int16_t*, int, int, int, double*) { return -9999; }
int primMin_16s_C1R(const std::int16_t*, int, int, int, std::int16_t*) { return -9999; }
int primMax_32f_C1R(const float*, int, int, int, float*) { return -9999; }
int primMinIndex_32f_C1R(const float*, int, int, int, float*, int*, int*) { return -9999; }
int primNormDiffL1_8u_C1R(const std::uint8_t*, int, const std::uint8_t*, int, int, int, double*) {
  return -9999;
}
int primHistogramRange_16s_C1R(const std::int16_t*, int, int, int, int*, const int*, int) {
  return -9999;
}

}  // namespace vx::prim::VX_VARIANT
