#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

constexpr int kColumnStrip = 512;

// The comparison keeps the earlier value where it does not hold, which settles NaN and signed
// zeros; the compiler has one instruction with that very rule.
struct Largest {
  static float of(float a, float b) { return a < b ? b : a; }
};
struct Smallest {
  static float of(float a, float b) { return b < a ? b : a; }
};

template <class Extreme>
int extreme3x3(const float* src, int srcStep, float* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, src, dst)) return status;
  if (srcStep < 1 || dstStep < 1) return kStatusBadStep;
  if (shortStep(srcStep, std::int64_t{width} + 2, sizeof(float)) ||
      shortStep(dstStep, width, sizeof(float)))
    return kStatusShortStep;

  float columns[kColumnStrip + 2];  // the extreme of each column
  for (int x0 = 0; x0 < width; x0 += kColumnStrip) {
    const int n = width - x0 < kColumnStrip ? width - x0 : kColumnStrip;
    for (int y = 0; y < height; ++y) {
      const float* above = row(src, srcStep, y - 1) + x0 - 1;
      const float* middle = row(src, srcStep, y) + x0 - 1;
      const float* below = row(src, srcStep, y + 1) + x0 - 1;
      for (int x = 0; x < n + 2; ++x)
        columns[x] = Extreme::of(Extreme::of(above[x], middle[x]), below[x]);
      float* __restrict out = row(dst, dstStep, y) + x0;
      for (int x = 0; x < n; ++x)
        out[x] = Extreme::of(Extreme::of(columns[x], columns[x + 1]), columns[x + 2]);
    }
  }
  return kStatusOk;
}

}  // namespace

int primDilate3x3_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                          int height) {
  return extreme3x3<Largest>(src, srcStep, dst, dstStep, width, height);
}

int primErode3x3_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height) {
  return extreme3x3<Smallest>(src, srcStep, dst, dstStep, width, height);
}

}  // namespace vx::prim::VX_VARIANT
