#include "prim/kernels/shared/convolve.h"

namespace vx::prim::VX_VARIANT {

int primFilterRow_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                          int height, const float* kernel, int kernelLen, int anchor) {
  if (!src || !dst || !kernel) return kStatusNullPtr;
  if (emptySize(width, height) || kernelLen < 1) return kStatusBadSize;
  if (shortStep(srcStep, std::int64_t{width} - 1 + kernelLen, sizeof(float)) ||
      shortStep(dstStep, width, sizeof(float)))
    return kStatusBadStep;

  const float* lastTap = kernel + (kernelLen - 1);
  for (int y = 0; y < height; ++y) {
    const float* left = row(src, srcStep, y) + (std::ptrdiff_t{anchor} - (kernelLen - 1));
    float* out = row(dst, dstStep, y);
    for (int x = 0; x < width; x += kStripWidth) {
      const int n = width - x < kStripWidth ? width - x : kStripWidth;
      convolveRow(true, left + x, 4, lastTap, -1, kernelLen, out + x, n);
    }
  }
  return kStatusOk;
}

int primFilterColumn_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                             int height, const float* kernel, int kernelLen, int anchor) {
  if (!src || !dst || !kernel) return kStatusNullPtr;
  if (emptySize(width, height) || kernelLen < 1) return kStatusBadSize;
  if (shortStep(srcStep, width, sizeof(float)) || shortStep(dstStep, width, sizeof(float)))
    return kStatusBadStep;

  const float* lastTap = kernel + (kernelLen - 1);
  for (int x = 0; x < width; x += kStripWidth) {
    const int n = width - x < kStripWidth ? width - x : kStripWidth;
    for (int y = 0; y < height; ++y) {
      const std::ptrdiff_t top = std::ptrdiff_t{y} + anchor - (kernelLen - 1);
      convolveRow(true, byBytes(src + x, top * srcStep), srcStep, lastTap, -1, kernelLen,
                  row(dst, dstStep, y) + x, n);
    }
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
