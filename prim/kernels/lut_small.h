#pragma once

// Curves of at most eight segments whose levels never fall, the only ones that the tone stages use:
// the segment by three comparisons, its polynomial out of registers. Element for element the same
// operations as evaluate(), so the same bits.

#include "prim/kernels/lut_table.h"
#include "prim/kernels/shared/intrinsics.h"

namespace vx::prim::VX_VARIANT {
namespace {

constexpr int kSmallSegments = 8;

// Whole vectors first, so that each is aligned.
struct alignas(64) SmallTable {
  double value[kSmallSegments];
  double level[kSmallSegments];
  double a[kSmallSegments];
  double b[kSmallSegments];
  double c[kSmallSegments];
  float levels[16];  // where each segment starts; infinity behind the last
  float end;         // where the last one ends
};

inline void fillSmall(SmallTable& t, const float* levels, const Segment* segments, int count) {
  t = {};
  for (int i = 0; i < 16; ++i) t.levels[i] = i < count ? levels[i] : __builtin_inff();
  t.end = levels[count];
  for (int i = 0; i < count; ++i) {
    t.value[i] = segments[i].value;
    t.level[i] = segments[i].level;
    t.a[i] = segments[i].a;
    t.b[i] = segments[i].b;
    t.c[i] = segments[i].c;
  }
}

#if defined(__AVX512F__)

struct SmallRegisters {
  __m512 levels;
  __m512d value, level, a, b, c;
};

template <bool kCubic>
inline __m256 evaluate8(const SmallRegisters& r, __m256 x, __m256i segment) {
  const __m512i i = _mm512_cvtepi32_epi64(segment);
  const __m512d u = _mm512_cvtps_pd(x) - _mm512_permutexvar_pd(i, r.level);
  const __m512d value = _mm512_permutexvar_pd(i, r.value);
  const __m512d c = _mm512_permutexvar_pd(i, r.c);
  if constexpr (!kCubic) return _mm512_cvtpd_ps(value + u * c);
  const __m512d a = _mm512_permutexvar_pd(i, r.a);
  const __m512d b = _mm512_permutexvar_pd(i, r.b);
  return _mm512_cvtpd_ps(value + c * u + b * u * u + a * u * u * u);
}

template <bool kCubic>
inline __m512 lookUp16(const SmallRegisters& r, __m512 first, __m512 fifth, __m512 end, __m512 x) {
  const __m512i one = _mm512_set1_epi32(1);
  const __m512i two = _mm512_set1_epi32(2);
  __m512i i = _mm512_maskz_set1_epi32(_mm512_cmp_ps_mask(fifth, x, _CMP_LE_OQ), 4);
  __m512 probe = _mm512_permutexvar_ps(_mm512_or_epi32(i, two), r.levels);
  i = _mm512_mask_or_epi32(i, _mm512_cmp_ps_mask(probe, x, _CMP_LE_OQ), i, two);
  probe = _mm512_permutexvar_ps(_mm512_or_epi32(i, one), r.levels);
  i = _mm512_mask_or_epi32(i, _mm512_cmp_ps_mask(probe, x, _CMP_LE_OQ), i, one);
  const __mmask16 inside =
      _mm512_mask_cmp_ps_mask(_mm512_cmp_ps_mask(first, x, _CMP_LE_OQ), x, end, _CMP_LT_OQ);
  const __m256 low = evaluate8<kCubic>(r, _mm512_castps512_ps256(x), _mm512_castsi512_si256(i));
  const __m256 high =
      evaluate8<kCubic>(r, _mm512_extractf32x8_ps(x, 1), _mm512_extracti32x8_epi32(i, 1));
  const __m512 out = _mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1);
  return _mm512_mask_mov_ps(x, inside, out);
}

template <bool kCubic>
inline void lookUpSmall(const SmallTable& t, float* p, int width) {
  const SmallRegisters r = {_mm512_load_ps(t.levels), _mm512_load_pd(t.value),
                            _mm512_load_pd(t.level),  _mm512_load_pd(t.a),
                            _mm512_load_pd(t.b),      _mm512_load_pd(t.c)};
  const __m512 first = _mm512_set1_ps(t.levels[0]);
  const __m512 fifth = _mm512_set1_ps(t.levels[4]);
  const __m512 end = _mm512_set1_ps(t.end);
  std::ptrdiff_t at = 0;
  for (; at + 16 <= width; at += 16)
    _mm512_storeu_ps(p + at, lookUp16<kCubic>(r, first, fifth, end, _mm512_loadu_ps(p + at)));
  if (at == width) return;
  const auto present = static_cast<__mmask16>((1u << (width - at)) - 1);
  const __m512 x = _mm512_maskz_loadu_ps(present, p + at);
  _mm512_mask_storeu_ps(p + at, present, lookUp16<kCubic>(r, first, fifth, end, x));
}

#elif defined(__AVX2__)

// Eight doubles as their low and high words, each in a register that vpermps can look up.
struct SplitDoubles {
  __m256 low, high;
};

inline SplitDoubles split(const double* v) {
  const __m256 v0 = _mm256_castpd_ps(_mm256_load_pd(v));
  const __m256 v1 = _mm256_castpd_ps(_mm256_load_pd(v + 4));
  const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
  return {_mm256_permutevar8x32_ps(_mm256_shuffle_ps(v0, v1, 0x88), order),
          _mm256_permutevar8x32_ps(_mm256_shuffle_ps(v0, v1, 0xDD), order)};
}

struct SmallRegisters {
  __m256 levels;
  SplitDoubles value, level, a, b, c;
};

// `i` in the order 0 1 4 5 2 3 6 7, which the unpacking brings back to 0 to 7.
inline void pick(const SplitDoubles& table, __m256i i, __m256d& v0, __m256d& v1) {
  const __m256 low = _mm256_permutevar8x32_ps(table.low, i);
  const __m256 high = _mm256_permutevar8x32_ps(table.high, i);
  v0 = _mm256_castps_pd(_mm256_unpacklo_ps(low, high));
  v1 = _mm256_castps_pd(_mm256_unpackhi_ps(low, high));
}

template <bool kCubic>
inline __m128 evaluate4(__m128 x, __m256d value, __m256d level, __m256d a, __m256d b, __m256d c) {
  const __m256d u = _mm256_cvtps_pd(x) - level;
  if constexpr (!kCubic) return _mm256_cvtpd_ps(value + u * c);
  return _mm256_cvtpd_ps(value + c * u + b * u * u + a * u * u * u);
}

template <bool kCubic>
inline __m256 lookUp8(const SmallRegisters& r, __m256 first, __m256 fifth, __m256 end, __m256 x) {
  const __m256i one = _mm256_set1_epi32(1);
  const __m256i two = _mm256_set1_epi32(2);
  const __m256i four = _mm256_set1_epi32(4);
  const auto atMost = [&](__m256 level, __m256i bit) {
    return _mm256_and_si256(_mm256_castps_si256(_mm256_cmp_ps(level, x, _CMP_LE_OQ)), bit);
  };
  __m256i i = atMost(fifth, four);
  i = _mm256_or_si256(i, atMost(_mm256_permutevar8x32_ps(r.levels, _mm256_or_si256(i, two)), two));
  i = _mm256_or_si256(i, atMost(_mm256_permutevar8x32_ps(r.levels, _mm256_or_si256(i, one)), one));
  const __m256 inside =
      _mm256_and_ps(_mm256_cmp_ps(first, x, _CMP_LE_OQ), _mm256_cmp_ps(x, end, _CMP_LT_OQ));
  const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
  i = _mm256_permutevar8x32_epi32(i, order);
  __m256d value0, value1, level0, level1, c0, c1;
  __m256d a0 = _mm256_setzero_pd(), a1 = a0, b0 = a0, b1 = a0;
  pick(r.value, i, value0, value1);
  pick(r.level, i, level0, level1);
  pick(r.c, i, c0, c1);
  if constexpr (kCubic) {
    pick(r.a, i, a0, a1);
    pick(r.b, i, b0, b1);
  }
  const __m128 out0 = evaluate4<kCubic>(_mm256_castps256_ps128(x), value0, level0, a0, b0, c0);
  const __m128 out1 = evaluate4<kCubic>(_mm256_extractf128_ps(x, 1), value1, level1, a1, b1, c1);
  return _mm256_blendv_ps(x, _mm256_set_m128(out1, out0), inside);
}

template <bool kCubic>
inline void lookUpSmall(const SmallTable& t, float* p, int width) {
  const SmallRegisters r = {
      _mm256_load_ps(t.levels), split(t.value), split(t.level), split(t.a), split(t.b), split(t.c)};
  const __m256 first = _mm256_set1_ps(t.levels[0]);
  const __m256 fifth = _mm256_set1_ps(t.levels[4]);
  const __m256 end = _mm256_set1_ps(t.end);
  std::ptrdiff_t at = 0;
  for (; at + 8 <= width; at += 8)
    _mm256_storeu_ps(p + at, lookUp8<kCubic>(r, first, fifth, end, _mm256_loadu_ps(p + at)));
  if (at == width) return;
  const __m256i position = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  const __m256i present =
      _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(width - at)), position);
  const __m256 x = _mm256_maskload_ps(p + at, present);
  _mm256_maskstore_ps(p + at, present, lookUp8<kCubic>(r, first, fifth, end, x));
}

#else

template <bool kCubic>
inline void lookUpSmall(const SmallTable& t, float* p, int width) {
  constexpr int kStrip = 256;
  int segments[kStrip];
  for (std::ptrdiff_t at = 0; at < width; at += kStrip) {
    float* strip = p + at;
    const int count = width - at < kStrip ? static_cast<int>(width - at) : kStrip;
    for (int x = 0; x < count; ++x) {
      int started = -1;
      for (int i = 0; i < kSmallSegments; ++i) started += t.levels[i] <= strip[x] ? 1 : 0;
      segments[x] = strip[x] < t.end ? started : -1;
    }
    for (int x = 0; x < count; ++x) {
      const int i = segments[x];
      if (i < 0) continue;
      strip[x] = evaluate<kCubic>({t.value[i], t.level[i], t.a[i], t.b[i], t.c[i]}, strip[x]);
    }
  }
}

#endif

}  // namespace
}  // namespace vx::prim::VX_VARIANT
