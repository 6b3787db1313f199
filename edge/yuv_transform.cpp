#include "edge/yuv_transform.h"

#include "edge/edge_plane.h"
#include "prim/arith.h"
#include "prim/channel.h"

namespace vx {
namespace {

using namespace prim;

// A few hundred pixels at a time keep all operands of a chain in the first-level cache.
constexpr int kStrip = 512;

}  // namespace

void rgbToYuv(const float* rgb, int rgbStep, EdgePlane (&yuv)[3], int top, int rows) {
  // Row r: what a channel is multiplied by on its way into Y, U and V. The green and blue factors
  // of U and V are relative to the factor before, since the channel's product runs from plane to
  // plane.
  constexpr float kRed[3] = {0.299f, -0.147f, 0.615f};
  constexpr float kGreen[3] = {0.587f, -0.49233389f, 1.7820069f};
  constexpr float kBlue[3] = {0.114f, 3.8245614f, -0.22935781f};
  float t[kStrip];
  constexpr int kStep = kStrip * 4;
  const int width = yuv[0].width;
  for (int r = 0; r < rows; ++r) {
    const float* row = at(rgb, rgbStep, 0, r);
    for (int x = 0; x < width; x += kStrip) {
      const int n = kStrip < width - x ? kStrip : width - x;
      float* plane[3];
      for (int c = 0; c < 3; ++c) plane[c] = at(yuv[c], x, top + r);
      primCopy_32f_C3C1R(row + 3 * x, n * 12, t, kStep, n, 1);
      for (int c = 0; c < 3; ++c) primMulC_32f_C1R(t, kStep, kRed[c], plane[c], kStep, n, 1);
      for (const auto* factors : {&kGreen, &kBlue}) {
        const int channel = factors == &kGreen ? 1 : 2;
        primCopy_32f_C3C1R(row + 3 * x + channel, n * 12, t, kStep, n, 1);
        for (int c = 0; c < 3; ++c) {
          primMulC_32f_C1IR((*factors)[c], t, kStep, n, 1);
          primAdd_32f_C1IR(t, kStep, plane[c], kStep, n, 1);
        }
      }
    }
  }
}

void yuvToRgb(const EdgePlane (&yuv)[3], int top, int rows, float* rgb, int rgbStep) {
  float t[kStrip];
  constexpr int kStep = kStrip * 4;
  const int width = yuv[0].width;
  for (int r = 0; r < rows; ++r) {
    float* row = at(rgb, rgbStep, 0, r);
    for (int x = 0; x < width; x += kStrip) {
      const int n = kStrip < width - x ? kStrip : width - x;
      const float* Y = at(yuv[0], x, top + r);
      const float* U = at(yuv[1], x, top + r);
      const float* V = at(yuv[2], x, top + r);
      primMulC_32f_C1R(V, kStep, 1.14f, t, kStep, n, 1);
      primAdd_32f_C1IR(Y, kStep, t, kStep, n, 1);
      primCopy_32f_C1C3R(t, kStep, row + 3 * x, n * 12, n, 1);
      primMulC_32f_C1R(U, kStep, 2.032f, t, kStep, n, 1);
      primAdd_32f_C1IR(Y, kStep, t, kStep, n, 1);
      primCopy_32f_C1C3R(t, kStep, row + 3 * x + 2, n * 12, n, 1);
      primMulC_32f_C1R(V, kStep, 1.4746193f, t, kStep, n, 1);
      primAdd_32f_C1IR(U, kStep, t, kStep, n, 1);
      primMulC_32f_C1IR(-0.394f, t, kStep, n, 1);
      primAdd_32f_C1IR(Y, kStep, t, kStep, n, 1);
      primCopy_32f_C1C3R(t, kStep, row + 3 * x + 1, n * 12, n, 1);
    }
  }
}

}  // namespace vx
