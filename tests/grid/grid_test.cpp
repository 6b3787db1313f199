#include "tests/grid/reference.h"
#include "tests/support/float_mode.h"
#include "vxenhlib/grid/bilateral_filter.h"
#include "vxenhlib/grid/bilateral_local_hist_eq.h"
#include "vxenhlib/replicate_border.h"

namespace {

using namespace vx;
using namespace vx::test;

TEST(GridFilter, everyPixelIsThatOfTheReference) {
  const std::tuple<int, int, int, Range> cases[] = {
      {97, 61, 16, {0.0f, 1.0f, 0.1f}},
      {700, 9, 4, {0.0f, 1.0f, 0.04f}},  // rows of several strips
      {97, 61, 6, {0.0f, 1.0f, 0.025f}},
      {97, 61, 6, {0.0f, 1.0f, 0.05f}},
      {160, 40, 7, {0.0f, 1.0f, 0.05f}},
      {120, 33, 2, {0.0f, 1.0f, 0.3f}},
      // A span of 1.0745 takes bins out of their column, by several cells at 0.012.
      {64, 64, 5, {-0.03725f, 1.03725f, 0.012f}},
      {70, 31, 9, {-0.5372f, 0.5373f, 0.02f}},
      // More cells than a bin can say.
      {50, 50, 8, {0.0f, 1.0f, 0.0025f}},
      {50, 50, 8, {0.0f, 1.0f, 1.0f / 253.0f}},
      // Columns share cells, and then nearly all of them.
      {33, 20, 4, {0.0f, 2.0f, 0.5f}},
      {150, 34, 16, {0.0f, 8.0f, 0.5f}},
      {5, 4, 4, {0.0f, 200.0f, 50.0f}},
      {64, 40, 6, {0.0f, 1.0f, 0.005f}},
      {5, 4, 16, {0.0f, 1.0f, 0.1f}},
      {1, 1, 2, {0.0f, 1.0f, 0.1f}},
      {1, 40, 3, {0.0f, 1.0f, 0.1f}},
      {40, 1, 3, {0.0f, 1.0f, 0.1f}}};
  BilateralFilter filter;  // one for all
  for (const auto& [w, h, sample, range] : cases) {
    Plane plane(w, h), guide(w, h), expected(w, h), expectedSelf(w, h), actual(w, h);
    fill(plane, 1);
    fill(guide, 2, 0.6f);
    for (Plane* p : {&plane, &guide})
      paint(*p, [&](int x, int y) { return at(*p, x, y) * std::max(1.0f, range.high); });
    at(plane, w / 2, 0) = at(guide, w / 3, h / 2) = 2.5f;  // beyond the range
    at(plane, 0, h / 2) = at(guide, w - 1, h / 3) = -1.5f;
    at(guide, w / 4, h - 1) = std::nanf("");  // counts as the end of the range
    copyImage(plane, expected);
    copyImage(plane, expectedSelf);
    referenceFilter(expected, guide, range, sample);
    referenceFilter(expectedSelf, plane, range, sample);
    ASSERT_EQ(filter.setupGrid(w, h, range.low, range.high, sample, range.step, 0), kVxrcOk);
    for (const auto& [rows, threads] : kRuns) {
      SCOPED_TRACE(::testing::Message() << w << "x" << h << ", " << range.step << ", " << rows
                                        << " rows, " << threads << " threads");
      const Threads team(threads);
      copyImage(plane, actual);
      ASSERT_EQ(filter.filter(actual, guide, 0.0f, rows), kVxrcOk);
      EXPECT_TRUE(sameBits(expected, actual));
      copyImage(plane, actual);
      ASSERT_EQ(filter.filter(actual, actual, 0.0f, rows), kVxrcOk);
      EXPECT_TRUE(sameBits(expectedSelf, actual)) << "guided by itself";
    }
  }
}

// Bands may fill an axis or overlap; a band with no row or column to repeat is left out.
TEST(ReplicateBorder, bandsAreRepeatedOneAfterTheOther) {
  const auto from = [](int i, int size, int before, int behind) {
    if (behind < size) i = std::min(i, size - behind - 1);
    return before < size ? std::max(i, before) : i;
  };
  for (const auto& [top, bottom, left, right] :
       {std::tuple{1, 1, 3, 3}, {3, 2, 4, 3}, {4, 4, 6, 1}, {5, 1, 0, 7}, {0, 5, 8, 2}}) {
    Plane plane(7, 5), expected(7, 5);
    paint(plane, [](int x, int y) { return static_cast<float>(10 * y + x); });
    paint(expected, [&, top = top, bottom = bottom, left = left, right = right](int x, int y) {
      return static_cast<float>(10 * from(y, 5, top, bottom) + from(x, 7, left, right));
    });
    replicateBorder_32f(plane.data, plane.step, 7, 5, top, bottom, left, right);
    EXPECT_TRUE(sameBits(expected, plane)) << top << ' ' << bottom << ' ' << left << ' ' << right;
  }
}

// What is read is linear in the grid, which takes over a share of that of the call before.
TEST(GridHistory, isBlendedBetweenCalls) {
  Plane input[2] = {{48, 32}, {48, 32}};
  for (unsigned i = 0; i < 2; ++i) fill(input[i], 5 + i);
  BilateralFilter filter;
  BilateralLocalHistEq eq;
  const struct {
    std::function<int()> setUp;
    std::function<int(int, float, Plane&)> call;  // in two ways, and with a share of the past
  } grids[] = {
      {[&] { return filter.setupGrid(48, 32, 0.0f, 1.0f, 8, 0.1f, 1); },
       [&](int way, float share, Plane& to) {
         return copyImage(input[way], to), filter.filter(to, input[1], share);
       }},
      {[&] { return eq.setupGrid(48, 32, 0.0f, 1.0f, 8, 0.1f, 0.0f, 1.0f, 0.0f, 0.5f, 1); },
       [&](int way, float share, Plane& to) {
         return copyImage(input[1], to), eq.equalize(to, way == 0 ? 0.2f : 0.9f, share, 1.0f);
       }}};
  for (const auto& [setUp, call] : grids) {
    Plane result[3] = {{48, 32}, {48, 32}, {48, 32}};
    ASSERT_EQ(setUp(), kVxrcOk);
    EXPECT_EQ(call(0, 1.0f, result[0]), kVxrcOk) << "no past yet";
    EXPECT_EQ(call(1, std::nanf(""), result[1]), kVxrcOk);
    EXPECT_EQ(call(0, 0.25f, result[2]), kVxrcOk);
    EXPECT_GT(largestDifference(result[0], result[1]), 0.01f);
    overPixels(result[2], [&](int x, int y) {
      EXPECT_NEAR(at(result[2], x, y), 0.25f * at(result[1], x, y) + 0.75f * at(result[0], x, y),
                  1e-5f);
    });
    ASSERT_EQ(setUp(), kVxrcOk);
    call(0, 1.0f, result[2]);
    EXPECT_TRUE(sameBits(result[0], result[2])) << "a new set-up forgets";
    call(1, 7.0f, result[2]);
    EXPECT_TRUE(sameBits(result[0], result[2])) << "nothing but the past";
  }
}

TEST(LocalEq, everyPixelIsThatOfTheReference) {
  const std::tuple<int, int, int, EqSettings> cases[] = {
      {120, 70, 16, {0.05f, 0.9f, 1.0f, 0.4f, 0.7f, 0.3f}},
      {120, 70, 50, {0.0f, 1.0f, 0.0f, 0.5f, 1.0f, 1.0f}},
      {97, 61, 6, {0.02f, 0.8f, -0.6f, 0.4f, 0.989f, 0.805f}},
      {97, 61, 20, {0.0f, 1.0f, 2.0f, 0.1f, 0.99f, 0.0f}},
      {31, 9, 4, {0.1f, 0.5f, 0.5f, 0.4f, 0.02f, 0.95f}},
      {90, 40, 7, {0.0f, 1.0f, 0.4f, 0.5f, 0.8f, 0.5f}},
      {90, 40, 7, {0.0f, 1.0f, 0.4f, 0.5f, 0.8f, 0.5f, 0.01f, -0.25f}},
      // More bins than a byte can say.
      {90, 40, 7, {0.0f, 1.0f, 0.4f, 0.5f, 0.8f, 0.5f, 0.002f}},
      {1, 1, 6, {0.0f, 1.0f, 0.0f, 0.5f, 0.5f, 0.5f}},
      {1, 23, 6, {0.0f, 1.0f, 0.0f, 0.5f, 0.5f, 0.5f}},
      {23, 1, 6, {0.0f, 1.0f, 0.0f, 0.5f, 0.5f, 0.5f}},
      // A cell of more pixels than a float counts in steps of 1 from 0.25.
      {4400, 1000, 5000, {0.0f, 1.0f, 0.0f, 0.5f, 1.0f, 0.5f}}};
  BilateralLocalHistEq eq;
  for (const auto& [w, h, sample, s] : cases) {
    Plane image(w, h), expected(w, h), actual(w, h);
    fill(image, 3);
    // What is out of range is counted and read beyond the columns.
    for (int x = 0; x < w; x += 11) at(image, x, h / 2) = x % 2 == 0 ? 1.0f : 1.4f;
    at(image, w - 1, h / 4) = 1.03f;  // by one bin
    for (int x = 0; x < w; x += 17) at(image, x, h / 3) = -0.3f;
    copyImage(image, expected);
    referenceEqualize(expected, sample, s);
    ASSERT_EQ(eq.setupGrid(w, h, s.low, s.low + 1.0f, sample, s.rangeStep, s.outLow, s.outScale,
                           s.peakGain, s.peakPosition, 0),
              kVxrcOk);
    for (const auto& [rows, threads] : kRuns) {
      const Threads team(threads);
      copyImage(image, actual);
      ASSERT_EQ(eq.equalize(actual, s.strength, 0.0f, s.clipScale, rows), kVxrcOk);
      EXPECT_TRUE(sameBits(expected, actual))
          << w << "x" << h << ", " << rows << " rows, " << threads << " threads";
    }
  }
}

}  // namespace
