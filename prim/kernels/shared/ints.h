#pragma once

// The body's vector of 32-bit integers, for the kernels of the block search. Sums, comparisons and
// choices are written with operators.

#include "prim/kernels/shared/intrinsics.h"
#include "prim/kernels/shared/kernel.h"

#if !defined(VX_KERNEL_SCALAR)

namespace vx::prim::VX_VARIANT {
namespace {

// dotPairs: sum + a.low * b.low + a.high * b.high of the signed halves of each lane.
// leastLane: the smallest element.
#if defined(__AVX512BW__)
constexpr int kInts = 16;
#elif defined(__AVX2__)
constexpr int kInts = 8;
#else
constexpr int kInts = 4;
#endif
using Ints [[gnu::vector_size(4 * kInts), gnu::may_alias]] = std::int32_t;

[[maybe_unused, gnu::always_inline]] inline Ints loadInts(const void* p) {
  Ints v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}
[[maybe_unused, gnu::always_inline]] inline void storeInts(void* p, Ints v) {
  __builtin_memcpy(p, &v, sizeof v);
}
[[maybe_unused, gnu::always_inline]] inline Ints setInts(std::int32_t v) { return Ints{} + v; }
// The numbers of the lanes, from `first` on.
[[maybe_unused, gnu::always_inline]] inline Ints laneNumbers(int first) {
  alignas(64) static constexpr std::int32_t kNumbers[] = {0, 1, 2,  3,  4,  5,  6,  7,
                                                          8, 9, 10, 11, 12, 13, 14, 15};
  return loadInts(kNumbers) + first;
}

#if defined(__AVX512BW__)
[[maybe_unused, gnu::always_inline]] inline Ints dotPairs(Ints sum, Ints a, Ints b) {
#if defined(__AVX512VNNI__)
  return reinterpret_cast<Ints>(_mm512_dpwssd_epi32(
      reinterpret_cast<__m512i>(sum), reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#else
  return sum + reinterpret_cast<Ints>(
                   _mm512_madd_epi16(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#endif
}
[[maybe_unused, gnu::always_inline]] inline Ints smaller(Ints a, Ints b) {
  return reinterpret_cast<Ints>(
      _mm512_min_epi32(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
}
#elif defined(__AVX2__)
[[maybe_unused, gnu::always_inline]] inline Ints dotPairs(Ints sum, Ints a, Ints b) {
  return sum + reinterpret_cast<Ints>(
                   _mm256_madd_epi16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
}
[[maybe_unused, gnu::always_inline]] inline Ints smaller(Ints a, Ints b) {
  return reinterpret_cast<Ints>(
      _mm256_min_epi32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
}
#else
[[maybe_unused, gnu::always_inline]] inline Ints dotPairs(Ints sum, Ints a, Ints b) {
  return sum + reinterpret_cast<Ints>(
                   _mm_madd_epi16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
}
[[maybe_unused, gnu::always_inline]] inline Ints smaller(Ints a, Ints b) { return a < b ? a : b; }
#endif

[[maybe_unused, gnu::always_inline]] inline std::int32_t leastLane(Ints v) {
#if defined(__AVX512BW__)
  const __m512i wide = reinterpret_cast<__m512i>(v);
  const __m256i half =
      _mm256_min_epi32(_mm512_castsi512_si256(wide), _mm512_extracti64x4_epi64(wide, 1));
#elif defined(__AVX2__)
  const __m256i half = reinterpret_cast<__m256i>(v);
#endif
  using Four [[gnu::vector_size(16)]] = std::int32_t;
#if defined(__AVX2__)
  Four f = reinterpret_cast<Four>(
      _mm_min_epi32(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1)));
#else
  Four f = v;
#endif
  Four turned = __builtin_shuffle(f, Four{2, 3, 0, 1});
  f = f < turned ? f : turned;
  turned = __builtin_shuffle(f, Four{1, 0, 3, 2});
  f = f < turned ? f : turned;
  return f[0];
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT

#endif
