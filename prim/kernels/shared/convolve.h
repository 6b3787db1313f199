#pragma once

// The single-precision convolution that the row and column filters and the deconvolution share.

#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Columns that one pass over the rows takes: seven source rows and one output row of a strip are
// 16 KB, half of the first-level cache.
constexpr int kStripWidth = 512;

template <class T>
[[maybe_unused]] inline const T* byBytes(const T* base, std::ptrdiff_t bytes) {
  return reinterpret_cast<const T*>(reinterpret_cast<const char*>(base) + bytes);
}

// Adds N taps to out, or starts out with them; see convolveRow.
template <int N, bool Start>
[[maybe_unused]] inline void addTaps(const float* src, std::ptrdiff_t tapStep, const float* taps,
                                     std::ptrdiff_t tapOrder, float* __restrict out, int width) {
  float k[N];
  const float* in[N];
#pragma GCC unroll 8
  for (int t = 0; t < N; ++t) {
    k[t] = taps[tapOrder * t];
    in[t] = byBytes(src, tapStep * t);
  }
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    float sum = k[0] * in[0][x];
    if constexpr (!Start) sum = out[x] + sum;
#pragma GCC unroll 8
    for (int t = 1; t < N; ++t) sum += k[t] * in[t][x];
    out[x] = sum;
  }
}

template <bool Start>
[[maybe_unused]] inline void addTaps(int n, const float* src, std::ptrdiff_t tapStep,
                                     const float* taps, std::ptrdiff_t tapOrder, float* out,
                                     int width) {
  switch (n) {
    case 1:
      return addTaps<1, Start>(src, tapStep, taps, tapOrder, out, width);
    case 2:
      return addTaps<2, Start>(src, tapStep, taps, tapOrder, out, width);
    case 3:
      return addTaps<3, Start>(src, tapStep, taps, tapOrder, out, width);
    case 4:
      return addTaps<4, Start>(src, tapStep, taps, tapOrder, out, width);
    case 5:
      return addTaps<5, Start>(src, tapStep, taps, tapOrder, out, width);
    case 6:
      return addTaps<6, Start>(src, tapStep, taps, tapOrder, out, width);
    case 7:
      return addTaps<7, Start>(src, tapStep, taps, tapOrder, out, width);
    default:
      return addTaps<8, Start>(src, tapStep, taps, tapOrder, out, width);
  }
}

// out[x] = sum over t from 0 to length - 1 of taps[t * tapOrder] * src[x] moved by t * tapStep
// bytes, the first product alone and the others added to it in turn; with start false the first one
// is added to out[x]. Groups of eight taps at most go through out, which costs no rounding: the
// running sum is a float either way.
// Not inlined: the sixteen loops exist once per source.
[[maybe_unused, gnu::noinline]] void convolveRow(bool start, const float* src,
                                                 std::ptrdiff_t tapStep, const float* taps,
                                                 std::ptrdiff_t tapOrder, int length, float* out,
                                                 int width) {
  for (int t = 0; t < length; t += 8) {
    const int n = length - t < 8 ? length - t : 8;
    const float* in = byBytes(src, tapStep * t);
    if (start && t == 0) {
      addTaps<true>(n, in, tapStep, taps, tapOrder, out, width);
    } else {
      addTaps<false>(n, in, tapStep, taps + tapOrder * t, tapOrder, out, width);
    }
  }
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
