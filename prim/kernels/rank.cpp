#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primFilterMedian_8u_C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int, int, int, int,
                            int) {
  return -9999;
}
int primFilterMedianCross_8u_C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int, int) {
  return -9999;
}
int primFilterMedianCross_16s_C1R(const std::int16_t*, int, std::int16_t*, int, int, int, int) {
  return -9999;
}
int primFilterMedianVert_8u_C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int, int) {
  return -9999;
}
int primFilterMedianHoriz_8u_C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int, int) {
  return -9999;
}
int primDilate3x3_32f_C1R(const float*, int, float*, int, int, int) { return -9999; }
int primErode3x3_32f_C1R(const float*, int, float*, int, int, int) { return -9999; }

}  // namespace vx::prim::VX_VARIANT
