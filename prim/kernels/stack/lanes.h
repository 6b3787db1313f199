#pragma once

// Vectors of one, four, eight and sixteen floats under one set of names, for kernels that need
// several widths at once. What goes across lanes stays inside groups of four.

#include "prim/kernels/shared/intrinsics.h"
#include "prim/kernels/stack/dft.h"

namespace vx::prim::VX_VARIANT {
namespace {

// larger(a, b) is a > b ? a : b and so b where either is a NaN; smaller likewise.
// gather: group g from p + g * stride; scatter the other way.
// lowPairs: elements 0 and 1 of each group of a and b in turn; highPairs: 2 and 3.
// lowHalves: elements 0 and 1 of a, then of b; highHalves: 2 and 3.
struct Lanes1 {
  using V = float;
  static constexpr int kLanes = 1;
  static V load(const float* p) { return *p; }
  static void store(float* p, V v) { *p = v; }
  static V set(float v) { return v; }
  static V root(V v) { return __builtin_sqrtf(v); }
  static V larger(V a, V b) { return a > b ? a : b; }
  static V smaller(V a, V b) { return a < b ? a : b; }
  static V size(V v) { return __builtin_fabsf(v); }
};

#if !defined(VX_KERNEL_SCALAR)

#define VX_LANES [[maybe_unused, gnu::always_inline]] static inline

struct Lanes4 {
  using V = __m128;
  static constexpr int kLanes = 4;
  VX_LANES V load(const float* p) { return _mm_loadu_ps(p); }
  VX_LANES void store(float* p, V v) { _mm_storeu_ps(p, v); }
  VX_LANES V set(float v) { return _mm_set1_ps(v); }
  VX_LANES V root(V v) { return _mm_sqrt_ps(v); }
  VX_LANES V larger(V a, V b) { return _mm_max_ps(a, b); }
  VX_LANES V smaller(V a, V b) { return _mm_min_ps(a, b); }
  VX_LANES V size(V v) { return _mm_andnot_ps(set(-0.0f), v); }
  VX_LANES V gather(const float* p, int) { return load(p); }
  VX_LANES void scatter(float* p, int, V v) { store(p, v); }
  VX_LANES V lowPairs(V a, V b) { return _mm_unpacklo_ps(a, b); }
  VX_LANES V highPairs(V a, V b) { return _mm_unpackhi_ps(a, b); }
  VX_LANES V lowHalves(V a, V b) { return _mm_shuffle_ps(a, b, 0x44); }
  VX_LANES V highHalves(V a, V b) { return _mm_shuffle_ps(a, b, 0xEE); }
};

#if defined(__AVX2__)

struct Lanes8 {
  using V = __m256;
  static constexpr int kLanes = 8;
  VX_LANES V load(const float* p) { return _mm256_loadu_ps(p); }
  VX_LANES void store(float* p, V v) { _mm256_storeu_ps(p, v); }
  VX_LANES V set(float v) { return _mm256_set1_ps(v); }
  VX_LANES V root(V v) { return _mm256_sqrt_ps(v); }
  VX_LANES V larger(V a, V b) { return _mm256_max_ps(a, b); }
  VX_LANES V smaller(V a, V b) { return _mm256_min_ps(a, b); }
  VX_LANES V size(V v) { return _mm256_andnot_ps(set(-0.0f), v); }
  VX_LANES V gather(const float* p, int stride) { return _mm256_loadu2_m128(p + stride, p); }
  VX_LANES void scatter(float* p, int stride, V v) { _mm256_storeu2_m128(p + stride, p, v); }
  VX_LANES V lowPairs(V a, V b) { return _mm256_unpacklo_ps(a, b); }
  VX_LANES V highPairs(V a, V b) { return _mm256_unpackhi_ps(a, b); }
  VX_LANES V lowHalves(V a, V b) { return _mm256_shuffle_ps(a, b, 0x44); }
  VX_LANES V highHalves(V a, V b) { return _mm256_shuffle_ps(a, b, 0xEE); }
  VX_LANES V lowFours(V a, V b) { return _mm256_permute2f128_ps(a, b, 0x20); }
  VX_LANES V highFours(V a, V b) { return _mm256_permute2f128_ps(a, b, 0x31); }
  VX_LANES V withLast(V, V b) { return b; }
  VX_LANES V loadLast(const float* p) { return load(p); }
  VX_LANES void storeLast(float* p, V v) { store(p, v); }
};
#define VX_LANES8

#endif
#if defined(__AVX512F__)

struct Lanes16 {
  using V = __m512;
  static constexpr int kLanes = 16;
  VX_LANES V load(const float* p) { return _mm512_loadu_ps(p); }
  VX_LANES void store(float* p, V v) { _mm512_storeu_ps(p, v); }
  VX_LANES V set(float v) { return _mm512_set1_ps(v); }
  VX_LANES V root(V v) { return _mm512_sqrt_ps(v); }
  VX_LANES V larger(V a, V b) { return _mm512_max_ps(a, b); }
  VX_LANES V smaller(V a, V b) { return _mm512_min_ps(a, b); }
  VX_LANES V gather(const float* p, int stride) {
    const __m256 low = Lanes8::gather(p, stride);
    return _mm512_insertf32x8(_mm512_castps256_ps512(low), Lanes8::gather(p + 2 * stride, stride),
                              1);
  }
  VX_LANES void scatter(float* p, int stride, V v) {
    Lanes8::scatter(p, stride, _mm512_castps512_ps256(v));
    Lanes8::scatter(p + 2 * stride, stride, _mm512_extractf32x8_ps(v, 1));
  }
  VX_LANES V lowPairs(V a, V b) { return _mm512_unpacklo_ps(a, b); }
  VX_LANES V highPairs(V a, V b) { return _mm512_unpackhi_ps(a, b); }
  VX_LANES V lowHalves(V a, V b) { return _mm512_shuffle_ps(a, b, 0x44); }
  VX_LANES V highHalves(V a, V b) { return _mm512_shuffle_ps(a, b, 0xEE); }
  VX_LANES V lowFours(V a, V b) {
    const __m512i places =
        _mm512_setr_epi32(0, 1, 2, 3, 16, 17, 18, 19, 8, 9, 10, 11, 24, 25, 26, 27);
    return _mm512_permutex2var_ps(a, places, b);
  }
  VX_LANES V highFours(V a, V b) {
    const __m512i places =
        _mm512_setr_epi32(4, 5, 6, 7, 20, 21, 22, 23, 12, 13, 14, 15, 28, 29, 30, 31);
    return _mm512_permutex2var_ps(a, places, b);
  }
  VX_LANES V withLast(V a, V b) { return _mm512_mask_mov_ps(a, 0xFF00, b); }
  VX_LANES V loadLast(const float* p) { return _mm512_broadcast_f32x8(Lanes8::load(p)); }
  VX_LANES void storeLast(float* p, V v) { Lanes8::store(p, _mm512_extractf32x8_ps(v, 1)); }
};

#endif
#undef VX_LANES
#endif

// Lane i of columns[x] = element x of row i, rows of n elements one behind the other.
template <class L, int n>
VX_STACK void loadColumns(const float* rows, typename L::V* columns) {
  if constexpr (L::kLanes == 1) {
    unrolled<n>(VX_UNROLLED { columns[k] = rows[k]; });
  } else {
    unrolled<n / 4>(VX_UNROLLED {
      const float* p = rows + 4 * k;
      const auto a = L::gather(p, 4 * n), b = L::gather(p + n, 4 * n);
      const auto c = L::gather(p + 2 * n, 4 * n), d = L::gather(p + 3 * n, 4 * n);
      const auto ab = L::lowPairs(a, b), AB = L::highPairs(a, b);
      const auto cd = L::lowPairs(c, d), CD = L::highPairs(c, d);
      columns[4 * k] = L::lowHalves(ab, cd);
      columns[4 * k + 1] = L::highHalves(ab, cd);
      columns[4 * k + 2] = L::lowHalves(AB, CD);
      columns[4 * k + 3] = L::highHalves(AB, CD);
    });
  }
}

template <class L, int n>
VX_STACK void storeColumns(const typename L::V* columns, float* rows) {
  if constexpr (L::kLanes == 1) {
    unrolled<n>(VX_UNROLLED { rows[k] = columns[k]; });
  } else {
    unrolled<n / 4>(VX_UNROLLED {
      float* p = rows + 4 * k;
      const auto* v = columns + 4 * k;
      const auto ab = L::lowPairs(v[0], v[1]), AB = L::highPairs(v[0], v[1]);
      const auto cd = L::lowPairs(v[2], v[3]), CD = L::highPairs(v[2], v[3]);
      L::scatter(p, 4 * n, L::lowHalves(ab, cd));
      L::scatter(p + n, 4 * n, L::highHalves(ab, cd));
      L::scatter(p + 2 * n, 4 * n, L::lowHalves(AB, CD));
      L::scatter(p + 3 * n, 4 * n, L::highHalves(AB, CD));
    });
  }
}

#if defined(VX_LANES8)

// Exchanges rows and columns of 8 rows, in each group of 8 lanes.
template <class L>
VX_STACK void turnEights(typename L::V* v) {
  typename L::V pairs[8], fours[8];
  unrolled<4>(VX_UNROLLED {
    pairs[2 * k] = L::lowPairs(v[2 * k], v[2 * k + 1]);
    pairs[2 * k + 1] = L::highPairs(v[2 * k], v[2 * k + 1]);
  });
  unrolled<2>(VX_UNROLLED {
    fours[4 * k] = L::lowHalves(pairs[4 * k], pairs[4 * k + 2]);
    fours[4 * k + 1] = L::highHalves(pairs[4 * k], pairs[4 * k + 2]);
    fours[4 * k + 2] = L::lowHalves(pairs[4 * k + 1], pairs[4 * k + 3]);
    fours[4 * k + 3] = L::highHalves(pairs[4 * k + 1], pairs[4 * k + 3]);
  });
  unrolled<4>(VX_UNROLLED {
    v[k] = L::lowFours(fours[k], fours[k + 4]);
    v[k + 4] = L::highFours(fours[k], fours[k + 4]);
  });
}

#endif

}  // namespace
}  // namespace vx::prim::VX_VARIANT
