#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

int primCopy_8u_C3C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int) { return -9999; }
int primCopy_8u_C4C1R(const std::uint8_t*, int, std::uint8_t*, int, int, int) { return -9999; }
int primCopy_16s_C3C1R(const std::int16_t*, int, std::int16_t*, int, int, int) { return -9999; }
int primCopy_16u_C3C1R(const std::uint16_t*, int, std::uint16_t*, int, int, int) { return -9999; }
int primCopy_16s_C4C1R(const std::int16_t*, int, std::int16_t*, int, int, int) { return -9999; }
int primCopy_16u_C4C1R(const std::uint16_t*, int, std::uint16_t*, int, int, int) { return -9999; }
int primCopy_32f_C3C1R(const float*, int, float*, int, int, int) { return -9999; }
int primCopy_8u_C1C3R(const std::uint8_t*, int, std::uint8_t*, int, int, int) { return -9999; }
int primCopy_8u_C1C4R(const std::uint8_t*, int, std::uint8_t*, int, int, int) { return -9999; }
int primCopy_16s_C1C3R(const std::int16_t*, int, std::int16_t*, int, int, int) { return -9999; }
int primCopy_16u_C1C3R(const std::uint16_t*, int, std::uint16_t*, int, int, int) { return -9999; }
int primCopy_16s_C1C4R(const std::int16_t*, int, std::int16_t*, int, int, int) { return -9999; }
int primCopy_16u_C1C4R(const std::uint16_t*, int, std::uint16_t*, int, int, int) { return -9999; }
int primCopy_32f_C1C3R(const float*, int, float*, int, int, int) { return -9999; }

}  // namespace vx::prim::VX_VARIANT
