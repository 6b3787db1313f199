#pragma once

// Exponent and logarithm of a float by double polynomials: the same operations, hence the same
// bits, in every variant and on every processor, which the functions of the C library do not
// promise, and they vectorise. The error before the rounding to float is below 1e-14 of the result,
// so the result is the correctly rounded one unless it lies that close to the middle between two
// floats.

#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Adding it to a double of magnitude below 2^51 leaves the nearest integer in the low bits.
constexpr double kIntegerShift = 0x1.8p52;
constexpr std::uint64_t kBitsOfOne = 0x3FF0000000000000;

[[maybe_unused]] inline std::uint64_t bitsOf(double v) {
  return __builtin_bit_cast(std::uint64_t, v);
}
[[maybe_unused]] inline double fromBits(std::uint64_t v) { return __builtin_bit_cast(double, v); }

// exp(x) = 2^k exp(r), k the integer nearest to x / ln 2, |r| <= ln 2 / 2; Taylor to the 12th power
// (the remainder is 0.35^13 / 13! = 2e-16). Outside the range of float the value is replaced, so k
// needs no limits.
[[maybe_unused]] inline float expElement(float x) {
  constexpr double kLog2e = 0x1.71547652b82fep+0;
  // The upper part has 32 bits, so its product with k is exact.
  constexpr double kLn2Upper = 0x1.62e42feep-1;
  constexpr double kLn2Lower = 0x1.a39ef35793c76p-33;
  const double wide = x;
  const double shifted = wide * kLog2e + kIntegerShift;
  const double k = shifted - kIntegerShift;
  const double r = (wide - k * kLn2Upper) - k * kLn2Lower;
  double p = 1.0 / 479001600;
  p = p * r + 1.0 / 39916800;
  p = p * r + 1.0 / 3628800;
  p = p * r + 1.0 / 362880;
  p = p * r + 1.0 / 40320;
  p = p * r + 1.0 / 5040;
  p = p * r + 1.0 / 720;
  p = p * r + 1.0 / 120;
  p = p * r + 1.0 / 24;
  p = p * r + 1.0 / 6;
  p = p * r + 0.5;
  p = p * r + 1.0;
  p = p * r + 1.0;
  float result = static_cast<float>(p * fromBits((bitsOf(shifted) << 52) + kBitsOfOne));
  result = __builtin_fabsf(x) < 0x1p-126f ? 1.0f : result;
  result = x > 88.72284f ? __builtin_inff() : result;
  result = x < -87.33655f ? 0.0f : result;
  return x != x ? x : result;
}

// ln(x) = e ln 2 + ln m, m in sqrt(1/2)..sqrt(2), ln m = 2 artanh(s) with s = (m - 1) / (m + 1),
// |s| < 0.1716, as a power series to s^19 (the next term is 2e-17 of the first). Near 1 e is 0 and
// m - 1 exact, so that the relative error stays.
[[maybe_unused]] inline float lnElement(float x) {
  constexpr double kLn2 = 0x1.62e42fefa39efp-1;
  constexpr std::uint64_t kBitsOfRootHalf = 0x3FE6A09E667F3BCD;
  const std::uint64_t bits = bitsOf(x);
  // The biased exponent after moving the cut between exponents from 1 to sqrt(1/2). It enters a
  // double as the low bits of 2^52, since no vector unit before AVX-512 converts 64-bit integers.
  const std::uint64_t exponent = (bits + (kBitsOfOne - kBitsOfRootHalf)) >> 52;
  const double e = fromBits(exponent | 0x4330000000000000) - (0x1p52 + 1023);
  const double m = fromBits(bits - (exponent << 52) + kBitsOfOne);
  const double s = (m - 1.0) / (m + 1.0);
  const double z = s * s;
  double p = 2.0 / 19;
  p = p * z + 2.0 / 17;
  p = p * z + 2.0 / 15;
  p = p * z + 2.0 / 13;
  p = p * z + 2.0 / 11;
  p = p * z + 2.0 / 9;
  p = p * z + 2.0 / 7;
  p = p * z + 2.0 / 5;
  p = p * z + 2.0 / 3;
  p = p * z + 2.0;
  float result = static_cast<float>(e * kLn2 + p * s);
  result = x < __builtin_inff() ? result : x;  // infinity and NaN are their own logarithms
  result = x < 0.0f ? -__builtin_nanf("") : result;
  return x == 0.0f ? -__builtin_inff() : result;
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
