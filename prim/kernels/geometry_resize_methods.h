#pragma once

// Where a resampled pixel takes its samples, and how they are weighted. A method reads kTaps
// samples from `start` on, all inside the region.

#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

struct Nearest {
  static constexpr int kTaps = 1, kCoefficients = 1;
  static int place(double p, int size, float* c) {
    c[0] = 0.0f;
    const int i = static_cast<int>(p + 0.5);
    return i < size ? i : size - 1;
  }
  static float value(const float* p, const float*) { return p[0]; }
};

[[maybe_unused]] inline int window(double p, int before, int taps, int size) {
  const int start = static_cast<int>(p) - before;
  const int last = size - taps;
  return start < 0 ? 0 : start < last ? start : last;
}

struct Linear {
  static constexpr int kTaps = 2, kCoefficients = 1;
  static int place(double p, int size, float* c) {
    const int start = window(p, 0, kTaps, size);
    c[0] = static_cast<float>(p - start);
    return start;
  }
  static float value(const float* p, const float* c) { return p[0] + c[0] * (p[1] - p[0]); }
};

// The cubic through four samples by divided differences.
struct Cubic {
  static constexpr int kTaps = 4, kCoefficients = 3;
  static int place(double p, int size, float* c) {
    const int start = window(p, 1, kTaps, size);
    const float t = static_cast<float>(p - (start + 1));
    c[0] = t + 1.0f;
    c[1] = t * (t + 1.0f) * 0.5f;
    c[2] = (t - 1.0f) * c[1] / 3.0f;
    return start;
  }
  static float value(const float* p, const float* c) {
    const float d1 = p[1] - p[0];
    const float d2 = (p[2] - p[1]) - d1;
    const float d3 = (p[3] + ((p[1] - p[2]) - p[2])) - d2;
    return p[0] + c[0] * d1 + c[1] * d2 + c[2] * d3;
  }
};

// sin(pi * x) for |x| <= 3, by a series of our own: the library's may differ between processors.
[[maybe_unused]] inline double sinPi(double x) {
  const double whole = static_cast<int>(x < 0 ? x - 0.5 : x + 0.5);
  const double y = (x - whole) * 3.14159265358979323846;  // |y| <= pi / 2
  double term = y, sum = y;
  for (int n = 1; n <= 10; ++n) {
    term *= -y * y / ((2 * n) * (2 * n + 1));
    sum += term;
  }
  return static_cast<int>(whole) % 2 == 0 ? sum : -sum;
}

struct Lanczos {
  static constexpr int kTaps = 6, kCoefficients = 6;
  static double weight(double d) {
    if (d <= -3.0 || d >= 3.0) return 0.0;
    const double y = d * 3.14159265358979323846;
    return d == 0.0 ? 1.0 : sinPi(d) * sinPi(d / 3.0) * 3.0 / (y * y);
  }
  static int place(double p, int size, float* c) {
    const int start = window(p, 2, kTaps, size);
    double w[kTaps], sum = 0.0;
    for (int t = 0; t < kTaps; ++t) sum += w[t] = weight(p - (start + t));
    for (int t = 0; t < kTaps; ++t) c[t] = static_cast<float>(w[t] / sum);
    return start;
  }
  static float value(const float* p, const float* c) {
    return p[0] * c[0] + p[1] * c[1] + p[2] * c[2] + p[3] * c[3] + p[4] * c[4] + p[5] * c[5];
  }
};

// The stretch of source samples that one pixel of a reduced image covers.
struct Span {
  int first, last;
  float head, tail;  // weights of the first and the last sample; those between have 1
  float scale;

  Span() = default;
  Span(int d, double factor, int size) {
    const double limit = size - 1;
    double begin = d / factor, end = (d + 1.0) / factor;
    begin = begin < limit ? begin : limit;
    end = end < size ? end : size;
    first = static_cast<int>(begin);
    last = static_cast<int>(end);
    if (last == end) --last;
    if (last < first) last = first;
    head = static_cast<float>((last > first ? first + 1.0 : end) - begin);
    tail = static_cast<float>(end - last);
    scale = static_cast<float>(1.0 / (end - begin));
  }

  float weight(int i) const { return i == first ? head : i == last ? tail : 1.0f; }
  float mean(const float* in) const {
    float sum = head * in[first];
    for (int i = first + 1; i < last; ++i) sum += in[i];
    if (last > first) sum += tail * in[last];
    return sum * scale;
  }
};

}  // namespace
}  // namespace vx::prim::VX_VARIANT
