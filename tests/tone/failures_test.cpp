// Memory that runs short at every allocation in turn, sizes that fit nothing, and values that no
// picture holds.

#include "tests/grid/reference.h"
#include "tests/support/float_mode.h"
#include "tests/support/heap.h"
#include "tests/tone/reference.h"
#include "vxenhlib/grid/bilateral_filter.h"
#include "vxenhlib/grid/bilateral_local_hist_eq.h"
#include "vxenhlib/tone/unsharp_mask.h"

namespace {

using namespace vx;
using namespace vx::test;

constexpr float kInf = std::numeric_limits<float>::infinity();

int setUp(BilateralFilter& f, int w, int h, Range r = {0.0f, 1.0f, 0.1f}, int sample = 8) {
  return f.setupGrid(w, h, r.low, r.high, sample, r.step, 1);
}
int setUp(BilateralLocalHistEq& e, int w, int h, Range r = {0.0f, 1.0f, 0.1f}, int sample = 8) {
  return e.setupGrid(w, h, r.low, r.high, sample, r.step, 0.0f, 1.0f, 0.0f, 0.5f, 1);
}
int run(BilateralFilter& f, Plane& p) { return f.filter(p, p, 0.0f); }
int run(BilateralLocalHistEq& e, Plane& p) { return e.equalize(p, 1.0f, 0.0f, 1.0f); }

template <class Grid>
class Grids : public ::testing::Test {};
using GridTypes = ::testing::Types<BilateralFilter, BilateralLocalHistEq>;
TYPED_TEST_SUITE(Grids, GridTypes);

TYPED_TEST(Grids, reportMissingMemoryAndLeaveThePlane) {
  Plane before(40, 30), plane(40, 30);
  fill(before, 21);
  copyImage(before, plane);
  int setUpFailures = 0;
  bool anyRefused = true;
  for (int refused = 0; anyRefused; ++refused) {
    const Heap heap(refused);
    {
      TypeParam grid;
      const bool ready = setUp(grid, 40, 30) == kVxrcOk;
      const int done = run(grid, plane);
      anyRefused = Heap::refusedOne();
      if (!ready) ++setUpFailures;
      EXPECT_EQ(done, !ready ? kVxrcSizeMismatch : anyRefused ? kVxrcNoMemory : kVxrcOk);
      EXPECT_TRUE(!anyRefused || sameBits(before, plane));
      EXPECT_EQ(setUp(grid, 40, 30), kVxrcOk) << "memory is back";
    }
    EXPECT_EQ(Heap::live(), 0) << "after refusal " << refused;
  }
  EXPECT_GE(setUpFailures, 4);
}

TYPED_TEST(Grids, refuseWhatDoesNotFit) {
  const std::tuple<int, int, Range, int, int> cases[] = {
      {50, 50, {1.0f, 0.0f, 0.1f}, 8, kVxrcNoMemory},
      {-500, 50, {0.0f, 1.0f, 0.1f}, 8, kVxrcNoMemory},
      {50, INT_MIN, {0.0f, 1.0f, 0.1f}, 2, kVxrcNoMemory},
      {INT_MAX, INT_MAX, {0.0f, 1.0f, 0.1f}, 2, kVxrcNoMemory},
      {50, 50, {0.0f, 1.0f, 0.1f}, 1, kVxrcBadSetup}};
  TypeParam grid;
  Plane plane(20, 10), before(20, 10), other(20, 9), none(0, 0);
  fill(plane, 4);
  copyImage(plane, before);
  for (const auto& [width, height, range, sample, result] : cases) {
    EXPECT_EQ(setUp(grid, width, height, range, sample), result);
    EXPECT_EQ(run(grid, plane), kVxrcSizeMismatch) << "without a grid";
  }
  ASSERT_EQ(setUp(grid, 20, 10), kVxrcOk);
  EXPECT_EQ(setUp(grid, 20, 9, {0.0f, 2.0f, 0.1f}, 1), kVxrcBadSetup);
  EXPECT_EQ(grid.imageHeight, 10) << "nothing changes on this refusal";
  EXPECT_EQ(run(grid, other), kVxrcSizeMismatch);
  grid.releaseGrid();
  EXPECT_EQ(run(grid, plane), kVxrcSizeMismatch) << "after the release";
  EXPECT_TRUE(sameBits(before, plane));
  ASSERT_EQ(setUp(grid, 0, 0), kVxrcOk);
  EXPECT_EQ(run(grid, none), kVxrcOk);
}

AdjustToneStage everything(int saturationMode) {
  AdjustToneStage stage = fullSetting();
  stage.saturation.mode = saturationMode;
  stage.saturation.detailRange = 0.1f;
  return stage;
}

TEST(ToneMemory, theStageLeavesOutStepsAndLeaksNothing) {
  IMG3<float> before(40, 30), image(40, 30);
  fill(before, 22);
  for (const int mode : {0, 2})
    for (const bool stays : {false, true}) {
      const Threads team(stays ? 1 : 2);
      int refused = 0;
      for (bool anyRefused = true; anyRefused; ++refused) {
        copyImage(before, image);
        const Heap heap(refused, stays);
        EXPECT_EQ(everything(mode).apply(image), 0);
        EXPECT_EQ(Heap::live(), 0);
        anyRefused = Heap::refusedOne();
        for (int i = 0; i < 120; ++i)
          EXPECT_TRUE(image.row(15)[i] >= 0.0f && image.row(15)[i] <= 1.0f);
      }
      EXPECT_GT(refused, 20);
    }
}

TEST(ToneMemory, imagesWithoutMemoryAreLeftAlone) {
  Plane none(INT_MAX / 2, 3), empty(0, 0);
  IMG3<float> noImage(0, 5);
  ASSERT_EQ(none.data, nullptr);
  AdjustToneStage stage = everything(0);
  EXPECT_EQ(stage.apply(noImage), 0);
  EXPECT_EQ(stage.lightness.apply(none), 0);
  EXPECT_EQ(stage.saturation.apply(empty), 0);
  stage.lightness.splitBaseDetail(none, empty);
  EXPECT_EQ(UnsharpMask().apply(none), 0);
}

// For the sanitizers: nothing may be read or written outside, whatever the numbers are.
TEST(ToneBadValues, noSettingAndNoPixelLeavesTheMemory) {
  const Threads one(1);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float values[] = {nan, kInf, -kInf, 3.0e38f, -3.0e38f, 0.0f, -1.0f, 1.0f, 1e-30f, 4.5f};
  for (const float bad : values) {
    IMG3<float> image(45, 31);
    Plane plane(45, 31), guide(45, 31);
    fill(image, 23);
    fill(plane, 24);
    for (int i = 0; i < 40; ++i) {
      image.row(i % 31)[(i * 37) % 135] = values[i % 10];
      at(plane, (i * 7) % 45, i % 31) = values[(i + 3) % 10];
    }
    copyImage(plane, guide);
    for (const int mode : {0, 1, 2, 3}) {
      AdjustToneStage stage = everything(mode);
      EXPECT_EQ(stage.apply(image), 0);
      stage.sharpenSigma = stage.saturation.brightness = bad;
      stage.saturation.highKnee = stage.saturation.detailRange = bad;
      EXPECT_EQ(stage.apply(image), 0);
    }
    for (const Range r : {Range{0.0f, 1.0f, bad}, {bad, 1.0f, 0.1f}, {0.0f, bad, 0.1f}}) {
      BilateralFilter filter;
      if (setUp(filter, 45, 31, r, 6) == kVxrcOk) filter.filter(plane, guide, bad);
      BilateralLocalHistEq eq;
      if (std::fabs(r.step) > 1e-4f &&
          eq.setupGrid(45, 31, r.low, r.high, 6, r.step, bad, 1.0f, bad, bad, 0) == kVxrcOk)
        eq.equalize(plane, bad, bad, bad);
    }
  }
}

}  // namespace
