#include "prim/kernels/geometry_resize_methods.h"

namespace vx::prim::VX_VARIANT {
namespace {

// A call works on strips of columns, one after the other, so that its tables and rows fit the
// stack.
constexpr int kStrip = 256;
constexpr int kMaxTaps = 6;

struct Region {
  const float* src;
  int step, width, height;
};

// Position in the source of pixel d of the destination, limited to the samples that there are.
double position(int d, double factor, int size) {
  const double p = (d + 0.5) / factor - 0.5;
  const double last = size - 1;
  return p > 0.0 ? (p < last ? p : last) : 0.0;
}

// Samples and weights of a strip's columns. From `from` to `to` the windows follow a pattern that
// needs no indexed loads: the next window lies `stride` samples on, or two neighbours share one.
struct Columns {
  int start[kStrip];
  float coefficient[kMaxTaps][kStrip];
  int from, to, stride;

  static constexpr int kShared = 0;

  void findPattern(int n) {
    const auto gap = [this](int x) { return start[x + 1] - start[x]; };
    from = to = 0;
    stride = kShared;
    for (int x = 0; x < 8 && x + 3 < n && to == 0; ++x) {
      const int g = gap(x), next = gap(x + 1);
      if (g == next && (g == 1 || g == 2)) {
        from = x;
        stride = g;
        for (to = x + 2; to < n && gap(to - 1) == g;) ++to;
      } else if (g == 0 && next == 1 && gap(x + 2) == 0) {
        from = x;
        for (to = x + 2; to + 1 < n && gap(to - 1) == 1 && gap(to) == 0;) to += 2;
      }
    }
  }
};

template <class M>
float sample(const float* in, const Columns& columns, int x) {
  float c[M::kCoefficients];
#pragma GCC unroll 8
  for (int i = 0; i < M::kCoefficients; ++i) c[i] = columns.coefficient[i][x];
  return M::value(in, c);
}

template <class M>
void placeColumns(Columns& columns, int x0, int n, double factor, int size) {
  for (int x = 0; x < n; ++x) {
    float c[M::kCoefficients];
    columns.start[x] = M::place(position(x0 + x, factor, size), size, c);
    for (int i = 0; i < M::kCoefficients; ++i) columns.coefficient[i][x] = c[i];
  }
  columns.findPattern(n);
}

template <class M, int Stride>
void acrossStride(const float* in, const Columns& columns, float* __restrict out) {
  const float* first = in + columns.start[columns.from];
  const int count = columns.to - columns.from;
  const int x0 = columns.from;
  for (int x = 0; x < count; ++x) out[x0 + x] = sample<M>(first + Stride * x, columns, x0 + x);
}

template <class M>
void acrossPairs(const float* in, const Columns& columns, float* __restrict out) {
  const float* first = in + columns.start[columns.from];
  const int count = (columns.to - columns.from) / 2;
  const int x0 = columns.from;
  for (int i = 0; i < count; ++i) {
    out[x0 + 2 * i] = sample<M>(first + i, columns, x0 + 2 * i);
    out[x0 + 2 * i + 1] = sample<M>(first + i, columns, x0 + 2 * i + 1);
  }
}

template <class M>
void across(const float* in, const Columns& columns, float* __restrict out, int n) {
  const auto indexed = [&](int begin, int end) {
    for (int x = begin; x < end; ++x) out[x] = sample<M>(in + columns.start[x], columns, x);
  };
  indexed(0, columns.from);
  if (columns.stride == 1) {
    acrossStride<M, 1>(in, columns, out);
  } else if (columns.stride == 2) {
    acrossStride<M, 2>(in, columns, out);
  } else {
    acrossPairs<M>(in, columns, out);
  }
  indexed(columns.to, n);
}

template <class M>
void down(const float* const* rows, const float* weights, float* __restrict out, int n) {
  const float* in[M::kTaps];
  float c[M::kCoefficients];
  for (int t = 0; t < M::kTaps; ++t) in[t] = rows[t];
  for (int i = 0; i < M::kCoefficients; ++i) c[i] = weights[i];
  for (int x = 0; x < n; ++x) {
    float p[M::kTaps];
#pragma GCC unroll 8
    for (int t = 0; t < M::kTaps; ++t) p[t] = in[t][x];
    out[x] = M::value(p, c);
  }
}

struct Method {
  int taps;
  int (*place)(double p, int size, float* c);
  void (*placeColumns)(Columns&, int x0, int n, double factor, int size);
  void (*across)(const float* in, const Columns&, float* out, int n);
  void (*down)(const float* const* rows, const float* c, float* out, int n);
};

template <class M>
constexpr Method kMethod = {M::kTaps, M::place, placeColumns<M>, across<M>, down<M>};

// Method of one axis. Where the factor is 1, positions are whole, and the samples are copied to the
// bit, which interpolation by differences would not do.
Method methodFor(int interpolation, double factor) {
  if (factor == 1.0 || interpolation == kResizeNearest) return kMethod<Nearest>;
  if (interpolation == kResizeLinear) return kMethod<Linear>;
  return interpolation == kResizeCubic ? kMethod<Cubic> : kMethod<Lanczos>;
}

void interpolate(const Region& region, const Method& mx, const Method& my, float* dst, int dstStep,
                 int dstWidth, int dstHeight, double xFactor, double yFactor) {
  Columns columns;
  float ring[kMaxTaps][kStrip];  // source row r, resampled along x, in slot r % my.taps
  for (int x0 = 0; x0 < dstWidth; x0 += kStrip) {
    const int n = dstWidth - x0 < kStrip ? dstWidth - x0 : kStrip;
    mx.placeColumns(columns, x0, n, xFactor, region.width);
    int held[kMaxTaps];
    for (int& r : held) r = -1;
    for (int y = 0; y < dstHeight; ++y) {
      float c[kMaxTaps];
      const float* rows[kMaxTaps];
      const int start = my.place(position(y, yFactor, region.height), region.height, c);
      for (int t = 0; t < my.taps; ++t) {
        const int r = start + t;
        const int slot = r % my.taps;
        if (held[slot] != r) mx.across(row(region.src, region.step, r), columns, ring[slot], n);
        held[slot] = r;
        rows[t] = ring[slot];
      }
      my.down(rows, c, row(dst, dstStep, y) + x0, n);
    }
  }
}

void average(const Region& region, float* dst, int dstStep, int dstWidth, int dstHeight,
             double xFactor, double yFactor) {
  Span columns[kStrip];
  float sums[kStrip];
  for (int x0 = 0; x0 < dstWidth; x0 += kStrip) {
    const int n = dstWidth - x0 < kStrip ? dstWidth - x0 : kStrip;
    for (int x = 0; x < n; ++x) columns[x] = Span(x0 + x, xFactor, region.width);
    for (int y = 0; y < dstHeight; ++y) {
      const Span rows(y, yFactor, region.height);
      for (int r = rows.first; r <= rows.last; ++r) {
        const float* in = row(region.src, region.step, r);
        const float weight = rows.weight(r);
        for (int x = 0; x < n; ++x) {
          const float mean = columns[x].mean(in);
          sums[x] = r == rows.first ? weight * mean : sums[x] + weight * mean;
        }
      }
      float* out = row(dst, dstStep, y) + x0;
      for (int x = 0; x < n; ++x) out[x] = sums[x] * rows.scale;
    }
  }
}

bool validFactor(double factor) { return factor > 0.0 && factor <= __DBL_MAX__; }

// The part of start..start + length - 1 that lies in the image; false if nothing does.
bool clip(int& start, int& length, int size) {
  const std::int64_t end = std::int64_t{start} + length;
  start = start > 0 ? start : 0;
  length = static_cast<int>((end < size ? end : size) - start);
  return length > 0;
}

}  // namespace

int primResize_32f_C1R(const float* src, int srcWidth, int srcHeight, int srcStep, int roiX,
                       int roiY, int roiWidth, int roiHeight, float* dst, int dstStep, int dstWidth,
                       int dstHeight, double xFactor, double yFactor, int interpolation) {
  if (!src || !dst) return kStatusNullPtr;
  if (emptySize(srcWidth, srcHeight) || emptySize(roiWidth, roiHeight) ||
      emptySize(dstWidth, dstHeight) || !clip(roiX, roiWidth, srcWidth) ||
      !clip(roiY, roiHeight, srcHeight))
    return kStatusBadSize;
  if (shortStep(srcStep, srcWidth, sizeof(float)) || shortStep(dstStep, dstWidth, sizeof(float)))
    return kStatusBadStep;
  if (!validFactor(xFactor) || !validFactor(yFactor)) return kStatusBadFactor;
  switch (interpolation) {
    case kResizeNearest:
    case kResizeLinear:
    case kResizeCubic:
    case kResizeLanczos:
      break;
    case kResizeArea:
      if (xFactor <= 1.0 && yFactor <= 1.0) break;
      [[fallthrough]];
    default:
      return kStatusBadInterpolation;
  }

  const int shorter = roiWidth < roiHeight ? roiWidth : roiHeight;
  if (interpolation == kResizeLanczos && shorter < 8) interpolation = kResizeCubic;
  if (interpolation == kResizeCubic && shorter < 4) interpolation = kResizeLinear;
  if (shorter < 2) interpolation = kResizeNearest;

  const Region region{row(src, srcStep, roiY) + roiX, srcStep, roiWidth, roiHeight};
  if (interpolation == kResizeArea) {
    average(region, dst, dstStep, dstWidth, dstHeight, xFactor, yFactor);
  } else {
    interpolate(region, methodFor(interpolation, xFactor), methodFor(interpolation, yFactor), dst,
                dstStep, dstWidth, dstHeight, xFactor, yFactor);
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
