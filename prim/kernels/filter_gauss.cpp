#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// The ring of row sums lives on the stack, one strip of columns after the other, so that the many
// small rectangles of a grid cost no allocation.
constexpr int kGaussStrip = 256;

void gauss3x3(const float* src, int srcStep, float* dst, int dstStep, int width, int height) {
  float ring[2][kGaussStrip];
  for (int y = -1; y < 1; ++y) {
    const float* in = row(src, srcStep, y);
    float* sums = ring[y + 1];
    for (int x = 0; x < width; ++x) sums[x] = (in[x - 1] + in[x + 1]) + (in[x] + in[x]);
  }
  for (int y = 0; y < height; ++y) {
    const float* in = row(src, srcStep, y + 1);
    float* __restrict above = ring[y & 1];  // becomes the sums of row y + 1
    const float* __restrict middle = ring[(y & 1) ^ 1];
    float* __restrict out = row(dst, dstStep, y);
    for (int x = 0; x < width; ++x) {
      const float below = (in[x - 1] + in[x + 1]) + (in[x] + in[x]);
      out[x] = ((above[x] + below) + (middle[x] + middle[x])) * 0.0625f;
      above[x] = below;
    }
  }
}

// Sums of one source row under the three distinct rows of the 5x5 kernel.
struct RowSums {
  float outer[kGaussStrip];  // 2 7 12 7 2
  float inner[kGaussStrip];  // 7 31 52 31 7
  float mid[kGaussStrip];    // 12 52 127 52 12
};

void sumRow(const float* in, RowSums& sums, int width) {
  float* __restrict outer = sums.outer;
  float* __restrict inner = sums.inner;
  float* __restrict mid = sums.mid;
  for (int x = 0; x < width; ++x) {
    const float far = in[x - 2] + in[x + 2];
    const float near = in[x - 1] + in[x + 1];
    outer[x] = (2.0f * far + 7.0f * near) + 12.0f * in[x];
    inner[x] = (7.0f * far + 31.0f * near) + 52.0f * in[x];
    mid[x] = (12.0f * far + 52.0f * near) + 127.0f * in[x];
  }
}

void gauss5x5(const float* src, int srcStep, float* dst, int dstStep, int width, int height) {
  RowSums ring[5];  // row y in slot (y + 5) % 5
  for (int y = -2; y < 2; ++y) sumRow(row(src, srcStep, y), ring[(y + 5) % 5], width);
  for (int y = 0; y < height; ++y) {
    sumRow(row(src, srcStep, y + 2), ring[(y + 2) % 5], width);
    const float* top = ring[(y + 3) % 5].outer;
    const float* above = ring[(y + 4) % 5].inner;
    const float* mid = ring[y % 5].mid;
    const float* below = ring[(y + 1) % 5].inner;
    const float* bottom = ring[(y + 2) % 5].outer;
    float* __restrict out = row(dst, dstStep, y);
    for (int x = 0; x < width; ++x)
      out[x] = (((top[x] + bottom[x]) + (above[x] + below[x])) + mid[x]) / 571.0f;
  }
}

}  // namespace

int primFilterGauss_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                            int height, int mask) {
  if (const int status = checkImage(width, height, src, dst)) return status;
  if (shortStep(srcStep, width, sizeof(float)) || shortStep(dstStep, width, sizeof(float)))
    return kStatusBadStep;
  if (mask != kMask33 && mask != kMask55) return kStatusBadMask;

  const auto filter = mask == kMask33 ? gauss3x3 : gauss5x5;
  for (int x = 0; x < width; x += kGaussStrip) {
    const int n = width - x < kGaussStrip ? width - x : kGaussStrip;
    filter(src + x, srcStep, dst + x, dstStep, n, height);
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
