#pragma once

// The per-call tables of the piecewise lookups: one polynomial per segment of the curve.

#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// out = value + c*u + b*u*u + a*u*u*u with u = x - level. The linear form has its slope in c.
struct Segment {
  double value;
  double level;
  double a;
  double b;
  double c;
};

// Of two NaN in a sum the hardware keeps the one that the compiler put first. With all of them the
// one that the hardware itself makes there is nothing to choose.
inline double oneNan(double v) { return v == v ? v : -__builtin_nan(""); }

inline Segment linearSegment(const float* values, const float* levels, std::ptrdiff_t i) {
  const double v0 = static_cast<double>(values[i]);
  const double v1 = static_cast<double>(values[i + 1]);
  const double l0 = static_cast<double>(levels[i]);
  const double l1 = static_cast<double>(levels[i + 1]);
  return {oneNan(v0), l0, 0.0, 0.0, oneNan((v1 - v0) / (l1 - l0))};
}

inline double det3(const double (&p)[3], const double (&q)[3], const double (&r)[3]) {
  return p[0] * (q[1] * r[2] - r[1] * q[2]) - q[0] * (p[1] * r[2] - r[1] * p[2]) +
         r[0] * (p[1] * q[2] - q[1] * p[2]);
}

// The cubic through four points around the segment, or the four nearest the curve's end.
inline Segment cubicSegment(const float* values, const float* levels, std::ptrdiff_t n,
                            std::ptrdiff_t i) {
  std::ptrdiff_t first = i - 1 < n - 4 ? i - 1 : n - 4;
  first = first < 0 ? 0 : first;
  const std::ptrdiff_t second = first + 1;
  const double value = static_cast<double>(values[second]);
  const double level = static_cast<double>(levels[second]);
  const std::ptrdiff_t others[3] = {first, first + 2, first + 3};
  double d1[3];
  double d2[3];
  double d3[3];
  double e[3];
  for (int k = 0; k < 3; ++k) {
    d1[k] = static_cast<double>(levels[others[k]]) - level;
    d2[k] = d1[k] * d1[k];
    d3[k] = d2[k] * d1[k];
    e[k] = static_cast<double>(values[others[k]]) - value;
  }
  const double det = det3(d3, d2, d1);
  return {oneNan(value), level, oneNan(det3(e, d2, d1) / det), oneNan(det3(d3, e, d1) / det),
          oneNan(det3(d3, d2, e) / det)};
}

// Segments of no width are never selected and stay zero.
template <bool kCubic>
inline void buildSegments(const float* values, const float* levels, std::ptrdiff_t n,
                          Segment* segments) {
  for (std::ptrdiff_t i = 0; i + 1 < n; ++i) {
    segments[i] = {};
    if (levels[i] < levels[i + 1])
      segments[i] = kCubic ? cubicSegment(values, levels, n, i) : linearSegment(values, levels, i);
  }
}

template <bool kCubic>
inline float evaluate(const Segment& s, float x) {
  const double u = static_cast<double>(x) - s.level;
  if constexpr (kCubic)
    return static_cast<float>(s.value + s.c * u + s.b * u * u + s.a * u * u * u);
  return static_cast<float>(s.value + u * s.c);
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
