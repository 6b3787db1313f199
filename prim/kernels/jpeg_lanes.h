#pragma once

// Vectors of 16-bit lanes in groups of 128 bits, one group to a block: the same code serves all
// widths. Interleaving and packing stay inside the groups.

#include "prim/kernels/shared/intrinsics.h"
#include "prim/kernels/shared/kernel.h"

#if !defined(VX_KERNEL_SCALAR)

#define VX_LANES [[maybe_unused, gnu::always_inline]] static inline

// What every width has under one name: mm is the prefix of its instructions.
#define VX_LANE_OPERATIONS(mm)                                             \
  VX_LANES V set(int v) { return mm##_set1_epi16(static_cast<short>(v)); } \
  VX_LANES V set32(int v) { return mm##_set1_epi32(v); }                   \
  VX_LANES V add(V a, V b) { return mm##_add_epi16(a, b); }                \
  VX_LANES V sub(V a, V b) { return mm##_sub_epi16(a, b); }                \
  VX_LANES V addSat(V a, V b) { return mm##_adds_epi16(a, b); }            \
  VX_LANES V subSatU(V a, V b) { return mm##_subs_epu16(a, b); }           \
  VX_LANES V least(V a, V b) { return mm##_min_epi16(a, b); }              \
  VX_LANES V mulLow(V a, V b) { return mm##_mullo_epi16(a, b); }           \
  VX_LANES V mulHigh(V a, V b) { return mm##_mulhi_epi16(a, b); }          \
  VX_LANES V mulHighU(V a, V b) { return mm##_mulhi_epu16(a, b); }         \
  VX_LANES V madd(V a, V b) { return mm##_madd_epi16(a, b); }              \
  VX_LANES V add32(V a, V b) { return mm##_add_epi32(a, b); }              \
  VX_LANES V sub32(V a, V b) { return mm##_sub_epi32(a, b); }              \
  VX_LANES V pack32(V a, V b) { return mm##_packs_epi32(a, b); }           \
  VX_LANES V packU(V a, V b) { return mm##_packus_epi16(a, b); }           \
  VX_LANES V low8(V a, V b) { return mm##_unpacklo_epi8(a, b); }           \
  VX_LANES V high8(V a, V b) { return mm##_unpackhi_epi8(a, b); }          \
  VX_LANES V low16(V a, V b) { return mm##_unpacklo_epi16(a, b); }         \
  VX_LANES V high16(V a, V b) { return mm##_unpackhi_epi16(a, b); }        \
  VX_LANES V low32(V a, V b) { return mm##_unpacklo_epi32(a, b); }         \
  VX_LANES V high32(V a, V b) { return mm##_unpackhi_epi32(a, b); }        \
  VX_LANES V low64(V a, V b) { return mm##_unpacklo_epi64(a, b); }         \
  VX_LANES V high64(V a, V b) { return mm##_unpackhi_epi64(a, b); }        \
  VX_LANES V average8(V a, V b) { return mm##_avg_epu8(a, b); }            \
  VX_LANES V sub8(V a, V b) { return mm##_sub_epi8(a, b); }                \
  VX_LANES V bitAnd(V a, V b) { return a & b; }                            \
  VX_LANES V bitXor(V a, V b) { return a ^ b; }                            \
  template <int n>                                                         \
  VX_LANES V shiftLeft(V a) {                                              \
    return mm##_slli_epi16(a, n);                                          \
  }                                                                        \
  template <int n>                                                         \
  VX_LANES V shiftRight(V a) {                                             \
    return mm##_srai_epi16(a, n);                                          \
  }                                                                        \
  template <int n>                                                         \
  VX_LANES V shift32(V a) {                                                \
    return mm##_srai_epi32(a, n);                                          \
  }

namespace vx::prim::VX_VARIANT {
namespace {

struct Lanes128 {
  using V = __m128i;
  static constexpr int kGroups = 1;
  VX_LANES V load(const void* p) { return _mm_loadu_si128(static_cast<const V*>(p)); }
  VX_LANES void store(void* p, V a) { _mm_storeu_si128(static_cast<V*>(p), a); }
  VX_LANE_OPERATIONS(_mm)
#if defined(__SSSE3__)
  VX_LANES V absolute(V a) { return _mm_abs_epi16(a); }
  VX_LANES V withSign(V magnitude, V a) { return _mm_sign_epi16(magnitude, a); }
#else
  VX_LANES V absolute(V a) { return withSign(a, a); }
  VX_LANES V withSign(V magnitude, V a) {
    const V sign = _mm_srai_epi16(a, 15);
    return sub(bitXor(magnitude, sign), sign);
  }
#endif
  /// The same constant of a block in every group.
  VX_LANES V broadcast(const void* p) { return load(p); }
  /// One vector from each of neighbouring blocks, `stride` bytes apart.
  VX_LANES V gather(const void* p, std::ptrdiff_t) { return load(p); }
  VX_LANES void scatter(void* p, std::ptrdiff_t, V a) { store(p, a); }
  /// Eight bytes of each block as words.
  VX_LANES V widen(const std::uint8_t* p) {
    return low8(_mm_loadl_epi64(reinterpret_cast<const V*>(p)), _mm_setzero_si128());
  }
  /// The lanes of a, saturated to bytes, to one row, those of b to another.
  VX_LANES void storeTwoRows(std::uint8_t* first, std::uint8_t* second, V a, V b) {
    const V rows = packU(a, b);
    _mm_storel_epi64(reinterpret_cast<V*>(first), rows);
    _mm_storel_epi64(reinterpret_cast<V*>(second), high64(rows, rows));
  }
  /// a and b group by group, one after the other.
  VX_LANES void storeZipped(std::uint8_t* p, V a, V b) {
    store(p, a);
    store(p + 16, b);
  }
};

#if defined(__AVX2__)
struct Lanes256 {
  using V = __m256i;
  static constexpr int kGroups = 2;
  VX_LANES V load(const void* p) { return _mm256_loadu_si256(static_cast<const V*>(p)); }
  VX_LANES void store(void* p, V a) { _mm256_storeu_si256(static_cast<V*>(p), a); }
  VX_LANE_OPERATIONS(_mm256)
  VX_LANES V absolute(V a) { return _mm256_abs_epi16(a); }
  VX_LANES V withSign(V magnitude, V a) { return _mm256_sign_epi16(magnitude, a); }
  VX_LANES V broadcast(const void* p) { return _mm256_broadcastsi128_si256(Lanes128::load(p)); }
  VX_LANES V gather(const void* p, std::ptrdiff_t stride) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(Lanes128::load(p)),
                                   Lanes128::load(static_cast<const char*>(p) + stride), 1);
  }
  VX_LANES void scatter(void* p, std::ptrdiff_t stride, V a) {
    Lanes128::store(p, _mm256_castsi256_si128(a));
    Lanes128::store(static_cast<char*>(p) + stride, _mm256_extracti128_si256(a, 1));
  }
  VX_LANES V widen(const std::uint8_t* p) { return _mm256_cvtepu8_epi16(Lanes128::load(p)); }
  VX_LANES void storeTwoRows(std::uint8_t* first, std::uint8_t* second, V a, V b) {
    const V rows = _mm256_permute4x64_epi64(packU(a, b), 0xd8);
    Lanes128::store(first, _mm256_castsi256_si128(rows));
    Lanes128::store(second, _mm256_extracti128_si256(rows, 1));
  }
  VX_LANES void storeZipped(std::uint8_t* p, V a, V b) {
    store(p, _mm256_permute2x128_si256(a, b, 0x20));
    store(p + 32, _mm256_permute2x128_si256(a, b, 0x31));
  }
};
#endif

#if defined(__AVX512BW__)
struct Lanes512 {
  using V = __m512i;
  static constexpr int kGroups = 4;
  VX_LANES V load(const void* p) { return _mm512_loadu_si512(p); }
  VX_LANES void store(void* p, V a) { _mm512_storeu_si512(p, a); }
  VX_LANE_OPERATIONS(_mm512)
  VX_LANES V absolute(V a) { return _mm512_abs_epi16(a); }
  VX_LANES V withSign(V magnitude, V a) {
    return _mm512_mask_sub_epi16(magnitude, _mm512_movepi16_mask(a), _mm512_setzero_si512(),
                                 magnitude);
  }
  VX_LANES V broadcast(const void* p) { return _mm512_broadcast_i32x4(Lanes128::load(p)); }
  VX_LANES V gather(const void* p, std::ptrdiff_t stride) {
    const char* bytes = static_cast<const char*>(p);
    return _mm512_inserti64x4(_mm512_castsi256_si512(Lanes256::gather(bytes, stride)),
                              Lanes256::gather(bytes + 2 * stride, stride), 1);
  }
  VX_LANES void scatter(void* p, std::ptrdiff_t stride, V a) {
    char* bytes = static_cast<char*>(p);
    Lanes256::scatter(bytes, stride, _mm512_castsi512_si256(a));
    Lanes256::scatter(bytes + 2 * stride, stride, _mm512_extracti64x4_epi64(a, 1));
  }
  VX_LANES V widen(const std::uint8_t* p) { return _mm512_cvtepu8_epi16(Lanes256::load(p)); }
  VX_LANES void storeTwoRows(std::uint8_t* first, std::uint8_t* second, V a, V b) {
    const V order = _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0);
    const V rows = _mm512_permutexvar_epi64(order, packU(a, b));
    Lanes256::store(first, _mm512_castsi512_si256(rows));
    Lanes256::store(second, _mm512_extracti64x4_epi64(rows, 1));
  }
  VX_LANES void storeZipped(std::uint8_t* p, V a, V b) {
    store(p, _mm512_permutex2var_epi64(a, _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0), b));
    store(p + 64, _mm512_permutex2var_epi64(a, _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4), b));
  }
};
#endif

// The widest vectors of the body.
#if defined(__AVX512BW__)
using WideLanes = Lanes512;
#elif defined(__AVX2__)
using WideLanes = Lanes256;
#else
using WideLanes = Lanes128;
#endif

}  // namespace
}  // namespace vx::prim::VX_VARIANT

#undef VX_LANE_OPERATIONS
#undef VX_LANES
#endif
