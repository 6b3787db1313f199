#pragma once

// Drivers of the primitives whose images differ in size, and of those with a state or a table.

#include <algorithm>
#include <memory>
#include <utility>

#include "prim/deconvolution.h"
#include "prim/grid.h"
#include "tests/prim/variants/match.h"

namespace vx::test {

// source into a larger destination
template <class T>
void drive(const Prim& entry, Row<const T*, int, int, int, T*, int, int, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const int left = t.uniform(0, 20), top = t.uniform(0, 4);
    // one time in 8 the source does not fit or lies outside
    const bool misplaced = t.oneIn(8);
    const int dstWidth = left + t.width + t.uniform(0, 20);
    const int dstHeight = top + t.height + t.uniform(0, 4);
    Image<T> src(t, Role::read, entry.source);
    Image<T> dst(t, Role::write, Shape{dstWidth, dstHeight, entry.destination});
    match(entry, t, row, {&src, &dst}, misplaced ? Expect::anything : expectIn(entry, t),
          src.data(), src.step(), t.width, t.height, dst.data(), dst.step(), dstWidth, dstHeight,
          misplaced ? t.pick({-1, dstHeight, top}) : top,
          misplaced ? t.pick({-1, dstWidth}) : left);
  });
}

/// Rising levels over the range of the trial's values; a few repeat, so that segments are empty.
template <class T>
void drawRising(Trial& t, Image<T>& levels, int count) {
  const bool repeats = t.oneIn(4);
  double level = t.fill == Fill::unit || t.fill == Fill::few ? 0.0 : -64.0;
  const double range = t.fill == Fill::unit || t.fill == Fill::few ? 1.0 : 400.0;
  for (int i = 0; i < count; ++i) {
    levels.set(i, 0, static_cast<T>(level));
    if (!repeats || !t.oneIn(3)) level += range / count * (0.25 * t.uniform(1, 6));
  }
}

// a curve through given points
template <class T>
void drive(const Prim& entry, Row<T*, int, int, int, const T*, const T*, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> image(t, Role::write);
    const int count = t.pick({0, 1, 2, 3, 4, 5, 9, 17, 64});
    auto values = list<T>(t, Role::read, std::max(1, count));
    auto levels = list<T>(t, Role::read, std::max(1, count));
    if (!t.oneIn(6)) drawRising(t, levels, count);
    match(entry, t, row, {&image, &values, &levels},
          count < 2 ? Expect::anything : expectIn(entry, t), image.data(), image.step(), t.width,
          t.height, values.data(), levels.data(), count);
  });
}

// three planes of one step through a matrix
inline void drive(const Prim& entry, Row<float* const*, int, int, int, const float (*)[4]> row) {
  forTrials(entry, [&](Trial& t) {
    const int padding = t.nextPadding(sizeof(float));
    const Shape shape{t.width, t.height, {}, {}, padding};
    Image<float> r(t, Role::write, shape), g(t, Role::write, shape), b(t, Role::write, shape);
    auto twist = list<float>(t, Role::read, 12);
    const auto matrix = reinterpret_cast<const float(*)[4]>(twist.data());
    float* planes[] = {r.data(), g.data(), b.data()};
    const Images images = {&r, &g, &b, &twist};
    match(entry, t, row, images, expectIn(entry, t), planes, r.step(), t.width, t.height, matrix);
    for (float*& plane : planes) {
      float* const kept = std::exchange(plane, nullptr);
      matchRefusals(images, prim::kStatusNullPtr,
                    [&](int c) { return row[c](planes, r.step(), t.width, t.height, matrix); });
      plane = kept;
    }
  });
}

// pyramid levels with a caller's buffer
inline void drive(const Prim& entry, Row<const float*, int, float*, int, int, int, void*> row) {
  const bool down = entry.has("Down");
  forTrials(entry, [&](Trial& t) {
    int bufferBytes = 0;
    (down ? prim::primPyrDownGetBufSize : prim::primPyrUpGetBufSize)(t.width, 13, 1, &bufferBytes);
    auto buffer = list<std::uint8_t>(t, Role::scratch, bufferBytes);
    Image<float> src(t, Role::read);
    Image<float> dst(
        t, Role::write,
        Shape{down ? (t.width + 1) / 2 : 2 * t.width, down ? (t.height + 1) / 2 : 2 * t.height});
    match(entry, t, row, {&src, &dst, &buffer}, expectIn(entry, t), src.data(), src.step(),
          dst.data(), dst.step(), t.width, t.height, buffer.data());
  });
}

// resampling of a region; the region may touch the source's edges or lie inside
inline void drive(
    const Prim& entry,
    Row<const float*, int, int, int, int, int, int, int, float*, int, int, int, double, double, int>
        row) {
  forTrials(entry, [&](Trial& t) {
    const int x = t.oneIn(2) ? 0 : t.uniform(0, 9), y = t.oneIn(2) ? 0 : t.uniform(0, 9);
    const int srcWidth = x + t.width + (t.oneIn(2) ? 0 : t.uniform(0, 9));
    const int srcHeight = y + t.height + (t.oneIn(2) ? 0 : t.uniform(0, 9));
    const double xFactor = t.pick({0.5, 1.0, 2.0, 0.3, 1.7, 3.0, 0.5, 1.0, 2.0, 0.0, -1.0});
    const double yFactor = t.oneIn(3) ? t.pick({0.5, 1.0, 2.0, 0.4, 1.3, 0.0}) : xFactor;
    const int interpolation = t.oneIn(2) ? 4 : t.pick({1, 2, 4, 8, 16, 0, 3, 32});
    const int dstWidth = std::max(1, int(t.width * xFactor));
    const int dstHeight = std::max(1, int(t.height * yFactor));
    Image<float> src(t, Role::read, Shape{srcWidth, srcHeight});
    Image<float> dst(t, Role::write, Shape{dstWidth, dstHeight});
    const bool good = xFactor > 0 && yFactor > 0 && interpolation == 4;
    match(entry, t, row, {&src, &dst}, good ? expectIn(entry, t) : Expect::anything, src.data(),
          srcWidth, srcHeight, src.step(), x, y, t.width, t.height, dst.data(), dst.step(),
          dstWidth, dstHeight, xFactor, yFactor, interpolation);
  });
}

// deconvolution: a fresh state for every call, since its scratch must not matter
inline void drive(
    const Prim& entry,
    Row<const float*, int, float*, int, int, int, int, prim::primDeconvLRState*> row) {
  using State = std::shared_ptr<prim::primDeconvLRState>;
  forTrials(entry, [&](Trial& t) {
    t.stayFinite();
    const int size = std::min(t.uniform(1, 7), t.height + 2), spare = t.uniform(0, 3);
    auto kernel = list<float>(t, Role::read, size * size);
    for (int i = 0; i < size * size; ++i) kernel.set(i, 0, 0.0625f * float(t.uniform(0, 4)));
    const float threshold = t.pick({0.0f, 1e-4f, 0.3f});
    const int iterations = t.pick({0, 1, 1, 2, 3});
    const auto makeState = [&] {
      prim::primDeconvLRState* state = nullptr;
      EXPECT_EQ(prim::primDeconvLRInitAlloc_32f_C1R(&state, kernel.data(), size,
                                                    t.width + size - 1 + spare,
                                                    t.height + size - 1 + spare, threshold),
                prim::kStatusOk);
      return State(state, prim::primDeconvLRFree_32f_C1R);
    };
    Image<float> src(t, Role::read), dst(t, Role::write);
    const Images images = {&src, &dst, &kernel};
    matchColumns(bodyColumns(), images, iterations < 1 ? Expect::anything : expectIn(entry, t),
                 [&](int column) {
                   const State state = makeState();
                   return row[column](src.data(), src.step(), dst.data(), dst.step(), t.width,
                                      t.height, iterations, state.get());
                 });
    const State state = makeState();
    matchBadArguments(entry, images, row,
                      {src.data(), src.step(), dst.data(), dst.step(), t.width, t.height,
                       iterations, state.get()});
  });
}

// Sum and mean of floats: the generic body adds in another order than all others.
inline void drive(const Prim& entry, Row<const float*, int, int, int, double*, int> row) {
  const std::vector<int> all = bodyColumns(), wide(all.begin() + 1, all.end());
  forTrials(entry, [&](Trial& t) {
    Image<float> src(t, Role::read);
    auto result = list<double>(t, Role::write, 1);
    for (const auto& columns : {wide, {0}})
      matchColumns(columns, {&src, &result}, expectIn(entry, t), [&](int column) {
        return row[column](src.data(), src.step(), t.width, t.height, result.data(), 0);
      });
    if (t.number() % 23 == 0)
      matchBadArguments(entry, {&src, &result}, row,
                        {src.data(), src.step(), t.width, t.height, result.data(), 0});
  });
}

// counts between levels, rising ones but for one time in 6
template <class T>
void drive(const Prim& entry, Row<const T*, int, int, int, int*, const int*, int> row) {
  forTrials(entry, [&](Trial& t) {
    const int count = t.pick({0, 1, 2, 3, 4, 9, 65, 257, 1025});
    const bool rising = !t.oneIn(6);
    Image<T> src(t, Role::read);
    auto counts = list<int>(t, Role::write, std::max(1, count - 1));
    auto levels = list<int>(t, Role::read, std::max(1, count));
    int level = t.pick({-40000, -32768, -3, 0, 100});
    for (int i = 0; i < count; ++i) {
      levels.set(i, 0, level);
      level = rising ? level + t.uniform(1, t.fill == Fill::few ? 2 : 80000 / count)
                     : t.uniform(-40000, 40000);
    }
    match(entry, t, row, {&src, &counts, &levels},
          count < 2 ? Expect::anything : expectIn(entry, t), src.data(), src.step(), t.width,
          t.height, counts.data(), levels.data(), count);
  });
}

// the best of some neighbours along the row, with the two values that come with it
inline void drive(const Prim& entry,
                  Row<const float*, int, const float*, int, const float*, int, float*, int,
                      const float*, int, const float*, int, float*, int, float*, int, int, int>
                      row) {
  forTrials(entry, [&](Trial& t) {
    const int count = t.pick({1, 2, 5, 13});
    const Frame right{0, 0, count - 1, 0};
    Image<float> candidate(t, Role::read, {}, right), target(t, Role::read), best(t, Role::write);
    Image<float> srcU(t, Role::read, {}, right), srcV(t, Role::read, {}, right);
    Image<float> dstU(t, Role::write), dstV(t, Role::write);
    auto weights = list<float>(t, Role::read, count);
    // Packed rows have no room for the neighbours of the last pixel.
    match(entry, t, row, {&candidate, &target, &weights, &best, &srcU, &srcV, &dstU, &dstV},
          t.packed || t.bottomUp ? Expect::anything : Expect::success, candidate.data(),
          candidate.step(), target.data(), target.step(), weights.data(), count, best.data(),
          best.step(), srcU.data(), srcU.step(), srcV.data(), srcV.step(), dstU.data(), dstU.step(),
          dstV.data(), dstV.step(), t.width, t.height);
  });
}

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
