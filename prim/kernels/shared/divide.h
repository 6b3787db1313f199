#pragma once

#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
namespace {

// srcDst /= src, true if a divisor was 0. Division in double and rounding to float gives the same
// bits as division in float: a double has more than twice the digits of a float plus two.
[[maybe_unused]] inline bool divideRow(const float* src, float* srcDst, std::ptrdiff_t n) {
  int zeros = 0;
  VX_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < n; ++x) {
    const float a = srcDst[x];
    const bool zero = src[x] == 0.0f;
    zeros |= zero;
    // The sign of a zero divisor does not count; 0 and NaN over 0 give one NaN, 0xFFC00000.
    const float infinity = __builtin_copysignf(__builtin_inff(), a);
    const float overZero = (a < 0.0f) | (a > 0.0f) ? infinity : -__builtin_nanf("");
    srcDst[x] = zero ? overZero : a / src[x];
  }
  return zeros != 0;
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
