#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Elements move as integers of their size, at any address.
using Unaligned32u [[gnu::aligned(1), gnu::may_alias]] = std::uint32_t;

template <int kBytes>
struct ElementOf;
template <>
struct ElementOf<1> {
  using Type = std::uint8_t;
};
template <>
struct ElementOf<2> {
  using Type = Unaligned16u;
};
template <>
struct ElementOf<4> {
  using Type = Unaligned32u;
};

// dst[x * kTo] = src[x * kFrom] over a rectangle, in elements of kBytes.
template <int kBytes, int kFrom, int kTo>
int copyChannel(const void* src, int srcStep, void* dst, int dstStep, int width, int height) {
  if (!src || !dst) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  using Element = typename ElementOf<kBytes>::Type;
  for (int y = 0; y < height; ++y) {
    const auto* __restrict in =
        reinterpret_cast<const Element*>(row(static_cast<const char*>(src), srcStep, y));
    auto* __restrict out = reinterpret_cast<Element*>(row(static_cast<char*>(dst), dstStep, y));
    for (std::ptrdiff_t x = 0; x < width; ++x) out[x * kTo] = in[x * kFrom];
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
