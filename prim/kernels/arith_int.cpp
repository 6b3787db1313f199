#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Larger shifts up leave only the sign.
template <class T>
constexpr int kMaxUp = 8 * sizeof(T) - 1;

// r / 2^s, s from 1 to 16, rounded to nearest with ties to even.
constexpr int scaleDown(int r, int s) { return (r - 1 + (1 << (s - 1)) + ((r >> s) & 1)) >> s; }

// Calls run with the function from the exact result of an operation, at most 17 bits, to the scaled
// element, for any factor but 0. `maxDown`: the largest one that does not make everything 0.
template <class T, class Run>
int withScale(int scaleFactor, int maxDown, Run run) {
  if (scaleFactor > maxDown) return run([](int) { return T{0}; });
  if (scaleFactor == 1) return run([](int r) { return saturated<T>(scaleDown(r, 1)); });
  if (scaleFactor > 0)
    return run([scaleFactor](int r) { return saturated<T>(scaleDown(r, scaleFactor)); });
  if (scaleFactor >= -kMaxUp<T>) {
    const int factor = 1 << -scaleFactor;  // 17 bits times 2^15: no overflow
    return run([factor](int r) { return saturated<T>(r * factor); });
  }
  return run([](int r) { return static_cast<T>(r > 0 ? kTop<T> : r < 0 ? kBottom<T> : 0); });
}

constexpr int kSumBits8u = 9;
constexpr int kDifferenceBits8u = 8;
constexpr int kBits16s = 16;

// The saturating operations without scale keep to lanes of the element's width; through int they
// would take twice to four times the instructions.
constexpr auto kSaturatingAdd8u = [](std::uint8_t a, std::uint8_t b) {
  const std::uint8_t room = static_cast<std::uint8_t>(255 - a);
  return static_cast<std::uint8_t>(a + (b < room ? b : room));
};
constexpr auto kSaturatingSub8u = [](std::uint8_t subtrahend, std::uint8_t a) {
  return static_cast<std::uint8_t>((a > subtrahend ? a : subtrahend) - subtrahend);
};

// `wrapped` is the low half of a result whose sign is that of `a` if it left the range, which it
// did where the sign bit of `overflow` is set.
constexpr std::int16_t saturateWrapped(std::int16_t wrapped, std::int16_t a, int overflow) {
  const std::int16_t limit = static_cast<std::int16_t>((a >> 15) ^ 0x7FFF);
  return static_cast<std::int16_t>(overflow) < 0 ? limit : wrapped;
}
constexpr auto kSaturatingAdd16s = [](std::int16_t b, std::int16_t a) {
  const std::int16_t sum = static_cast<std::int16_t>(a + b);
  return saturateWrapped(sum, a, (a ^ sum) & (b ^ sum));
};
constexpr auto kSaturatingSub16s = [](std::int16_t subtrahend, std::int16_t a) {
  const std::int16_t difference = static_cast<std::int16_t>(a - subtrahend);
  return saturateWrapped(difference, a, (a ^ subtrahend) & (a ^ difference));
};

int addImages(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2, int src2Step,
              std::uint8_t* dst, int dstStep, int width, int height, int scaleFactor) {
  const auto map = [&](auto f) {
    return mapRows(src1, src1Step, src2, src2Step, dst, dstStep, width, height, f);
  };
  if (scaleFactor == 0) return map(kSaturatingAdd8u);
  return withScale<std::uint8_t>(scaleFactor, kSumBits8u, [&](auto scale) {
    return map([scale](std::uint8_t a, std::uint8_t b) { return scale(a + b); });
  });
}

}  // namespace

int primAdd_8u_C1RSfs(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                      int src2Step, std::uint8_t* dst, int dstStep, int width, int height,
                      int scaleFactor) {
  return addImages(src1, src1Step, src2, src2Step, dst, dstStep, width, height, scaleFactor);
}

int primAdd_8u_C1IRSfs(const std::uint8_t* src, int srcStep, std::uint8_t* srcDst, int srcDstStep,
                       int width, int height, int scaleFactor) {
  return addImages(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, width, height,
                   scaleFactor);
}

int primSub_8u_C1IRSfs(const std::uint8_t* src, int srcStep, std::uint8_t* srcDst, int srcDstStep,
                       int width, int height, int scaleFactor) {
  const auto map = [&](auto f) {
    return mapRows(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, width, height, f);
  };
  if (scaleFactor == 0) return map(kSaturatingSub8u);
  return withScale<std::uint8_t>(scaleFactor, kDifferenceBits8u, [&](auto scale) {
    return map([scale](std::uint8_t a, std::uint8_t b) { return scale(kSaturatingSub8u(a, b)); });
  });
}

int primSub_16s_C1IRSfs(const std::int16_t* src, int srcStep, std::int16_t* srcDst, int srcDstStep,
                        int width, int height, int scaleFactor) {
  const auto map = [&](auto f) {
    return mapRows(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, width, height, f);
  };
  if (scaleFactor == 0) return map(kSaturatingSub16s);
  return withScale<std::int16_t>(scaleFactor, kBits16s, [&](auto scale) {
    return map([scale](std::int16_t subtrahend, std::int16_t a) { return scale(a - subtrahend); });
  });
}

int primSubC_8u_C1IRSfs(std::uint8_t value, std::uint8_t* srcDst, int srcDstStep, int width,
                        int height, int scaleFactor) {
  if (const int status = checkImage(width, height, srcDst)) return status;
  if (value == 0 && scaleFactor == 0) return kStatusOk;
  const auto map = [&](auto f) {
    return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height, f);
  };
  if (scaleFactor == 0) return map([value](std::uint8_t a) { return kSaturatingSub8u(value, a); });
  return withScale<std::uint8_t>(scaleFactor, kDifferenceBits8u, [&](auto scale) {
    return map([scale, value](std::uint8_t a) { return scale(kSaturatingSub8u(value, a)); });
  });
}

int primAddC_16s_C1IRSfs(std::int16_t value, std::int16_t* srcDst, int srcDstStep, int width,
                         int height, int scaleFactor) {
  if (const int status = checkImage(width, height, srcDst)) return status;
  if (value == 0 && scaleFactor == 0) return kStatusOk;
  const auto map = [&](auto f) {
    return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height, f);
  };
  if (scaleFactor == 0) return map([value](std::int16_t a) { return kSaturatingAdd16s(value, a); });
  return withScale<std::int16_t>(scaleFactor, kBits16s, [&](auto scale) {
    return map([scale, value](std::int16_t a) { return scale(a + value); });
  });
}

int primAbs_16s_C1IR(std::int16_t* srcDst, int srcDstStep, int width, int height) {
  return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height, [](std::int16_t a) {
    const std::int16_t limited = a < -32767 ? std::int16_t{-32767} : a;
    return static_cast<std::int16_t>(limited < 0 ? -limited : limited);
  });
}

int primAbsDiff_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                       int src2Step, std::uint8_t* dst, int dstStep, int width, int height) {
  return mapRows(src1, src1Step, src2, src2Step, dst, dstStep, width, height,
                 [](std::uint8_t a, std::uint8_t b) {
                   return static_cast<std::uint8_t>((a > b ? a : b) - (a < b ? a : b));
                 });
}

int primAddProduct_8u32f_C1IR(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                              int src2Step, float* srcDst, int srcDstStep, int width, int height) {
  if (const int status = checkImage(width, height, src1, src2, srcDst)) return status;
  if (src1Step < width || src2Step < width || shortStep(srcDstStep, width, sizeof(float)) ||
      unevenStep(srcDstStep))
    return kStatusBadStep;
  for (int y = 0; y < height; ++y) {
    const std::uint8_t* a = row(src1, src1Step, y);
    const std::uint8_t* b = row(src2, src2Step, y);
    float* out = row(srcDst, srcDstStep, y);
    VX_INDEPENDENT
    for (int x = 0; x < width; ++x) out[x] += static_cast<float>(a[x] * b[x]);
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
