#pragma once

// Drivers of the convolutions and of the median with a free mask.

#include <algorithm>
#include <climits>

#include "tests/prim/variants/match.h"

namespace vx::test {

/// Source pixels that the taps of a kernel meet around a pixel: dst(x) takes src(x + anchor - j).
inline Frame reachOf(int columns, int anchorX, int rows, int anchorY) {
  return {std::max(0, columns - 1 - anchorX), std::max(0, rows - 1 - anchorY), std::max(0, anchorX),
          std::max(0, anchorY)};
}

// small weights, or such as leave a 16-bit path; 49 products of 8 bits stay inside 32 bits
inline void drawWeights(Trial& t, Image<int>& kernel, int count) {
  const bool large = t.oneIn(5);
  for (int i = 0; i < count; ++i)
    kernel.set(i, 0, large ? t.uniform(-150000, 150000) : t.uniform(-8, 16));
}
inline int drawDivisor(Trial& t) {
  return t.oneIn(3) ? t.pick({0, 1, -1, -3, -4, INT_MAX, INT_MIN, 1 << 20, 1 << 30})
                    : t.pick({1, 2, 3, 4, 5, 7, 9, 10, 16, 25, 49, 256, 1000});
}

// a row or a column of weights, those of bytes with a divisor
template <class T, class W, class... Divisor>
void drive(const Prim& entry,
           Row<const T*, int, T*, int, int, int, const W*, int, int, Divisor...> row) {
  forTrials(entry, [&](Trial& t) {
    const int taps = t.pick({0, 1, 2, 3, 4, 5, 7, 8, 11});
    const int anchor = t.oneIn(6) ? t.pick({-1, taps}) : t.uniform(0, std::max(0, taps - 1));
    const int divisor = sizeof...(Divisor) == 0 ? 1 : drawDivisor(t);
    auto kernel = list<W>(t, Role::read, std::max(1, taps));
    if constexpr (std::is_same_v<W, int>) drawWeights(t, kernel, taps);
    Image<T> src(t, Role::read, {1, 1},
                 entry.has("Row") ? reachOf(taps, anchor, 1, 0) : reachOf(1, 0, taps, anchor));
    Image<T> dst(t, Role::write);
    match(entry, t, row, {&src, &dst, &kernel},
          taps < 1 || divisor == 0 ? Expect::anything : expectIn(entry, t), src.data(), src.step(),
          dst.data(), dst.step(), t.width, t.height, kernel.data(), taps, anchor,
          Divisor{divisor}...);
  });
}

// a rectangle of integer weights
inline void drive(
    const Prim& entry,
    Row<const std::uint8_t*, int, std::uint8_t*, int, int, int, const int*, int, int, int, int, int>
        row) {
  forTrials(entry, [&](Trial& t) {
    const int columns = t.pick({0, 1, 2, 3, 4, 5, 7}), rows = t.pick({0, 1, 2, 3, 4, 5, 7});
    const int anchorX = t.uniform(0, std::max(0, columns - 1));
    const int anchorY = t.uniform(0, std::max(0, rows - 1));
    const int divisor = drawDivisor(t);
    auto kernel = list<int>(t, Role::read, std::max(1, columns * rows));
    drawWeights(t, kernel, columns * rows);
    Image<std::uint8_t> src(t, Role::read, {1, 1}, reachOf(columns, anchorX, rows, anchorY));
    Image<std::uint8_t> dst(t, Role::write);
    match(entry, t, row, {&src, &dst, &kernel},
          columns * rows < 1 || divisor == 0 ? Expect::anything : expectIn(entry, t), src.data(),
          src.step(), dst.data(), dst.step(), t.width, t.height, kernel.data(), columns, rows,
          anchorX, anchorY, divisor);
  });
}

// a median of any odd size; the last two are even or negative and refused
inline void drive(
    const Prim& entry,
    Row<const std::uint8_t*, int, std::uint8_t*, int, int, int, int, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const int maskWidth = t.pick({1, 3, 5, 1, 3, 5, 7, 9, 4, -3});
    const int maskHeight = t.pick({1, 3, 5, 1, 3, 5, 7, 9, 3, 0});
    const bool centred = t.oneIn(2);
    const int x = std::max(0, maskWidth), y = std::max(0, maskHeight);
    const int anchorX = centred ? maskWidth / 2 : t.uniform(-1, x);
    const int anchorY = centred ? maskHeight / 2 : t.uniform(-1, y);
    // The window begins at the anchor's distance before the pixel.
    Image<std::uint8_t> src(t, Role::read, {1, 1}, reachOf(x, x - 1 - anchorX, y, y - 1 - anchorY));
    Image<std::uint8_t> dst(t, Role::write);
    match(entry, t, row, {&src, &dst},
          x % 2 == 1 && y % 2 == 1 && centred ? expectIn(entry, t) : Expect::anything, src.data(),
          src.step(), dst.data(), dst.step(), t.width, t.height, maskWidth, maskHeight, anchorX,
          anchorY);
  });
}

}  // namespace vx::test
