#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primCopy_8u_C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int) { return -9999; }
int primCopy_8u_C3R(const std::uint8_t*, int, std::uint8_t*, int, int, int) { return -9999; }
int primCopy_16s_C1R(const std::int16_t*, int, std::int16_t*, int, int, int) { return -9999; }
int primCopy_32f_C1R(const float*, int, float*, int, int, int) { return -9999; }
int primCopy_32f_C3R(const float*, int, float*, int, int, int) { return -9999; }
int primCopy_8u_C1MR(const std::uint8_t*, int, std::uint8_t*, int, int, int, const std::uint8_t*,
                     int) {
  return -9999;
}
int primCopy_32f_C1MR(const float*, int, float*, int, int, int, const std::uint8_t*, int) {
  return -9999;
}
int primSet_8u_C1R(std::uint8_t, std::uint8_t*, int, int, int) { return -9999; }
int primSet_32f_C1R(float, float*, int, int, int) { return -9999; }
int primSet_16s_C1MR(std::int16_t, std::int16_t*, int, int, int, const std::uint8_t*, int) {
  return -9999;
}
int primSet_32f_C3R(const float*, float*, int, int, int) { return -9999; }
int primCopyReplicateBorder_32f_C1R(const float*, int, int, int, float*, int, int, int, int, int) {
  return -9999;
}
int primCopyReplicateBorder_8u_C3R(const std::uint8_t*, int, int, int, std::uint8_t*, int, int, int,
                                   int, int) {
  return -9999;
}

}  // namespace vx::prim::VX_VARIANT
