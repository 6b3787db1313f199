#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primFilterRow_8u_C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int, const int*, int,
                         int, int) {
  return -9999;
}
int primFilterColumn_8u_C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int, const int*, int,
                            int, int) {
  return -9999;
}
int primFilter_8u_C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int, const int*, int, int,
                      int, int, int) {
  return -9999;
}

}  // namespace vx::prim::VX_VARIANT
