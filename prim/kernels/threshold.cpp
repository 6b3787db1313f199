#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primThreshold_GT_8u_C1IR(std::uint8_t*, int, int, int, std::uint8_t) { return -9999; }
int primThreshold_GT_16u_C3IR(std::uint16_t*, int, int, int, const std::uint16_t*) { return -9999; }
int primThreshold_GT_16u_AC4IR(std::uint16_t*, int, int, int, const std::uint16_t*) {
  return -9999;
}
int primThreshold_GT_32f_C1IR(float*, int, int, int, float) { return -9999; }
int primThreshold_GT_32f_C3IR(float*, int, int, int, const float*) { return -9999; }
int primThreshold_LT_32f_C1IR(float*, int, int, int, float) { return -9999; }
int primThreshold_LT_32f_C3IR(float*, int, int, int, const float*) { return -9999; }
int primCompare_8u_C1R(const std::uint8_t*, int, const std::uint8_t*, int, std::uint8_t*, int, int,
                       int, int) {
  return -9999;
}
int primCompare_32f_C1R(const float*, int, const float*, int, std::uint8_t*, int, int, int, int) {
  return -9999;
}
int primCompareC_32f_C1R(const float*, int, float, std::uint8_t*, int, int, int, int) {
  return -9999;
}
int primCompareC_16s_C1R(const std::int16_t*, int, std::int16_t, std::uint8_t*, int, int, int,
                         int) {
  return -9999;
}

}  // namespace vx::prim::VX_VARIANT
