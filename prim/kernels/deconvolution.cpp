#include "prim/deconvolution_state.h"
#include "prim/kernels/shared/convolve.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Plane of `width` floats a row with a frame of zeros as wide as the kernel reaches, so that pixels
// outside the image add nothing to a sum.
struct Framed {
  float* pixels;
  std::ptrdiff_t pitch;

  Framed(float* block, int width, int height, int kernelSize, int left)
      : pixels(block + left * (std::ptrdiff_t{width} + kernelSize - 1) + left),
        pitch(std::ptrdiff_t{width} + kernelSize - 1) {
    const std::ptrdiff_t count = pitch * (std::ptrdiff_t{height} + kernelSize - 1);
    __builtin_memset(block, 0, static_cast<std::size_t>(count) * sizeof(float));
  }
  float* row(int y) const { return pixels + pitch * y; }
};

// One of the two convolutions of an iteration, with the kernel or the transposed one.
struct Operator {
  const float* kernel;
  int size, anchor;
  Framed in;
  float* sums;  // per pixel of the image, the part of the kernel that falls on it

  // out[i] = sum over the kernel of kernel(k, j) * in(x + i + anchor - k, y + anchor - j)
  void convolve(int x, int y, float* out, int n) const {
    const int left = x + anchor - (size - 1);
    for (int j = size - 1; j >= 0; --j) {
      const float* lastTap = kernel + std::ptrdiff_t{j} * size + (size - 1);
      convolveRow(j == size - 1, in.row(y + anchor - j) + left, 4, lastTap, -1, size, out, n);
    }
  }
};

}  // namespace

int primDeconvLR_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height, int iterations, primDeconvLRState* state) {
  if (!src || !dst || !state) return kStatusNullPtr;
  const int size = state->kernelSize;
  if (emptySize(width, height) || std::int64_t{width} + size - 1 > state->maxWidth ||
      std::int64_t{height} + size - 1 > state->maxHeight)
    return kStatusBadSize;
  if (shortStep(srcStep, width, sizeof(float)) || shortStep(dstStep, width, sizeof(float)))
    return kStatusBadStep;
  if (unevenStep(srcStep) || unevenStep(dstStep)) return kStatusUnevenStep;
  if (iterations < 1) return kStatusBadParameter;

  const int before = size - 1 - state->anchor;  // reach of the kernel to the left and to the top
  const Framed estimate(state->estimate, width, height, size, before);
  const Framed quotient(state->quotient, width, height, size, state->anchor);
  const Operator blur{state->kernel, size, state->anchor, estimate, state->kernelSum};
  const Operator back{state->transposed, size, before, quotient, state->transposedSum};

  // Calls work(x, y, n) for strips of rows that stay in the first-level cache.
  const auto everywhere = [=](auto work) {
    for (int x = 0; x < width; x += kStripWidth) {
      const int n = width - x < kStripWidth ? width - x : kStripWidth;
      for (int y = 0; y < height; ++y) work(x, y, n);
    }
  };

  // The partial kernel sums are the convolution of an image of ones.
  const auto sumKernel = [=, threshold = state->threshold](const Operator& op) {
    everywhere([=](int x, int y, int n) {
      float* ones = op.in.row(y) + x;
      for (int i = 0; i < n; ++i) ones[i] = 1.0f;
    });
    everywhere([=](int x, int y, int n) {
      float* sums = op.sums + std::ptrdiff_t{y} * width + x;
      op.convolve(x, y, sums, n);
      for (int i = 0; i < n; ++i) {
        const float magnitude = __builtin_fabsf(sums[i]);
        sums[i] = magnitude < threshold || magnitude == 0.0f ? 1.0f : sums[i];
      }
    });
  };
  sumKernel(blur);
  sumKernel(back);

  everywhere([=](int x, int y, int n) {
    const float* in = row(src, srcStep, y) + x;
    float* e = estimate.row(y) + x;
    for (int i = 0; i < n; ++i) e[i] = in[i];
  });
  for (int pass = 0; pass < iterations; ++pass) {
    everywhere([=](int x, int y, int n) {
      const float* in = row(src, srcStep, y) + x;
      const float* sums = blur.sums + std::ptrdiff_t{y} * width + x;
      float* __restrict q = quotient.row(y) + x;
      blur.convolve(x, y, q, n);
      for (int i = 0; i < n; ++i) {
        const float blurred = q[i] / sums[i];
        const float ratio = in[i] / blurred;
        q[i] = blurred == 0.0f ? 0.0f : ratio;
      }
    });
    everywhere([=](int x, int y, int n) {
      const float* sums = back.sums + std::ptrdiff_t{y} * width + x;
      float* __restrict e = estimate.row(y) + x;
      float correction[kStripWidth];
      back.convolve(x, y, correction, n);
      for (int i = 0; i < n; ++i) e[i] *= correction[i] / sums[i];
    });
  }
  everywhere([=](int x, int y, int n) {
    const float* e = estimate.row(y) + x;
    float* out = row(dst, dstStep, y) + x;
    for (int i = 0; i < n; ++i) out[i] = e[i];
  });
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
