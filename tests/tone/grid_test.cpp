#include "tests/tone/planes.h"
#include "tests/tone/reference.h"
#include "vxenhlib/bilateral_filter.h"
#include "vxenhlib/bilateral_local_hist_eq.h"
#include "vxenhlib/replicate_border.h"

namespace {

using namespace vx;
using namespace vx::test;

struct FilterCase {
  int width, height, spatialSample;
  Range range;
};

void PrintTo(const FilterCase& c, std::ostream* out) {
  *out << c.width << "x" << c.height << ", " << c.spatialSample << " pixels, " << c.range.low
       << ".." << c.range.high << " by " << c.range.step;
}

class FilterAgainstReference : public ::testing::TestWithParam<FilterCase> {};

TEST_P(FilterAgainstReference, everyPixelBitForBit) {
  const auto [w, h, sample, range] = GetParam();
  const prim::FloatModeGuard floatMode;
  Plane expected(w, h), actual(w, h), guide(w, h);
  fill(expected, 1);
  copyImage(expected, actual);
  fill(guide, 2, 0.6f);
  BilateralFilter filter;
  ASSERT_EQ(filter.setupGrid(w, h, range.low, range.high, sample, range.step, 0), kVxrcOk);

  // The plane guides itself, and the guide is read before it is written.
  Plane self(w, h), selfExpected(w, h);
  copyImage(expected, self);
  copyImage(expected, selfExpected);
  referenceFilter(selfExpected, expected, range, sample);
  ASSERT_EQ(filter.filter(self, self, 0.0f), kVxrcOk);
  EXPECT_TRUE(sameBits(selfExpected, self)) << "guided by itself";

  referenceFilter(expected, guide, range, sample);
  for (const auto& [rows, threads] : kRuns) {
    const Threads team(threads);
    Plane again(w, h);
    copyImage(actual, again);
    filter.bandHeight = rows;
    ASSERT_EQ(filter.filter(again, guide, 0.0f), kVxrcOk);
    EXPECT_TRUE(sameBits(expected, again)) << rows << " rows, " << threads << " threads";
  }
}

// The span of 1.0745 takes bins out of their column, at 0.012 by several cells, at 1.0 / 400 past
// the 256 that a bin can say; 0.3 and 0.5 leave the shallowest columns.
INSTANTIATE_TEST_SUITE_P(Geometries, FilterAgainstReference,
                         ::testing::Values(FilterCase{97, 61, 16, {0.0f, 1.0f, 0.1f}},
                                           FilterCase{97, 61, 6, {0.0f, 1.0f, 0.025f}},
                                           FilterCase{160, 40, 7, {0.0f, 1.0f, 0.05f}},
                                           FilterCase{120, 33, 2, {0.0f, 1.0f, 0.3f}},
                                           FilterCase{64, 64, 5, {-0.03725f, 1.03725f, 0.012f}},
                                           FilterCase{70, 31, 9, {-0.5372f, 0.5373f, 0.02f}},
                                           FilterCase{50, 50, 8, {0.0f, 1.0f, 0.0025f}},
                                           FilterCase{50, 50, 8, {0.0f, 1.0f, 1.0f / 253.0f}},
                                           FilterCase{33, 20, 4, {0.0f, 2.0f, 0.5f}},
                                           FilterCase{5, 4, 16, {0.0f, 1.0f, 0.1f}},
                                           FilterCase{1, 1, 2, {0.0f, 1.0f, 0.1f}},
                                           FilterCase{1, 40, 3, {0.0f, 1.0f, 0.1f}},
                                           FilterCase{40, 1, 3, {0.0f, 1.0f, 0.1f}}));

struct EqCase {
  int width, height, spatialSample;
  EqSettings settings;
};

void PrintTo(const EqCase& c, std::ostream* out) {
  *out << c.width << "x" << c.height << ", " << c.spatialSample << " pixels, strength "
       << c.settings.strength << ", clip " << c.settings.clipScale;
}

class EqAgainstReference : public ::testing::TestWithParam<EqCase> {};

TEST_P(EqAgainstReference, everyPixelBitForBit) {
  const auto [w, h, sample, s] = GetParam();
  const prim::FloatModeGuard floatMode;
  Plane image(w, h), expected(w, h);
  fill(image, 3);
  // What is out of range is counted and read beyond the columns.
  for (int x = 0; x < w; x += 11) at(image, x, h / 2) = x % 2 == 0 ? 1.0f : 1.4f;
  for (int x = 0; x < w; x += 17) at(image, x, h / 3) = -0.3f;
  copyImage(image, expected);
  referenceEqualize(expected, sample, s);
  BilateralLocalHistEq eq;
  ASSERT_EQ(eq.setupGrid(w, h, 0.0f, 1.0f, sample, 0.01f, s.outLow, s.outScale, s.peakGain,
                         s.peakPosition, 0),
            kVxrcOk);
  EXPECT_EQ(eq.gridDepth, 104);
  for (const auto& [rows, threads] : kRuns) {
    const Threads team(threads);
    Plane actual(w, h);
    copyImage(image, actual);
    eq.bandHeight = rows;
    ASSERT_EQ(eq.equalize(actual, s.strength, 0.0f, s.clipScale), kVxrcOk);
    EXPECT_TRUE(sameBits(expected, actual)) << rows << " rows, " << threads << " threads";
  }
}

INSTANTIATE_TEST_SUITE_P(
    Settings, EqAgainstReference,
    ::testing::Values(EqCase{120, 70, 16, {0.05f, 0.9f, 1.0f, 0.4f, 0.7f, 0.3f}},
                      EqCase{120, 70, 50, {0.0f, 1.0f, 0.0f, 0.5f, 1.0f, 1.0f}},
                      EqCase{97, 61, 6, {0.02f, 0.8f, -0.6f, 0.4f, 0.9f, 0.85f}},
                      EqCase{97, 61, 20, {0.0f, 1.0f, 2.0f, 0.1f, 0.99f, 0.0f}},
                      EqCase{31, 9, 4, {0.1f, 0.5f, 0.5f, 0.4f, 0.02f, 0.95f}},
                      EqCase{1, 1, 6, {0.0f, 1.0f, 0.0f, 0.5f, 0.5f, 0.5f}},
                      EqCase{1, 23, 6, {0.0f, 1.0f, 0.0f, 0.5f, 0.5f, 0.5f}},
                      EqCase{23, 1, 6, {0.0f, 1.0f, 0.0f, 0.5f, 0.5f, 0.5f}}));

TEST(GridFilter, sizesFollowTheGeometry) {
  BilateralFilter filter;
  ASSERT_EQ(filter.setupGrid(640, 480, 0.0f, 1.0f, 16, 0.05f, 0), kVxrcOk);
  EXPECT_EQ(filter.gridWidth, 44);
  EXPECT_EQ(filter.gridHeight, 34);
  EXPECT_EQ(filter.gridDepth, 24);
  EXPECT_EQ(filter.setupGrid(10, 10, 0.0f, 2.0f, 1, 0.05f, 0), kVxrcBadSetup);
  EXPECT_EQ(filter.imageWidth, 640) << "nothing changes on a refusal";
  EXPECT_EQ(filter.rangeMax, 1.0f);
  ASSERT_EQ(filter.setupGrid(640, 480, 0.0f, 1.0f, 16, 0.0001f, 0), kVxrcOk);
  EXPECT_EQ(filter.gridDepth, 260) << "no bin reaches deeper";
}

TEST(GridFilter, planesOfOtherSizesAreRefusedUntouched) {
  const prim::FloatModeGuard floatMode;
  BilateralFilter filter;
  Plane plane(20, 10), before(20, 10), other(20, 9);
  fill(plane, 4);
  fill(other, 4);
  copyImage(plane, before);
  EXPECT_EQ(filter.filter(plane, plane, 0.0f), kVxrcSizeMismatch) << "before any set-up";
  ASSERT_EQ(filter.setupGrid(20, 10, 0.0f, 1.0f, 4, 0.1f, 0), kVxrcOk);
  EXPECT_EQ(filter.filter(plane, other, 0.0f), kVxrcSizeMismatch);
  EXPECT_EQ(filter.filter(other, plane, 0.0f), kVxrcSizeMismatch);
  filter.releaseGrid();
  EXPECT_EQ(filter.filter(plane, plane, 0.0f), kVxrcSizeMismatch) << "after the release";
  EXPECT_TRUE(sameBits(before, plane));
  BilateralLocalHistEq eq;
  EXPECT_EQ(eq.equalize(plane, 1.0f, 0.0f, 1.0f), kVxrcSizeMismatch);
  EXPECT_TRUE(sameBits(before, plane));
}

TEST(GridFilter, aFlatPlaneComesBack) {
  const prim::FloatModeGuard floatMode;
  for (const float value : {0.0f, 0.1f, 0.25f, 0.62f, 0.999f}) {
    Plane plane(70, 50), flat(70, 50);
    prim::primSet_32f_C1R(value, plane.data, plane.step, 70, 50);
    copyImage(plane, flat);
    BilateralFilter filter;
    ASSERT_EQ(filter.setupGrid(70, 50, 0.0f, 1.0f, 8, 0.1f, 0), kVxrcOk);
    ASSERT_EQ(filter.filter(plane, plane, 0.0f), kVxrcOk);
    // Each of the 64 additions to a cell may round by half a unit.
    EXPECT_LE(largestDifference(flat, plane), 64 * 6e-8f * value) << value;
  }
}

// The cell of a guide at rangeMax is the layer that the border replication overwrites.
TEST(GridFilter, aFlatPlaneOfExactlyOneDoesNotComeBack) {
  const prim::FloatModeGuard floatMode;
  Plane plane(40, 40);
  prim::primSet_32f_C1R(1.0f, plane.data, plane.step, 40, 40);
  BilateralFilter filter;
  ASSERT_EQ(filter.setupGrid(40, 40, 0.0f, 1.0f, 8, 0.1f, 0), kVxrcOk);
  ASSERT_EQ(filter.filter(plane, plane, 0.0f), kVxrcOk);
  EXPECT_EQ(at(plane, 20, 20), 0.0f);
}

TEST(GridFilter, historyIsBlendedBetweenCalls) {
  const prim::FloatModeGuard floatMode;
  Plane first(48, 32), second(48, 32), plain(48, 32), blended(48, 32), guide(48, 32);
  fill(first, 5);
  fill(second, 6);
  fill(guide, 7);
  BilateralFilter filter;
  const auto run = [&](const Plane& from, Plane& to, float blend) {
    copyImage(from, to);
    ASSERT_EQ(filter.filter(to, guide, blend), kVxrcOk);
  };
  ASSERT_EQ(filter.setupGrid(48, 32, 0.0f, 1.0f, 8, 0.1f, 1), kVxrcOk);
  EXPECT_EQ(filter.firstFrame, 1);
  Plane firstResult(48, 32), secondResult(48, 32);
  run(first, firstResult, 1.0f);  // no history yet
  EXPECT_EQ(filter.firstFrame, 0);
  run(second, secondResult, 0.0f);
  run(first, blended, 0.25f);
  for (int x = 0; x < 48; ++x)
    EXPECT_NEAR(at(blended, x, 16),
                0.25f * at(secondResult, x, 16) + 0.75f * at(firstResult, x, 16), 1e-5f);
  // A new set-up forgets.
  ASSERT_EQ(filter.setupGrid(48, 32, 0.0f, 1.0f, 8, 0.1f, 1), kVxrcOk);
  run(first, plain, 1.0f);
  EXPECT_TRUE(sameBits(firstResult, plain));
}

// More pixels in one cell than a float counts in steps of 1 from 0.25.
TEST(LocalEq, cellsOfMillionsOfPixelsCountExactly) {
  const prim::FloatModeGuard floatMode;
  const int w = 4400, h = 1000;
  Plane plane(w, h), expected(w, h);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) at(plane, x, y) = x * 7 % 50 == 0 ? 0.8f : 0.3f;
  copyImage(plane, expected);
  const EqSettings s = {0.0f, 1.0f, 0.0f, 0.5f, 1.0f, 0.5f};
  referenceEqualize(expected, 5000, s);
  BilateralLocalHistEq eq;
  ASSERT_EQ(eq.setupGrid(w, h, 0.0f, 1.0f, 5000, 0.01f, 0.0f, 1.0f, 0.0f, 0.5f, 0), kVxrcOk);
  ASSERT_EQ(eq.equalize(plane, 1.0f, 0.0f, 0.5f), kVxrcOk);
  EXPECT_TRUE(sameBits(expected, plane));
}

TEST(LocalEq, valueZeroReadsTheFloorAndCurvesRise) {
  const prim::FloatModeGuard floatMode;
  Plane plane(100, 60);
  fill(plane, 8);
  for (int x = 0; x < 100; ++x) at(plane, x, 30) = static_cast<float>(x) / 100.0f;
  at(plane, 50, 10) = 0.0f;
  BilateralLocalHistEq eq;
  // One cell for the whole plane: one curve.
  ASSERT_EQ(eq.setupGrid(100, 60, 0.0f, 1.0f, 500, 0.01f, 0.07f, 0.9f, 0.5f, 0.4f, 0), kVxrcOk);
  ASSERT_EQ(eq.equalize(plane, 0.8f, 0.0f, 0.6f), kVxrcOk);
  EXPECT_NEAR(at(plane, 50, 10), 0.07f, 1e-6f);
  for (int x = 1; x < 100; ++x) EXPECT_GE(at(plane, x, 30), at(plane, x - 1, 30));
  EXPECT_LE(at(plane, 99, 30), 0.07f + 0.9f * 0.93f + 1e-6f);
}

TEST(LocalEq, noStrengthOrNoLimitIsAlmostTheIdentity) {
  const prim::FloatModeGuard floatMode;
  struct {
    float strength, clipScale;
  } const settings[] = {{0.0f, 1.0f}, {1.0f, 0.0f}};
  for (const auto& s : settings) {
    Plane plane(100, 60), before(100, 60);
    fill(plane, 9);
    copyImage(plane, before);
    BilateralLocalHistEq eq;
    ASSERT_EQ(eq.setupGrid(100, 60, 0.0f, 1.0f, 20, 0.01f, 0.0f, 1.0f, 0.0f, 0.5f, 0), kVxrcOk);
    ASSERT_EQ(eq.equalize(plane, s.strength, 0.0f, s.clipScale), kVxrcOk);
    EXPECT_LE(largestDifference(before, plane), 0.01f) << s.strength << " " << s.clipScale;
  }
}

TEST(ReplicateBorder, takesTheNearestInnerElementAndNothingElse) {
  constexpr int kWidth = 9, kHeight = 7;
  std::vector<float> data((kWidth + 2) * (kHeight + 2)), expected;
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<float>(i);
  expected = data;
  const auto cell = [](int x, int y) {
    return static_cast<std::size_t>((y + 1) * (kWidth + 2) + x + 1);
  };
  const int top = 1, bottom = 3, left = 2, right = 4;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      expected[cell(x, y)] = data[cell(std::clamp(x, left, kWidth - right - 1),
                                       std::clamp(y, top, kHeight - bottom - 1))];
  replicateBorder_32f(&data[cell(0, 0)], (kWidth + 2) * 4, kWidth, kHeight, top, bottom, left,
                      right);
  EXPECT_EQ(data, expected);
  replicateBorder_32f(&data[cell(0, 0)], (kWidth + 2) * 4, kWidth, kHeight, 0, 0, 0, 0);
  replicateBorder_32f(&data[cell(0, 0)], (kWidth + 2) * 4, kWidth, kHeight, 4, 3, 9, 0);
  EXPECT_EQ(data, expected) << "bands without an inner element";
}

}  // namespace
