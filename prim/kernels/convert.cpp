#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primConvert_8u32f_C1R(const std::uint8_t*, int, float*, int, int, int) { return -9999; }
int primConvert_8u32f_C3R(const std::uint8_t*, int, float*, int, int, int) { return -9999; }
int primConvert_16u32f_C1R(const std::uint16_t*, int, float*, int, int, int) { return -9999; }
int primConvert_16u32f_C3R(const std::uint16_t*, int, float*, int, int, int) { return -9999; }
int primConvert_32f8u_C1R(const float*, int, std::uint8_t*, int, int, int, int) { return -9999; }
int primConvert_32f8u_C3R(const float*, int, std::uint8_t*, int, int, int, int) { return -9999; }
int primConvert_32f16u_C1R(const float*, int, std::uint16_t*, int, int, int, int) { return -9999; }
int primConvert_32f16u_C3R(const float*, int, std::uint16_t*, int, int, int, int) { return -9999; }
int primConvert_32f16s_C1R(const float*, int, std::int16_t*, int, int, int, int) { return -9999; }

}  // namespace vx::prim::VX_VARIANT
