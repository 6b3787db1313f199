#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

constexpr int kSumStrip = 256;
constexpr int kTapGroup = 4;

// One divisor, made ready. The sums wrap modulo 2^32 until finish() reads them as signed.
struct Quotient {
  int shift = -1;     // log2 of a power of two
  double factor = 0;  // else 1 / divisor, a float's value

  explicit Quotient(int divisor) {
    if (divisor > 0 && (divisor & (divisor - 1)) == 0) {
      shift = __builtin_ctz(static_cast<unsigned>(divisor));
    } else {
      factor = static_cast<float>(1.0 / divisor);
    }
  }

  void finish(const std::uint32_t* sums, std::uint8_t* __restrict out, int width) const {
    if (shift == 0) {
      for (int x = 0; x < width; ++x) out[x] = saturated<std::uint8_t>(static_cast<int>(sums[x]));
    } else if (shift > 0) {
      // Floor and remainder instead of adding half first, which could overflow.
      const int below = (1 << shift) - 1;
      const int half = 1 << (shift - 1);
      for (int x = 0; x < width; ++x) {
        const int s = static_cast<int>(sums[x]);
        const int floor = s >> shift;
        const int up = (s & below) + (floor & 1) > half ? 1 : 0;
        out[x] = saturated<std::uint8_t>(floor + up);
      }
    } else {
      const double top = opaque(255.0);
      const double bottom = opaque(0.0);
      const double ulpOne = opaque(0x1.8p52);  // adding it rounds to a whole number, ties to even
      for (int x = 0; x < width; ++x) {
        double v = static_cast<int>(sums[x]) * factor;
        v = v < top ? v : top;
        v = v > bottom ? v : bottom;
        out[x] = static_cast<std::uint8_t>(static_cast<int>((v + ulpOne) - ulpOne));
      }
    }
  }
};

// Adds four taps. 16-bit coefficients have a form of their own: SSE2 multiplies 16-bit lanes, but
// not 32-bit ones.
template <bool Start, class Coefficient>
void addTaps(const std::uint8_t* const* in, const int* taps, std::uint32_t* __restrict sums,
             int width) {
  const std::uint8_t *a = in[0], *b = in[1], *c = in[2], *d = in[3];
  const auto ka = static_cast<Coefficient>(taps[0]), kb = static_cast<Coefficient>(taps[1]),
             kc = static_cast<Coefficient>(taps[2]), kd = static_cast<Coefficient>(taps[3]);
  const auto times = [](Coefficient k, std::uint8_t v) {
    return static_cast<std::uint32_t>(k * static_cast<Coefficient>(v));
  };
  for (int x = 0; x < width; ++x) {
    const std::uint32_t sum =
        (times(ka, a[x]) + times(kb, b[x])) + (times(kc, c[x]) + times(kd, d[x]));
    sums[x] = Start ? sum : sums[x] + sum;
  }
}

// The kernel as a list of taps; sums modulo 2^32 do not depend on their order.
struct Kernel {
  const int* taps;
  int width, height, anchorX, anchorY;
  bool narrow = true;  // every tap fits 16 bits

  Kernel(const int* values, int columns, int rows, int ax, int ay)
      : taps(values), width(columns), height(rows), anchorX(ax), anchorY(ay) {
    for (std::ptrdiff_t t = 0; t < std::ptrdiff_t{columns} * rows; ++t)
      narrow = narrow && values[t] == static_cast<std::int16_t>(values[t]);
  }

  // src points at the pixel that the anchor meets.
  void sum(const std::uint8_t* src, int srcStep, std::uint32_t* sums, int n) const {
    const std::uint8_t* in[kTapGroup];
    int k[kTapGroup];
    int filled = 0;
    bool start = true;
    const auto flush = [&] {
      for (; filled < kTapGroup; ++filled) {
        in[filled] = in[0];
        k[filled] = 0;
      }
      if (narrow) {
        start ? addTaps<true, std::int16_t>(in, k, sums, n)
              : addTaps<false, std::int16_t>(in, k, sums, n);
      } else {
        start ? addTaps<true, std::uint32_t>(in, k, sums, n)
              : addTaps<false, std::uint32_t>(in, k, sums, n);
      }
      filled = 0;
      start = false;
    };
    for (int j = 0; j < height; ++j)
      for (int i = 0; i < width; ++i) {
        in[filled] = src + (std::ptrdiff_t{anchorY} - j) * srcStep + (std::ptrdiff_t{anchorX} - i);
        k[filled] = taps[std::ptrdiff_t{j} * width + i];
        if (++filled == kTapGroup) flush();
      }
    if (filled > 0) flush();
  }
};

int filter(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep, int width,
           int height, const int* values, int kernelWidth, int kernelHeight, int anchorX,
           int anchorY, int divisor) {
  if (!src || !dst || !values) return kStatusNullPtr;
  if (emptySize(width, height) || emptySize(kernelWidth, kernelHeight)) return kStatusBadSize;
  if (shortStep(srcStep, std::int64_t{width} - 1 + kernelWidth, sizeof(std::uint8_t)) ||
      shortStep(dstStep, width, sizeof(std::uint8_t)))
    return kStatusBadStep;
  if (divisor == 0) return kStatusZeroDivisor;

  const Kernel kernel(values, kernelWidth, kernelHeight, anchorX, anchorY);
  const Quotient quotient(divisor);
  std::uint32_t sums[kSumStrip];
  for (int x = 0; x < width; x += kSumStrip) {
    const int n = width - x < kSumStrip ? width - x : kSumStrip;
    for (int y = 0; y < height; ++y) {
      kernel.sum(row(src, srcStep, y) + x, srcStep, sums, n);
      quotient.finish(sums, row(dst, dstStep, y) + x, n);
    }
  }
  return kStatusOk;
}

}  // namespace

int primFilterRow_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                         int width, int height, const int* kernel, int kernelLen, int anchor,
                         int divisor) {
  return filter(src, srcStep, dst, dstStep, width, height, kernel, kernelLen, 1, anchor, 0,
                divisor);
}

int primFilterColumn_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                            int width, int height, const int* kernel, int kernelLen, int anchor,
                            int divisor) {
  return filter(src, srcStep, dst, dstStep, width, height, kernel, 1, kernelLen, 0, anchor,
                divisor);
}

int primFilter_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                      int width, int height, const int* kernel, int kernelWidth, int kernelHeight,
                      int anchorX, int anchorY, int divisor) {
  return filter(src, srcStep, dst, dstStep, width, height, kernel, kernelWidth, kernelHeight,
                anchorX, anchorY, divisor);
}

}  // namespace vx::prim::VX_VARIANT
