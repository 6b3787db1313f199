#include "prim/kernels/rank_median_networks.h"
#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
namespace {

using Byte = std::uint8_t;

// Columns sorted once per row serve all the windows that they belong to.
constexpr int kMedianStrip = 512;
constexpr int kMaxReach = 2;

template <class T>
int refusal(const T* src, int srcStep, const T* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, src, dst)) return status;
  if (shortStep(srcStep, width, sizeof(T)) || shortStep(dstStep, width, sizeof(T)))
    return kStatusBadStep;
  return kStatusOk;
}

// Medians of three or five pixels that lie `stride` bytes apart, around each pixel.
template <int Count>
void medianLine(const Byte* src, int srcStep, std::ptrdiff_t stride, Byte* dst, int dstStep,
                int width, int height) {
  for (int y = 0; y < height; ++y) {
    const Byte* c = row(src, srcStep, y);
    const Byte *b = c - stride, *d = c + stride, *a = b - stride, *e = d + stride;
    Byte* __restrict out = row(dst, dstStep, y);
    if constexpr (Count == 3) {
      for (int x = 0; x < width; ++x) out[x] = median3(b[x], c[x], d[x]);
    } else {
      for (int x = 0; x < width; ++x) out[x] = median5(a[x], b[x], c[x], d[x], e[x]);
    }
  }
}

template <class T>
int medianCross(const T* src, int srcStep, T* dst, int dstStep, int width, int height, int mask) {
  if (const int status = refusal(src, srcStep, dst, dstStep, width, height)) return status;
  if (mask != kMask33 && mask != kMask55) return kStatusBadMask;
  for (int y = 0; y < height; ++y) {
    const auto *in = elements(src, srcStep, y), *up = elements(src, srcStep, y - 1),
               *down = elements(src, srcStep, y + 1);
    Element<T>* __restrict out = elements(dst, dstStep, y);
    if (mask == kMask33) {
      for (int x = 0; x < width; ++x)
        out[x] = median5<T>(up[x], down[x], in[x - 1], in[x + 1], in[x]);
    } else {
      const auto *up2 = elements(src, srcStep, y - 2), *down2 = elements(src, srcStep, y + 2);
      for (int x = 0; x < width; ++x)
        out[x] = median9<T>(up2[x], up[x], down[x], down2[x], in[x - 2], in[x - 1], in[x],
                            in[x + 1], in[x + 2]);
    }
  }
  return kStatusOk;
}

void median3x3(const Byte* src, int srcStep, Byte* dst, int dstStep, int width, int height) {
  Byte low[kMedianStrip + 2], mid[kMedianStrip + 2], high[kMedianStrip + 2];
  for (int y = 0; y < height; ++y) {
    const Byte* in[3];
    for (int j = 0; j < 3; ++j) in[j] = row(src, srcStep, y + j - 1) - 1;
    for (int x = 0; x < width + 2; ++x) {
      Byte a = in[0][x], b = in[1][x], c = in[2][x];
      sort3(a, b, c);
      low[x] = a;
      mid[x] = b;
      high[x] = c;
    }
    Byte* __restrict out = row(dst, dstStep, y);
    for (int x = 0; x < width; ++x)
      out[x] = medianOfSorted3(low[x], low[x + 1], low[x + 2], mid[x], mid[x + 1], mid[x + 2],
                               high[x], high[x + 1], high[x + 2]);
  }
}

// With the columns of the window sorted, then the rows of equal rank, an element has everything
// above it and left of it below it in value. Thirteen on the rising diagonals have at most twelve
// on either side; the others cannot be the median.
void median5x5(const Byte* src, int srcStep, Byte* dst, int dstStep, int width, int height) {
  Byte rank[5][kMedianStrip + 4];
  for (int y = 0; y < height; ++y) {
    const Byte* in[5];
    for (int j = 0; j < 5; ++j) in[j] = row(src, srcStep, y + j - 2) - 2;
    for (int x = 0; x < width + 4; ++x) {
      Byte a = in[0][x], b = in[1][x], c = in[2][x], d = in[3][x], e = in[4][x];
      sort5(a, b, c, d, e);
      rank[0][x] = a;
      rank[1][x] = b;
      rank[2][x] = c;
      rank[3][x] = d;
      rank[4][x] = e;
    }
    Byte* __restrict out = row(dst, dstStep, y);
    for (int x = 0; x < width; ++x) {
      Byte v[5][5];
#pragma GCC unroll 5
      for (int j = 0; j < 5; ++j) {
#pragma GCC unroll 5
        for (int i = 0; i < 5; ++i) v[j][i] = rank[j][x + i];
        sort5(v[j][0], v[j][1], v[j][2], v[j][3], v[j][4]);
      }
      Byte candidates[13] = {v[0][3], v[0][4], v[1][2], v[1][3], v[1][4], v[2][1], v[2][2],
                             v[2][3], v[3][0], v[3][1], v[3][2], v[4][0], v[4][1]};
      out[x] = median13(candidates);
    }
  }
}

// Counts of the window, and the median kept up to date as columns come and go (Huang, Yang and
// Tang, 1979, A fast two-dimensional median filtering algorithm).
class SlidingMedian {
 public:
  SlidingMedian(int maskWidth, int maskHeight)
      : maskHeight_(maskHeight), rank_(std::int64_t{maskWidth} * maskHeight / 2) {}

  void addColumn(const Byte* column, int step, int sign) {
    for (int j = 0; j < maskHeight_; ++j) {
      const Byte v = *row(column, step, j);
      counts_[v] += sign;
      if (v < median_) below_ += sign;
    }
  }

  Byte median() {
    while (below_ > rank_) below_ -= counts_[--median_];
    while (below_ + counts_[median_] <= rank_) below_ += counts_[median_++];
    return static_cast<Byte>(median_);
  }

 private:
  int maskHeight_;
  std::int64_t rank_;
  std::int64_t counts_[256] = {};
  std::int64_t below_ = 0;  // elements below median_
  int median_ = 0;
};

// src points at the top left pixel of the first window.
void medianGeneral(const Byte* src, int srcStep, Byte* dst, int dstStep, int width, int height,
                   int maskWidth, int maskHeight) {
  for (int y = 0; y < height; ++y) {
    const Byte* in = row(src, srcStep, y);
    Byte* out = row(dst, dstStep, y);
    SlidingMedian window(maskWidth, maskHeight);
    for (int i = 0; i < maskWidth - 1; ++i) window.addColumn(in + i, srcStep, 1);
    for (int x = 0; x < width; ++x) {
      window.addColumn(in + x + (maskWidth - 1), srcStep, 1);
      out[x] = window.median();
      window.addColumn(in + x, srcStep, -1);
    }
  }
}

template <class Filter>
void inStrips(Filter filter, const Byte* src, int srcStep, Byte* dst, int dstStep, int width,
              int height) {
  for (int x = 0; x < width; x += kMedianStrip) {
    const int n = width - x < kMedianStrip ? width - x : kMedianStrip;
    filter(src + x, srcStep, dst + x, dstStep, n, height);
  }
}

}  // namespace

int primFilterMedian_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                            int width, int height, int maskWidth, int maskHeight, int anchorX,
                            int anchorY) {
  if (const int status = refusal(src, srcStep, dst, dstStep, width, height)) return status;
  if (emptySize(maskWidth, maskHeight) || maskWidth % 2 == 0 || maskHeight % 2 == 0)
    return kStatusBadMask;
  if (anchorX < 0 || anchorX >= maskWidth || anchorY < 0 || anchorY >= maskHeight)
    return kStatusBadAnchor;

  const Byte* corner = src - std::ptrdiff_t{anchorY} * srcStep - anchorX;
  const Byte* centre = corner + std::ptrdiff_t{maskHeight / 2} * srcStep + maskWidth / 2;
  const auto is = [=](int w, int h) { return maskWidth == w && maskHeight == h; };
  if (is(3, 3)) {
    inStrips(median3x3, centre, srcStep, dst, dstStep, width, height);
  } else if (is(5, 5)) {
    inStrips(median5x5, centre, srcStep, dst, dstStep, width, height);
  } else if (is(3, 1)) {
    medianLine<3>(centre, srcStep, 1, dst, dstStep, width, height);
  } else if (is(5, 1)) {
    medianLine<5>(centre, srcStep, 1, dst, dstStep, width, height);
  } else if (is(1, 3)) {
    medianLine<3>(centre, srcStep, srcStep, dst, dstStep, width, height);
  } else if (is(1, 5)) {
    medianLine<5>(centre, srcStep, srcStep, dst, dstStep, width, height);
  } else if (is(1, 1)) {
    for (int y = 0; y < height; ++y)
      __builtin_memcpy(row(dst, dstStep, y), row(src, srcStep, y), static_cast<std::size_t>(width));
  } else {
    medianGeneral(corner, srcStep, dst, dstStep, width, height, maskWidth, maskHeight);
  }
  return kStatusOk;
}

int primFilterMedianCross_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                 int dstStep, int width, int height, int mask) {
  return medianCross(src, srcStep, dst, dstStep, width, height, mask);
}

int primFilterMedianCross_16s_C1R(const std::int16_t* src, int srcStep, std::int16_t* dst,
                                  int dstStep, int width, int height, int mask) {
  return medianCross(src, srcStep, dst, dstStep, width, height, mask);
}

int primFilterMedianVert_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                int dstStep, int width, int height, int mask) {
  if (const int status = refusal(src, srcStep, dst, dstStep, width, height)) return status;
  if (mask != kMask13 && mask != kMask15) return kStatusBadMask;
  const auto filter = mask == kMask13 ? medianLine<3> : medianLine<5>;
  filter(src, srcStep, srcStep, dst, dstStep, width, height);
  return kStatusOk;
}

int primFilterMedianHoriz_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                 int dstStep, int width, int height, int mask) {
  if (const int status = refusal(src, srcStep, dst, dstStep, width, height)) return status;
  if (mask != kMask31 && mask != kMask51) return kStatusBadMask;
  const auto filter = mask == kMask31 ? medianLine<3> : medianLine<5>;
  filter(src, srcStep, 1, dst, dstStep, width, height);
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
