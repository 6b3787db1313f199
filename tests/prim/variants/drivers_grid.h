#pragma once

// Drivers of the primitives over a grid of place and value.

#include "prim/grid.h"
#include "tests/prim/variants/match.h"

namespace vx::test {

/// An axis that meets the trial's values, or one that they miss on both sides.
inline prim::GridAxis drawAxis(Trial& t) {
  const float low = t.pick({0.0f, -8.0f, 10.0f});
  return {t.oneIn(2),
          low,
          low + t.pick({1.0f, 100.0f, 255.0f}),
          t.pick({low, 0.0f}),
          t.pick({0.125f, 1.0f, 8.3f, 200.0f}),
          t.pick({0.0f, 0.5f, 2.0f}),
          t.pick<std::uint8_t>({0, 1, 11, 255})};
}

// the cell of each value
inline void drive(const Prim& entry,
                  Row<const float*, std::uint8_t*, int, const prim::GridAxis*> row) {
  forTrials(entry, [&](Trial& t) {
    auto src = list<float>(t, Role::read, t.width);
    auto dst = list<std::uint8_t>(t, Role::write, t.width);
    const prim::GridAxis axis = drawAxis(t);
    match(entry, t, row, {&src, &dst}, Expect::success, src.data(), dst.data(), t.width, &axis);
  });
}

// four neighbours side by side
inline void drive(const Prim& entry, Row<const float*, const float*, int, float*, int> row) {
  forTrials(entry, [&](Trial& t) {
    const int depth = t.uniform(1, 30), cells = t.width;
    auto near = list<float>(t, Role::read, cells + depth);
    auto far = list<float>(t, Role::read, cells + depth);
    auto packed = list<float>(t, Role::write, 4 * cells);
    match(entry, t, row, {&near, &far, &packed}, Expect::success, near.data(), far.data(), depth,
          packed.data(), cells);
  });
}

// the trilinear read, into a destination of its own and into the guide
inline void drive(const Prim& entry, Row<const float*, float*, int, const prim::GridAxis*,
                                         const float*, const int*, const float*, float>
                                         row) {
  constexpr int kCells = 257;
  forTrials(entry, [&](Trial& t) {
    const prim::GridAxis axis = drawAxis(t);
    const int depth = t.uniform(1, 30), columns = t.uniform(1, 9);
    const float rowFraction = t.pick({0.0f, 0.25f, 0.7f});
    auto guide = list<float>(t, Role::write, t.width);
    auto dst = list<float>(t, Role::write, t.width);
    auto packed = list<float>(t, Role::read, 4 * (depth * (columns - 1) + kCells));
    auto column = list<int>(t, Role::read, t.width);
    auto fraction = list<float>(t, Role::read, t.width);
    for (int x = 0; x < t.width; ++x) {
      column.set(x, 0, depth * (x * columns / t.width));
      fraction.set(x, 0, static_cast<float>(x % 16) * 0.0625f);
    }
    const Images images = {&guide, &dst, &packed, &column, &fraction};
    match(entry, t, row, images, Expect::success, guide.data(), dst.data(), t.width, &axis,
          packed.data(), column.data(), fraction.data(), rowFraction);
    match(entry, t, row, images, Expect::success, guide.data(), guide.data(), t.width, &axis,
          packed.data(), column.data(), fraction.data(), rowFraction);
  });
}

}  // namespace vx::test
