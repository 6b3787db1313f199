#include "prim/kernels/shared/intrinsics.h"
#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Elements move as integers of their size, at any address.
using Unaligned32u = UnalignedElement<std::uint32_t>;

template <int kBytes>
struct ElementOf;
template <>
struct ElementOf<1> {
  using Type = std::uint8_t;
  using Unaligned = std::uint8_t;
};
template <>
struct ElementOf<2> {
  using Type = std::uint16_t;
  using Unaligned = Unaligned16u;
};
template <>
struct ElementOf<4> {
  using Type = std::uint32_t;
  using Unaligned = Unaligned32u;
};

// The functions of whole vectors start at the beginning of a row and return how many pixels they
// moved; none where there is nothing better than the plain loop.

// Below AVX2 the compiler takes twice the time of this for every third float, on SSE2 ten times.
#if !defined(VX_KERNEL_SCALAR) && !defined(__AVX2__)
inline std::ptrdiff_t gatherThirdFloats(const char* from, char* to, std::ptrdiff_t width) {
  const auto* in = reinterpret_cast<const float*>(from);
  auto* out = reinterpret_cast<float*>(to);
  std::ptrdiff_t x = 0;
  for (; x + 4 <= width; x += 4) {
    // Elements 0 to 3 and 6 to 9 of 12 hold two wanted ones each, at their ends.
    const __m128 a = _mm_loadu_ps(in + 3 * x);
    const __m128 b = _mm_loadu_ps(in + 3 * x + 6);
    _mm_storeu_ps(out + x, _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 0, 3, 0)));
  }
  return x;
}
#else
inline std::ptrdiff_t gatherThirdFloats(const char*, char*, std::ptrdiff_t) { return 0; }
#endif

// Other channels may belong to other threads at this moment, so a spread may not store them back.
// Masked stores of AVX-512 reach 3 to 8 times the rate of single stores; those of AVX2 exist for
// 32-bit elements only and take tens of operations on some processors.
#if defined(__AVX512BW__)
// Source pixel of every element of three stored vectors; only each third is stored.
template <int kBytes>
struct ThirdsSpread {
  // Single bytes cross no 128-bit lanes.
  static constexpr int kLanes = kBytes == 1 ? 16 : 64 / kBytes;
  typename ElementOf<kBytes>::Type pixel[3 * kLanes];
  std::uint32_t mask[3];

  constexpr ThirdsSpread() : pixel(), mask() {
    for (int i = 0; i < 3 * kLanes; ++i) {
      pixel[i] = static_cast<typename ElementOf<kBytes>::Type>(i / 3);
      if (i % 3 == 0) mask[i / kLanes] |= 1u << (i % kLanes);
    }
  }
};

template <int kBytes>
inline std::ptrdiff_t spreadThirds(const char* in, char* out, std::ptrdiff_t width) {
  static constexpr ThirdsSpread<kBytes> kSpread;
  constexpr int kLanes = kSpread.kLanes;
  std::ptrdiff_t x = 0;
  for (; x + kLanes <= width; x += kLanes, in += kLanes * kBytes, out += 3 * kLanes * kBytes)
    for (int k = 0; k < 3; ++k) {
      char* to = out + k * kLanes * kBytes;
      const auto* pixel = kSpread.pixel + k * kLanes;
      if constexpr (kBytes == 1) {
        const auto mask = static_cast<__mmask16>(kSpread.mask[k]);
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
        const __m128i at = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixel));
        _mm_mask_storeu_epi8(to, mask, _mm_shuffle_epi8(v, at));
      } else {
        const __m512i v = _mm512_loadu_si512(in);
        const __m512i at = _mm512_loadu_si512(pixel);
        if constexpr (kBytes == 2) {
          const auto mask = static_cast<__mmask32>(kSpread.mask[k]);
          _mm512_mask_storeu_epi16(to, mask, _mm512_maskz_permutexvar_epi16(mask, at, v));
        } else {
          const auto mask = static_cast<__mmask16>(kSpread.mask[k]);
          _mm512_mask_storeu_epi32(to, mask, _mm512_maskz_permutexvar_epi32(mask, at, v));
        }
      }
    }
  return x;
}

template <int kBytes>
inline std::ptrdiff_t spreadFourths(const char* in, char* out, std::ptrdiff_t width) {
  constexpr int kLanes = 16 / kBytes;
  // With a mask of all lanes, since g++ 12 warns of its own header without one.
  constexpr auto kAll = static_cast<std::conditional_t<kBytes == 1, __mmask16, __mmask8>>(-1);
  std::ptrdiff_t x = 0;
  for (; x + kLanes <= width; x += kLanes, in += 16, out += 64) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    if constexpr (kBytes == 1)
      _mm512_mask_storeu_epi8(out, 0x1111'1111'1111'1111u, _mm512_maskz_cvtepu8_epi32(kAll, v));
    else
      _mm512_mask_storeu_epi16(out, 0x1111'1111u, _mm512_maskz_cvtepu16_epi64(kAll, v));
  }
  return x;
}
#else
template <int kBytes>
inline std::ptrdiff_t spreadThirds(const char*, char*, std::ptrdiff_t) {
  return 0;
}
template <int kBytes>
inline std::ptrdiff_t spreadFourths(const char*, char*, std::ptrdiff_t) {
  return 0;
}
#endif

template <int kBytes, int kFrom>
void gatherRow(const char* from, char* to, std::ptrdiff_t width) {
  using Element = typename ElementOf<kBytes>::Unaligned;
  const auto* __restrict in = reinterpret_cast<const Element*>(from);
  auto* __restrict out = reinterpret_cast<Element*>(to);
  std::ptrdiff_t x = kBytes == 4 && kFrom == 3 ? gatherThirdFloats(from, to, width) : 0;
  for (; x < width; ++x) {
    // A structure assigned to a structure is not vectorised.
    const typename ElementOf<kBytes>::Type element = in[x * kFrom];
    out[x] = element;
  }
}

template <int kBytes, int kTo>
void spreadRow(const char* from, char* to, std::ptrdiff_t width) {
  using Element = typename ElementOf<kBytes>::Unaligned;
  const auto* __restrict in = reinterpret_cast<const Element*>(from);
  auto* __restrict out = reinterpret_cast<Element*>(to);
  std::ptrdiff_t x =
      kTo == 3 ? spreadThirds<kBytes>(from, to, width) : spreadFourths<kBytes>(from, to, width);
#pragma GCC unroll 8
  for (; x < width; ++x) {
    typename ElementOf<kBytes>::Type element = in[x];
    // Kept out of vectors: taking them apart again costs more than the loads.
    asm("" : "+r"(element));
    out[x * kTo] = element;
  }
}

// dst[x * kTo] = src[x * kFrom] over a rectangle, in elements of kBytes.
template <int kBytes, int kFrom, int kTo>
int copyChannel(const void* src, int srcStep, void* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, src, dst)) return status;
  for (int y = 0; y < height; ++y) {
    const char* in = row(static_cast<const char*>(src), srcStep, y);
    char* out = row(static_cast<char*>(dst), dstStep, y);
    if constexpr (kTo == 1)
      gatherRow<kBytes, kFrom>(in, out, width);
    else
      spreadRow<kBytes, kTo>(in, out, width);
  }
  return kStatusOk;
}

}  // namespace

int primCopy_8u_C3C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height) {
  return copyChannel<1, 3, 1>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_8u_C4C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height) {
  return copyChannel<1, 4, 1>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16s_C3C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height) {
  return copyChannel<2, 3, 1>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16u_C3C1R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height) {
  return copyChannel<2, 3, 1>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16s_C4C1R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height) {
  return copyChannel<2, 4, 1>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16u_C4C1R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height) {
  return copyChannel<2, 4, 1>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_32f_C3C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                       int height) {
  return copyChannel<4, 3, 1>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_8u_C1C3R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height) {
  return copyChannel<1, 1, 3>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_8u_C1C4R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height) {
  return copyChannel<1, 1, 4>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16s_C1C3R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height) {
  return copyChannel<2, 1, 3>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16u_C1C3R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height) {
  return copyChannel<2, 1, 3>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16s_C1C4R(const std::int16_t* src, int srcStep, std::int16_t* dst, int dstStep,
                       int width, int height) {
  return copyChannel<2, 1, 4>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_16u_C1C4R(const std::uint16_t* src, int srcStep, std::uint16_t* dst, int dstStep,
                       int width, int height) {
  return copyChannel<2, 1, 4>(src, srcStep, dst, dstStep, width, height);
}

int primCopy_32f_C1C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                       int height) {
  return copyChannel<4, 1, 3>(src, srcStep, dst, dstStep, width, height);
}

}  // namespace vx::prim::VX_VARIANT
