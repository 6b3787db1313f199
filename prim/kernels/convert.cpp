#include "prim/kernels/shared/floats.h"
#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
namespace {

// v within +-65535.
template <int kMode>
inline int roundTo(float v) {
  if constexpr (kMode == primRndNear) {
    return roundHalfEven(v);
  } else {
    const int whole = static_cast<int>(v);
    if constexpr (kMode == primRndZero) return whole;
    const float rest = v - static_cast<float>(whole);  // exact
    return whole + (rest >= 0.5f ? 1 : 0) - (rest <= -0.5f ? 1 : 0);
  }
}

// narrowVectors converts whole vectors from the start of a row and returns how many elements it
// did. The compiler narrows through masks and permutations instead of the saturating packs, at a
// half to a third of the speed; with the narrowing moves of AVX-512 it needs no help.
#if !defined(VX_KERNEL_SCALAR) && !defined(__AVX512BW__)
#if defined(__AVX2__)
using Ints = __m256i;

inline Floats zeroForNan(Floats v) { return _mm256_and_ps(v, _mm256_cmp_ps(v, v, _CMP_ORD_Q)); }
inline Ints nearest(Floats v) { return _mm256_cvtps_epi32(v); }
inline Ints truncated(Floats v) { return _mm256_cvttps_epi32(v); }
// Packs work within the halves of a register; the permutations put the quarters back in order.
inline Ints packWords(std::int16_t, Ints a, Ints b) {
  return _mm256_permute4x64_epi64(_mm256_packs_epi32(a, b), _MM_SHUFFLE(3, 1, 2, 0));
}
inline Ints packWords(std::uint16_t, Ints a, Ints b) {
  return _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), _MM_SHUFFLE(3, 1, 2, 0));
}
inline Ints packBytes(Ints a, Ints b, Ints c, Ints d) {
  const Ints bytes = _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d));
  return _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}
inline void store(void* p, Ints v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }
#else
using Ints = __m128i;

inline Floats zeroForNan(Floats v) { return _mm_and_ps(v, _mm_cmpord_ps(v, v)); }
inline Ints nearest(Floats v) { return _mm_cvtps_epi32(v); }
inline Ints truncated(Floats v) { return _mm_cvttps_epi32(v); }
inline Ints packWords(std::int16_t, Ints a, Ints b) { return _mm_packs_epi32(a, b); }
inline Ints packWords(std::uint16_t, Ints a, Ints b) {
#if defined(__SSE4_1__)
  return _mm_packus_epi32(a, b);
#else
  // The signed pack, in a range moved down by half.
  const Ints half = _mm_set1_epi32(32768);
  const Ints words = _mm_packs_epi32(_mm_sub_epi32(a, half), _mm_sub_epi32(b, half));
  return _mm_xor_si128(words, _mm_set1_epi16(-32768));
#endif
}
inline Ints packBytes(Ints a, Ints b, Ints c, Ints d) {
  return _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
}
inline void store(void* p, Ints v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
#endif

// The packs saturate; the conversion of too large a number to an integer does not. larger and
// smaller give their second operand if one is NaN. To bytes, NaN may pass: it becomes INT_MIN.
template <class T, int kMode>
inline Ints toInts(const float* in) {
  const Floats top = setFloats(static_cast<float>(kTop<T>));
  Floats v = loadFloats(in);
  if constexpr (sizeof(T) == 1)
    v = smaller(top, v);
  else if constexpr (std::is_signed_v<T>)
    v = smaller(zeroForNan(v), top);
  else
    v = smaller(larger(v, setFloats(0.0f)), top);
  return kMode == primRndZero ? truncated(v) : nearest(v);
}

template <class T, int kMode>
inline std::ptrdiff_t narrowVectors(const float* in, void* to, std::ptrdiff_t count) {
  constexpr std::ptrdiff_t kInts = sizeof(Ints) / 4;
  constexpr std::ptrdiff_t kElements = sizeof(Ints) / sizeof(T);
  auto* out = static_cast<char*>(to);
  std::ptrdiff_t x = 0;
#pragma GCC unroll 2
  for (; x + kElements <= count; x += kElements, in += kElements, out += sizeof(Ints)) {
    const Ints a = toInts<T, kMode>(in);
    const Ints b = toInts<T, kMode>(in + kInts);
    if constexpr (sizeof(T) == 1)
      store(out,
            packBytes(a, b, toInts<T, kMode>(in + 2 * kInts), toInts<T, kMode>(in + 3 * kInts)));
    else
      store(out, packWords(T{}, a, b));
  }
  return x;
}
#else
template <class T, int kMode>
inline std::ptrdiff_t narrowVectors(const float*, void*, std::ptrdiff_t) {
  return 0;
}
#endif

template <class T, int kMode>
void narrowRow(const float* __restrict in, void* to, std::ptrdiff_t count) {
  auto* __restrict out = static_cast<Element<T>*>(to);
  std::ptrdiff_t x = 0;
  if constexpr (kMode != primRndFinancial) x = narrowVectors<T, kMode>(in, to, count);
  const float bottom = opaque(static_cast<float>(kBottom<T>));
  const float top = opaque(static_cast<float>(kTop<T>));
  for (; x < count; ++x) {
    const float v = in[x] == in[x] ? in[x] : 0.0f;
    const float low = v > bottom ? v : bottom;
    out[x] = static_cast<T>(roundTo<kMode>(low < top ? low : top));
  }
}

// As narrowVectors. The compiler loads a whole register of integers first and pays for taking it
// apart: 1.5 times the time for bytes.
#if defined(__AVX2__) && !defined(__AVX512BW__)
template <class T>
inline std::ptrdiff_t widenVectors(const void* from, float* out, std::ptrdiff_t count) {
  const auto* in = static_cast<const char*>(from);
  std::ptrdiff_t x = 0;
#pragma GCC unroll 2
  for (; x + 8 <= count; x += 8, in += 8 * sizeof(T), out += 8) {
    const auto* p = reinterpret_cast<const __m128i*>(in);
    const __m256i v = sizeof(T) == 1 ? _mm256_cvtepu8_epi32(_mm_loadl_epi64(p))
                                     : _mm256_cvtepu16_epi32(_mm_loadu_si128(p));
    _mm256_storeu_ps(out, _mm256_cvtepi32_ps(v));
  }
  return x;
}
#else
template <class T>
inline std::ptrdiff_t widenVectors(const void*, float*, std::ptrdiff_t) {
  return 0;
}
#endif

template <class T>
void widenRow(const void* from, float* __restrict out, std::ptrdiff_t count) {
  const auto* __restrict in = static_cast<const Element<T>*>(from);
  std::ptrdiff_t x = widenVectors<T>(from, out, count);
  for (; x < count; ++x) out[x] = static_cast<float>(in[x]);
}

// Calls convertRow(in, out, elements) for every row, once for an image without gaps.
template <int kChannels, class In, class Out, class ConvertRow>
int convertRows(const In* src, int srcStep, Out* dst, int dstStep, int width, int height,
                ConvertRow convertRow) {
  if (const int status = checkImage(width, height, src, dst)) return status;
  if (srcStep < 1 || dstStep < 1) return kStatusBadStep;
  std::ptrdiff_t count = std::ptrdiff_t{width} * kChannels;
  if (srcStep == count * std::ptrdiff_t{sizeof(In)} &&
      dstStep == count * std::ptrdiff_t{sizeof(Out)}) {
    count *= height;
    height = 1;
  }
  for (int y = 0; y < height; ++y) convertRow(row(src, srcStep, y), row(dst, dstStep, y), count);
  return kStatusOk;
}

template <int kChannels, class T>
int narrow(const float* src, int srcStep, T* dst, int dstStep, int width, int height,
           int roundMode) {
  const auto convertRow = roundMode == primRndZero   ? narrowRow<T, primRndZero>
                          : roundMode == primRndNear ? narrowRow<T, primRndNear>
                                                     : narrowRow<T, primRndFinancial>;
  return convertRows<kChannels>(src, srcStep, dst, dstStep, width, height, convertRow);
}

template <int kChannels, class T>
int widen(const T* src, int srcStep, float* dst, int dstStep, int width, int height) {
  return convertRows<kChannels>(src, srcStep, dst, dstStep, width, height, widenRow<T>);
}

}  // namespace

int primConvert_8u32f_C1R(const std::uint8_t* src, int srcStep, float* dst, int dstStep, int width,
                          int height) {
  return widen<1>(src, srcStep, dst, dstStep, width, height);
}

int primConvert_8u32f_C3R(const std::uint8_t* src, int srcStep, float* dst, int dstStep, int width,
                          int height) {
  return widen<3>(src, srcStep, dst, dstStep, width, height);
}

int primConvert_16u32f_C1R(const std::uint16_t* src, int srcStep, float* dst, int dstStep,
                           int width, int height) {
  return widen<1>(src, srcStep, dst, dstStep, width, height);
}

int primConvert_16u32f_C3R(const std::uint16_t* src, int srcStep, float* dst, int dstStep,
                           int width, int height) {
  return widen<3>(src, srcStep, dst, dstStep, width, height);
}

int primConvert_32f8u_C1R(const float* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                          int height, int roundMode) {
  return narrow<1>(src, srcStep, dst, dstStep, width, height, roundMode);
}

int primConvert_32f8u_C3R(const float* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
                          int height, int roundMode) {
  return narrow<3>(src, srcStep, dst, dstStep, width, height, roundMode);
}

int primConvert_32f16u_C1R(const float* src, int srcStep, std::uint16_t* dst, int dstStep,
                           int width, int height, int roundMode) {
  return narrow<1>(src, srcStep, dst, dstStep, width, height, roundMode);
}

int primConvert_32f16u_C3R(const float* src, int srcStep, std::uint16_t* dst, int dstStep,
                           int width, int height, int roundMode) {
  return narrow<3>(src, srcStep, dst, dstStep, width, height, roundMode);
}

int primConvert_32f16s_C1R(const float* src, int srcStep, std::int16_t* dst, int dstStep, int width,
                           int height, int roundMode) {
  return narrow<1>(src, srcStep, dst, dstStep, width, height, roundMode);
}

}  // namespace vx::prim::VX_VARIANT
