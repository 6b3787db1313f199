#pragma once

// Medians by networks of comparisons: loops over them become minima and maxima of whole vectors.
// What a network computes beyond the median is dropped by the compiler.

#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

template <class T>
[[maybe_unused]] inline T lower(T a, T b) {
  return a < b ? a : b;
}

template <class T>
[[maybe_unused]] inline T upper(T a, T b) {
  return a < b ? b : a;
}

template <class T>
[[maybe_unused]] inline void order(T& a, T& b) {
  const T low = lower(a, b);
  b = upper(a, b);
  a = low;
}

template <class T>
[[maybe_unused]] inline T median3(T a, T b, T c) {
  return upper(lower(a, b), lower(upper(a, b), c));
}

// Of two pairs, the smaller low end and the larger high end cannot be the median of five.
template <class T>
[[maybe_unused]] inline T median5(T a, T b, T c, T d, T e) {
  return median3(upper(lower(a, b), lower(c, d)), lower(upper(a, b), upper(c, d)), e);
}

template <class T>
[[maybe_unused]] inline void sort3(T& a, T& b, T& c) {
  order(a, b);
  order(b, c);
  order(a, b);
}

// The median of three ascending triples: the largest low, the median middle and the smallest high
// decide (Smith, 1996, Implementing median filters in XC4000E FPGAs).
template <class T>
[[maybe_unused]] inline T medianOfSorted3(T low0, T low1, T low2, T mid0, T mid1, T mid2, T high0,
                                          T high1, T high2) {
  return median3(upper(upper(low0, low1), low2), median3(mid0, mid1, mid2),
                 lower(lower(high0, high1), high2));
}

template <class T>
[[maybe_unused]] inline T median9(T a, T b, T c, T d, T e, T f, T g, T h, T i) {
  sort3(a, b, c);
  sort3(d, e, f);
  sort3(g, h, i);
  return medianOfSorted3(a, d, g, b, e, h, c, f, i);
}

template <class T>
[[maybe_unused]] inline void sort5(T& a, T& b, T& c, T& d, T& e) {
  order(a, b);
  order(d, e);
  order(c, e);
  order(c, d);
  order(b, e);
  order(a, d);
  order(a, c);
  order(b, d);
  order(b, c);
}

// Puts the smallest of n values first and the largest last.
template <int N, class T>
[[maybe_unused]] inline void endsOut(T* v) {
#pragma GCC unroll 8
  for (int i = 0; i < N / 2; ++i) order(v[i], v[N - 1 - i]);
#pragma GCC unroll 8
  for (int i = 1; i <= (N - 1) / 2; ++i) order(v[0], v[i]);
#pragma GCC unroll 8
  for (int i = N / 2; i < N - 1; ++i) order(v[i], v[N - 1]);
}

// The median of 13: of any 8 neither the smallest nor the largest can be it, so both make way for
// the next value, and so on with one candidate fewer each time.
template <class T>
[[maybe_unused]] inline T median13(T v[13]) {
  endsOut<8>(v);
  v[0] = v[8];
  endsOut<7>(v);
  v[0] = v[9];
  endsOut<6>(v);
  v[0] = v[10];
  endsOut<5>(v);
  v[0] = v[11];
  endsOut<4>(v);
  v[0] = v[12];
  return median3(v[0], v[1], v[2]);
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
