#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primAdd_8u_C1RSfs(const std::uint8_t*, int, const std::uint8_t*, int, std::uint8_t*, int, int,
                      int, int) {
  return -9999;
}
int primAdd_8u_C1IRSfs(const std::uint8_t*, int, std::uint8_t*, int, int, int, int) {
  return -9999;
}
int primSub_8u_C1IRSfs(const std::uint8_t*, int, std::uint8_t*, int, int, int, int) {
  return -9999;
}
int primSub_16s_C1IRSfs(const std::int16_t*, int, std::int16_t*, int, int, int, int) {
  return -9999;
}
int primSubC_8u_C1IRSfs(std::uint8_t, std::uint8_t*, int, int, int, int) { return -9999; }
int primAddC_16s_C1IRSfs(std::int16_t, std::int16_t*, int, int, int, int) { return -9999; }
int primAbs_16s_C1IR(std::int16_t*, int, int, int) { return -9999; }
int primAbsDiff_8u_C1R(const std::uint8_t*, int, const std::uint8_t*, int, std::uint8_t*, int, int,
                       int) {
  return -9999;
}
int primAddProduct_8u32f_C1IR(const std::uint8_t*, int, const std::uint8_t*, int, float*, int, int,
                              int) {
  return -9999;
}

}  // namespace vx::prim::VX_VARIANT
