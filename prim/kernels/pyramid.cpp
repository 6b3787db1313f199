#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// The rows of a ring in the caller's scratch. The size that the caller was told leaves 32 bytes for
// the alignment.
class Ring {
 public:
  Ring(void* buffer, int rowFloats, int rows)
      : base_(reinterpret_cast<char*>((reinterpret_cast<std::uintptr_t>(buffer) + 31) &
                                      ~std::uintptr_t{31})),
        rowBytes_((std::ptrdiff_t{rowFloats} * std::ptrdiff_t{sizeof(float)} + 15) &
                  ~std::ptrdiff_t{15}),
        rows_(rows) {}

  float* operator[](std::ptrdiff_t y) const {
    return reinterpret_cast<float*>(base_ + y % rows_ * rowBytes_);
  }

 private:
  char* base_;
  std::ptrdiff_t rowBytes_;
  int rows_;
};

// Index of the pixel that stands for i, mirrored about both edge pixels as often as it takes.
std::ptrdiff_t mirrored(std::ptrdiff_t i, int size) {
  if (size == 1) return 0;
  while (i < 0 || i >= size) i = i < 0 ? -i : 2 * (std::ptrdiff_t{size} - 1) - i;
  return i;
}

float fiveTaps(float a, float b, float c, float d, float e) {
  return a + 4.0f * b + 6.0f * c + 4.0f * d + e;
}

void halveRow(const float* __restrict in, float* __restrict out, int width) {
  const auto atEdge = [=](std::ptrdiff_t i) {
    const auto at = [=](std::ptrdiff_t x) { return in[mirrored(x, width)]; };
    out[i] = fiveTaps(at(2 * i - 2), at(2 * i - 1), at(2 * i), at(2 * i + 1), at(2 * i + 2));
  };
  const int outWidth = width / 2 + width % 2;
  const int inner = width > 4 ? (width - 3) / 2 : 0;  // last output with all five pixels inside
  atEdge(0);
  for (int i = 1; i <= inner; ++i)
    out[i] = fiveTaps(in[2 * i - 2], in[2 * i - 1], in[2 * i], in[2 * i + 1], in[2 * i + 2]);
  for (int i = inner + 1; i < outWidth; ++i) atEdge(i);
}

void doubleRow(const float* __restrict in, float* __restrict out, int width) {
  const auto pair = [=](int i, float left, float right) {
    out[2 * i] = left + 6.0f * in[i] + right;
    out[2 * i + 1] = 4.0f * (in[i] + right);
  };
  const int last = width - 1;
  pair(0, in[mirrored(-1, width)], in[width > 1 ? 1 : 0]);
  for (int i = 1; i < last; ++i) pair(i, in[i - 1], in[i + 1]);
  if (last > 0) pair(last, in[last - 1], in[last]);
}

int refusal(const float* src, int srcStep, const float* dst, int dstStep, const void* buffer,
            int width, int height, std::int64_t dstWidth) {
  if (const int status = checkImage(width, height, src, dst, buffer)) return status;
  if (shortStep(srcStep, width, sizeof(float)) || shortStep(dstStep, dstWidth, sizeof(float)))
    return kStatusBadStep;
  if (unevenStep(srcStep) || unevenStep(dstStep)) return kStatusUnevenStep;
  return kStatusOk;
}

}  // namespace

int primPyrDown_Gauss5x5_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                                 int height, void* buffer) {
  const int outWidth = width / 2 + width % 2;
  const int outHeight = height / 2 + height % 2;
  if (const int status = refusal(src, srcStep, dst, dstStep, buffer, width, height, outWidth))
    return status;

  const Ring ring(buffer, width, 5);
  int filled = 0;
  for (int j = 0; j < outHeight; ++j) {
    const std::ptrdiff_t top = 2 * std::ptrdiff_t{j} - 2;
    for (; filled < height && filled <= top + 4; ++filled)
      halveRow(row(src, srcStep, filled), ring[filled], width);
    const float* in[5];
    for (int t = 0; t < 5; ++t) in[t] = ring[mirrored(top + t, height)];
    const float *a = in[0], *b = in[1], *c = in[2], *d = in[3], *e = in[4];
    float* __restrict out = row(dst, dstStep, j);
    for (int x = 0; x < outWidth; ++x)
      out[x] = fiveTaps(a[x], b[x], c[x], d[x], e[x]) * 0.00390625f;
  }
  return kStatusOk;
}

int primPyrUp_Gauss5x5_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                               int height, void* buffer) {
  const std::int64_t dstWidth = std::int64_t{width} * 2;
  if (const int status = refusal(src, srcStep, dst, dstStep, buffer, width, height, dstWidth))
    return status;

  const int outWidth = 2 * width;
  const Ring ring(buffer, outWidth, 3);
  int filled = 0;
  float* __restrict even = dst;
  for (int j = 0; j < height; ++j, even = row(even, dstStep, 2)) {
    for (; filled < height && filled <= j + 1; ++filled)
      doubleRow(row(src, srcStep, filled), ring[filled], width);
    const float* above = ring[mirrored(j - 1, height)];
    const float* middle = ring[j];
    const float* below = ring[j + 1 < height ? j + 1 : j];
    float* __restrict odd = row(even, dstStep, 1);
    for (int x = 0; x < outWidth; ++x) {
      even[x] = (above[x] + 6.0f * middle[x] + below[x]) * 0.015625f;
      odd[x] = 4.0f * (middle[x] + below[x]) * 0.015625f;
    }
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
