#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>

#include "tests/prim/paged_image.h"

// Random finite float, normal, of any sign and of widely different magnitudes.
inline float drawFloat(std::mt19937& rng) {
  const float mantissa = static_cast<float>(static_cast<int>(rng() >> 8) - (1 << 23)) + 0.5f;
  return std::ldexp(mantissa, static_cast<int>(rng() % 40) - 43);
}

template <class T>
void fillElements(PagedImage& image, int count, int rows, std::mt19937& rng) {
  if constexpr (std::is_same_v<T, float>)
    for (int y = 0; y < rows; ++y)
      for (int x = 0; x < count; ++x) image.set(x, y, drawFloat(rng));
}

// Expects call(column, a, b, dst, width, height) to set each element of dst to
// oracle(a, b, dst before, channel) and to touch nothing else, in every body and for widths around
// the vector lengths. Rows have different steps, some run from the bottom up, and those of 16-bit
// elements start at odd addresses.
template <class A, class B, class D, class Call, class Oracle>
void expectElements(int channels, Call call, Oracle oracle, bool anyStep = true) {
  constexpr int kRows = 3;
  std::mt19937 rng(7);
  forEachBody([&](int column) {
    for (int width : {1, 2, 3, 5, 8, 13, 16, 17, 31, 33, 47, 64, 67, 131}) {
      if (::testing::Test::HasFatalFailure()) return;
      const int n = width * channels;
      const auto stepOf = [&](int size, int gap) {
        const int step = n * size + gap * size + (size == 2 ? width % 2 : 0);
        return anyStep && (width + gap) % 2 != 0 ? -step : step;
      };
      const int slack = sizeof(D) == 2 ? width % 2 : 0;
      PagedImage a(n * int{sizeof(A)}, kRows, stepOf(sizeof(A), 0), rng);
      PagedImage b(n * int{sizeof(B)}, kRows, stepOf(sizeof(B), 3), rng);
      PagedImage dst(n * int{sizeof(D)}, kRows, stepOf(sizeof(D), 5), rng, slack);
      fillElements<A>(a, n, kRows, rng);
      fillElements<B>(b, n, kRows, rng);
      fillElements<D>(dst, n, kRows, rng);
      PagedImage expected = dst;
      for (int y = 0; y < kRows; ++y)
        for (int x = 0; x < n; ++x)
          expected.set(x, y,
                       static_cast<D>(
                           oracle(a.get<A>(x, y), b.get<B>(x, y), dst.get<D>(x, y), x % channels)));
      ASSERT_EQ(call(column, a, b, dst, width, kRows), 0);
      ASSERT_TRUE(dst == expected) << vx::prim::columnName(column) << ", width " << width;
    }
  });
}
