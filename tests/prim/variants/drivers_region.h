#pragma once

// Drivers of the primitives that look at more than one element: filters, geometry, reductions.

#include <algorithm>
#include <cmath>
#include <memory>

#include "prim/deconvolution.h"
#include "tests/prim/variants/match.h"
#include "tests/prim/variants/settings.h"

namespace vx::test {

/// Source pixels that the taps of a kernel meet beside a row: dst(x) takes src(x + anchor - j).
struct Reach {
  int before, after;
};
inline Reach reachOf(int taps, int anchor) {
  return {std::max(0, taps - 1 - anchor), std::max(0, anchor)};
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

// a row or a column of float weights
inline void drive(const Prim& entry,
                  Row<const float*, int, float*, int, int, int, const float*, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const int taps = t.pick({0, 1, 2, 3, 4, 5, 7, 8, 11});
    const int anchor = t.oneIn(6) ? t.pick({-1, taps}) : t.uniform(0, std::max(0, taps - 1));
    const Reach reach = reachOf(taps, anchor);
    auto kernel = list<float>(t, Role::read, std::max(1, taps));
    Image<float> src(t, Role::read, {1, 1},
                     entry.has("Row") ? Frame{reach.before, 0, reach.after, 0}
                                      : Frame{0, reach.before, 0, reach.after});
    Image<float> dst(t, Role::write);
    match(entry, t, row, {&src, &dst, &kernel}, taps < 1 ? Expect::anything : expectIn(t),
          src.data(), src.step(), dst.data(), dst.step(), t.width, t.height, kernel.data(), taps,
          anchor);
  });
}

// a row or a column of integer weights
inline void drive(
    const Prim& entry,
    Row<const std::uint8_t*, int, std::uint8_t*, int, int, int, const int*, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const int taps = t.pick({0, 1, 2, 3, 4, 5, 7, 8, 11});
    const int anchor = t.uniform(0, std::max(0, taps - 1));
    const Reach reach = reachOf(taps, anchor);
    const int divisor = drawDivisor(t);
    auto kernel = list<int>(t, Role::read, std::max(1, taps));
    drawWeights(t, kernel, taps);
    Image<std::uint8_t> src(t, Role::read, {1, 1},
                            entry.has("Row") ? Frame{reach.before, 0, reach.after, 0}
                                             : Frame{0, reach.before, 0, reach.after});
    Image<std::uint8_t> dst(t, Role::write);
    match(entry, t, row, {&src, &dst, &kernel},
          taps < 1 || divisor == 0 ? Expect::anything : expectIn(t), src.data(), src.step(),
          dst.data(), dst.step(), t.width, t.height, kernel.data(), taps, anchor, divisor);
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
    const Reach x = reachOf(columns, anchorX), y = reachOf(rows, anchorY);
    const int divisor = drawDivisor(t);
    auto kernel = list<int>(t, Role::read, std::max(1, columns * rows));
    drawWeights(t, kernel, columns * rows);
    Image<std::uint8_t> src(t, Role::read, {1, 1}, {x.before, y.before, x.after, y.after});
    Image<std::uint8_t> dst(t, Role::write);
    match(entry, t, row, {&src, &dst, &kernel},
          columns * rows < 1 || divisor == 0 ? Expect::anything : expectIn(t), src.data(),
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
    const int anchorX = centred ? maskWidth / 2 : t.uniform(-1, std::max(0, maskWidth));
    const int anchorY = centred ? maskHeight / 2 : t.uniform(-1, std::max(0, maskHeight));
    const int x = std::max(0, maskWidth), y = std::max(0, maskHeight);
    const bool odd = maskWidth > 0 && maskWidth % 2 == 1 && maskHeight > 0 && maskHeight % 2 == 1;
    const Frame frame = centred ? Frame{x / 2, y / 2, x / 2, y / 2} : Frame{x, y, x, y};
    Image<std::uint8_t> src(t, Role::read, {1, 1}, frame);
    Image<std::uint8_t> dst(t, Role::write);
    match(entry, t, row, {&src, &dst}, odd && centred ? expectIn(t) : Expect::anything, src.data(),
          src.step(), dst.data(), dst.step(), t.width, t.height, maskWidth, maskHeight, anchorX,
          anchorY);
  });
}

// pyramid levels with a caller's buffer
inline void drive(const Prim& entry, Row<const float*, int, float*, int, int, int, void*> row) {
  const bool down = entry.has("Down");
  forTrials(entry, [&](Trial& t) {
    int bufferBytes = 0;
    const int known = down ? prim::primPyrDownGetBufSize(t.width, 13, 1, &bufferBytes)
                           : prim::primPyrUpGetBufSize(t.width, 13, 1, &bufferBytes);
    ASSERT_EQ(known, prim::kStatusOk);
    auto buffer = list<std::uint8_t>(t, Role::scratch, bufferBytes);
    Image<float> src(t, Role::read);
    Image<float> dst(
        t, Role::write,
        Shape{down ? (t.width + 1) / 2 : 2 * t.width, down ? (t.height + 1) / 2 : 2 * t.height});
    match(entry, t, row, {&src, &dst, &buffer}, expectIn(t), src.data(), src.step(), dst.data(),
          dst.step(), t.width, t.height, buffer.data());
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
    match(entry, t, row, {&src, &dst}, good ? expectIn(t) : Expect::anything, src.data(), srcWidth,
          srcHeight, src.step(), x, y, t.width, t.height, dst.data(), dst.step(), dstWidth,
          dstHeight, xFactor, yFactor, interpolation);
  });
}

// deconvolution: a fresh state for every call, since its scratch must not matter
inline void drive(
    const Prim& entry,
    Row<const float*, int, float*, int, int, int, int, prim::primDeconvLRState*> row) {
  const auto release = [](prim::primDeconvLRState* s) { prim::primDeconvLRFree_32f_C1R(s); };
  using State = std::unique_ptr<prim::primDeconvLRState, decltype(release)>;
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
      return State(state, release);
    };
    Image<float> src(t, Role::read), dst(t, Role::write);
    const Images images = {&src, &dst, &kernel};
    matchColumns(bodyColumns(), images, iterations < 1 ? Expect::anything : expectIn(t),
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

// Largest error of a sum of n floats, in which no element passes through more than `additions`
// roundings to single precision: N. J. Higham, Accuracy and Stability of Numerical Algorithms
// (2002), section 4.2.
inline double sumBound(double additions, double magnitudes) {
  const double unit = additions * 0x1p-24;
  return unit / (1 - unit) * magnitudes;
}

// Sum and mean of floats. The generic body adds even and odd elements, the others 16 lanes: these
// agree bit for bit, and all of them with the exact sum as far as their roundings allow.
inline void drive(const Prim& entry, Row<const float*, int, int, int, double*, int> row) {
  const std::vector<int> all = bodyColumns(), wide(all.begin() + 1, all.end());
  forTrials(entry, [&](Trial& t) {
    Image<float> src(t, Role::read);
    auto result = list<double>(t, Role::write, 1);
    const int hint = t.pick({0, 1, 2});
    const Images images = {&src, &result};
    const auto call = [&](int column) {
      return row[column](src.data(), src.step(), t.width, t.height, result.data(), hint);
    };
    matchColumns(wide, images, expectIn(t), call);
    const double vector = result.get(0);
    matchColumns({0}, images, expectIn(t), call);
    const double generic = result.get(0);
    if (t.number() % 23 == 0)
      matchBadArguments(entry, images, row,
                        {src.data(), src.step(), t.width, t.height, result.data(), hint});
    if (t.fill == Fill::wild || t.bottomUp) return;

    double sum = 0, magnitudes = 0;
    for (int y = 0; y < t.height; ++y)
      for (int x = 0; x < t.width; ++x) {
        sum += double{src.get(x, y)};
        magnitudes += std::abs(double{src.get(x, y)});
      }
    const double count = double(t.width) * t.height, scale = entry.has("Mean") ? 1 / count : 1;
    const double inDouble = count * 0x1p-52 * magnitudes;
    EXPECT_NEAR(generic, sum * scale, (sumBound(count / 2 + 2, magnitudes) + inDouble) * scale);
    const double perLane = double((t.width + 15) / 16) * t.height;
    EXPECT_NEAR(vector, sum * scale, (sumBound(perLane + 4, magnitudes) + inDouble) * scale);
  });
}

// one result
template <class T, class R>
void drive(const Prim& entry, Row<const T*, int, int, int, R*> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> src(t, Role::read);
    auto result = list<R>(t, Role::write, 1);
    match(entry, t, row, {&src, &result}, expectIn(t), src.data(), src.step(), t.width, t.height,
          result.data());
  });
}

// a value and its place
inline void drive(const Prim& entry, Row<const float*, int, int, int, float*, int*, int*> row) {
  forTrials(entry, [&](Trial& t) {
    Image<float> src(t, Role::read);
    auto min = list<float>(t, Role::write, 1);
    auto x = list<int>(t, Role::write, 1), y = list<int>(t, Role::write, 1);
    match(entry, t, row, {&src, &min, &x, &y}, expectIn(t), src.data(), src.step(), t.width,
          t.height, min.data(), x.data(), y.data());
  });
}

// one result of two images
template <class T>
void drive(const Prim& entry, Row<const T*, int, const T*, int, int, int, double*> row) {
  forTrials(entry, [&](Trial& t) {
    Image<T> a(t, Role::read), b(t, Role::read);
    auto result = list<double>(t, Role::write, 1);
    match(entry, t, row, {&a, &b, &result}, expectIn(t), a.data(), a.step(), b.data(), b.step(),
          t.width, t.height, result.data());
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
    match(entry, t, row, {&src, &counts, &levels}, count < 2 ? Expect::anything : expectIn(t),
          src.data(), src.step(), t.width, t.height, counts.data(), levels.data(), count);
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

}  // namespace vx::test
