#pragma once

// The walks over rows that the element-wise kernels share. They check null pointers and sizes, in
// this order, and nothing else; a result element depends on the elements at its own place only.

#include "prim/kernels/shared/kernel.h"

// No iteration of the following loop depends on another one: an operand is the destination itself
// or does not overlap it. Spares the run-time overlap tests, which would also send the frequent
// "image with itself" to scalar code.
#ifdef __clang__
#define VX_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#else
#define VX_INDEPENDENT _Pragma("GCC ivdep")
#endif

namespace vx::prim::VX_VARIANT {
namespace {

template <class T>
using Element = std::conditional_t<sizeof(T) == 2, UnalignedElement<T>, T>;

template <class T>
[[maybe_unused]] inline Element<T>* elements(T* base, int step, int y) {
  return row(reinterpret_cast<Element<T>*>(base), step, y);
}
template <class T>
[[maybe_unused]] inline const Element<T>* elements(const T* base, int step, int y) {
  return row(reinterpret_cast<const Element<T>*>(base), step, y);
}

// dst = f(src), `channels` elements per pixel. src may be dst.
template <class S, class D, class F>
[[maybe_unused]] inline int mapRows(const S* src, int srcStep, D* dst, int dstStep, int width,
                                    int height, F f, int channels = 1) {
  if (const int status = checkImage(width, height, src, dst)) return status;
  const std::ptrdiff_t n = std::ptrdiff_t{width} * channels;
  for (int y = 0; y < height; ++y) {
    const Element<S>* in = elements(src, srcStep, y);
    Element<D>* out = elements(dst, dstStep, y);
    VX_INDEPENDENT
    for (std::ptrdiff_t x = 0; x < n; ++x) out[x] = f(in[x]);
  }
  return kStatusOk;
}

// dst = f(a, b), `channels` elements per pixel. Either operand may be dst.
template <class A, class B, class D, class F>
[[maybe_unused]] inline int mapRows(const A* a, int aStep, const B* b, int bStep, D* dst,
                                    int dstStep, int width, int height, F f, int channels = 1) {
  if (const int status = checkImage(width, height, a, b, dst)) return status;
  const std::ptrdiff_t n = std::ptrdiff_t{width} * channels;
  for (int y = 0; y < height; ++y) {
    const Element<A>* pa = elements(a, aStep, y);
    const Element<B>* pb = elements(b, bStep, y);
    Element<D>* out = elements(dst, dstStep, y);
    VX_INDEPENDENT
    for (std::ptrdiff_t x = 0; x < n; ++x) out[x] = f(pa[x], pb[x]);
  }
  return kStatusOk;
}

// srcDst = f(srcDst, v[channel]) on interleaved pixels of as many channels as there are values.
template <class T, int kChannels, class F>
[[maybe_unused]] inline int mapChannels(T* srcDst, int step, int width, int height,
                                        const T (&values)[kChannels], F f) {
  if (emptySize(width, height)) return kStatusBadSize;
  for (int y = 0; y < height; ++y) {
    Element<T>* p = elements(srcDst, step, y);
    for (int x = 0; x < width; ++x, p += kChannels)
      for (int c = 0; c < kChannels; ++c) p[c] = f(p[c], values[c]);
  }
  return kStatusOk;
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
