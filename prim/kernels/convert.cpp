#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// The element at any address.
template <class T>
struct AnyAddress;
template <>
struct AnyAddress<std::uint8_t> {
  using Type = std::uint8_t;
  static constexpr float kBottom = 0.0f, kTop = 255.0f;
};
template <>
struct AnyAddress<std::uint16_t> {
  using Type = Unaligned16u;
  static constexpr float kBottom = 0.0f, kTop = 65535.0f;
};
template <>
struct AnyAddress<std::int16_t> {
  using Type = Unaligned16s;
  static constexpr float kBottom = -32768.0f, kTop = 32767.0f;
};

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

// in: floats, out: elements of T
template <class T, int kMode>
void narrowRow(const float* __restrict in, void* to, std::ptrdiff_t count) {
  auto* __restrict out = static_cast<typename AnyAddress<T>::Type*>(to);
  const float bottom = opaque(AnyAddress<T>::kBottom);
  const float top = opaque(AnyAddress<T>::kTop);
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    const float v = in[x] == in[x] ? in[x] : 0.0f;
    const float low = v > bottom ? v : bottom;
    out[x] = static_cast<T>(roundTo<kMode>(low < top ? low : top));
  }
}

template <class T>
void widenRow(const void* from, float* __restrict out, std::ptrdiff_t count) {
  const auto* __restrict in = static_cast<const typename AnyAddress<T>::Type*>(from);
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = static_cast<float>(in[x]);
}

// Calls convertRow(in, out, elements) for every row, once for an image without gaps.
template <int kChannels, class In, class Out, class ConvertRow>
int convertRows(const In* src, int srcStep, Out* dst, int dstStep, int width, int height,
                ConvertRow convertRow) {
  if (!src || !dst) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
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
