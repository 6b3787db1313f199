#pragma once

// The body's vector of floats under one set of names, for the kernels that the compiler does not
// vectorise: reductions in a fixed order, searches, interleaving.

#include "prim/kernels/shared/intrinsics.h"
#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// The scalar reference, in which no kernel uses what stands below.
#if defined(VX_KERNEL_SCALAR)
constexpr bool kGeneric = true;
#else
constexpr bool kGeneric = false;
#endif

// Functions:
//   loadPart     the first `count` elements, 1 to kFloats - 1, and `fill` in the lanes behind them;
//                no access beyond them
//   smaller      a < b ? a : b, so b where either is a NaN; larger likewise
//   equalMask    one bit for each lane where a == b
//   permute      lane i of the result from lane lanes[i]
//   blend        lanes of b where the mask has a bit, else of a
#if defined(__AVX512F__)

using Floats = __m512;
constexpr int kFloats = 16;

inline Floats setFloats(float v) { return _mm512_set1_ps(v); }
inline Floats loadFloats(const float* p) { return _mm512_loadu_ps(p); }
inline void storeFloats(float* p, Floats v) { _mm512_storeu_ps(p, v); }
inline Floats loadPart(const float* p, int count, Floats fill) {
  return _mm512_mask_loadu_ps(fill, static_cast<__mmask16>((1u << count) - 1), p);
}
inline Floats smaller(Floats a, Floats b) { return _mm512_min_ps(a, b); }
inline Floats larger(Floats a, Floats b) { return _mm512_max_ps(a, b); }
inline unsigned equalMask(Floats a, Floats b) { return _mm512_cmp_ps_mask(a, b, _CMP_EQ_OQ); }
inline Floats permute(Floats v, const int* lanes) {
  return _mm512_permutexvar_ps(_mm512_loadu_si512(lanes), v);
}
template <int kMask>
inline Floats blend(Floats a, Floats b) {
  return _mm512_mask_blend_ps(static_cast<__mmask16>(kMask), a, b);
}

#elif defined(__AVX2__)

using Floats = __m256;
constexpr int kFloats = 8;

inline Floats setFloats(float v) { return _mm256_set1_ps(v); }
inline Floats loadFloats(const float* p) { return _mm256_loadu_ps(p); }
inline void storeFloats(float* p, Floats v) { _mm256_storeu_ps(p, v); }
inline Floats loadPart(const float* p, int count, Floats fill) {
  const __m256i lane = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  const __m256i present = _mm256_cmpgt_epi32(_mm256_set1_epi32(count), lane);
  return _mm256_blendv_ps(fill, _mm256_maskload_ps(p, present), _mm256_castsi256_ps(present));
}
inline Floats smaller(Floats a, Floats b) { return _mm256_min_ps(a, b); }
inline Floats larger(Floats a, Floats b) { return _mm256_max_ps(a, b); }
inline unsigned equalMask(Floats a, Floats b) {
  return static_cast<unsigned>(_mm256_movemask_ps(_mm256_cmp_ps(a, b, _CMP_EQ_OQ)));
}
inline Floats permute(Floats v, const int* lanes) {
  return _mm256_permutevar8x32_ps(v, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(lanes)));
}
template <int kMask>
inline Floats blend(Floats a, Floats b) {
  return _mm256_blend_ps(a, b, kMask);
}

#else

using Floats = __m128;
constexpr int kFloats = 4;

inline Floats setFloats(float v) { return _mm_set1_ps(v); }
inline Floats loadFloats(const float* p) { return _mm_loadu_ps(p); }
inline void storeFloats(float* p, Floats v) { _mm_storeu_ps(p, v); }
inline Floats loadPart(const float* p, int count, Floats fill) {
  const Floats one = _mm_move_ss(fill, _mm_load_ss(p));
  if (count == 1) return one;
  const Floats two = _mm_loadl_pi(fill, reinterpret_cast<const __m64*>(p));
  if (count == 2) return two;
  return _mm_movelh_ps(two, _mm_move_ss(fill, _mm_load_ss(p + 2)));
}
inline Floats smaller(Floats a, Floats b) { return _mm_min_ps(a, b); }
inline Floats larger(Floats a, Floats b) { return _mm_max_ps(a, b); }
inline unsigned equalMask(Floats a, Floats b) {
  return static_cast<unsigned>(_mm_movemask_ps(_mm_cmpeq_ps(a, b)));
}

#endif

}  // namespace
}  // namespace vx::prim::VX_VARIANT
