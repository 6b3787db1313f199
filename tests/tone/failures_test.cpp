// Memory that runs short at every allocation in turn, and values that no picture holds.

#include <climits>
#include <cstdlib>
#include <limits>

#include "prim/alloc.h"
#include "tests/tone/reference.h"
#include "vxenhlib/adjust_tone_stage.h"
#include "vxenhlib/bilateral_filter.h"
#include "vxenhlib/bilateral_local_hist_eq.h"
#include "vxenhlib/unsharp_mask.h"

namespace {

using namespace vx;
using namespace vx::test;

// Refuses one allocation, and all after it too if told so.
class ShortMemory {
 public:
  ShortMemory(int refused, bool fromThenOn) : saved_(prim::primMemHooks) {
    countdown = refused;
    stays = fromThenOn;
    live = 0;
    prim::primMemHooks.allocate = [](std::size_t size) -> void* {
      if (countdown == 0 || (countdown < 0 && stays)) {
        countdown = -1;
        return nullptr;
      }
      if (countdown > 0) --countdown;
      ++live;
      return std::malloc(size);
    };
    prim::primMemHooks.release = [](void* block) {
      if (block != nullptr) --live;
      std::free(block);
    };
  }
  ~ShortMemory() { prim::primMemHooks = saved_; }
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;

  static bool refusedOne() { return countdown < 0; }
  static inline int countdown = 0;
  static inline bool stays = false;
  static inline int live = 0;

 private:
  prim::MemHooks saved_;
};

template <class Grid, class SetUp, class Run>
void refuseEachInTurn(const Plane& picture, const SetUp& setUp, const Run& run) {
  const prim::FloatModeGuard floatMode;
  bool anyRefused = true;
  int setUpFailures = 0;
  for (int refused = 0; anyRefused; ++refused) {
    Plane plane(picture.width, picture.height);
    copyImage(picture, plane);
    {
      const ShortMemory memory(refused, false);
      Grid grid;
      const int ready = setUp(grid);
      if (ready != kVxrcOk) {
        ++setUpFailures;
        EXPECT_EQ(ready, kVxrcNoMemory);
        EXPECT_EQ(grid.gridWidth, 0);
        EXPECT_EQ(run(grid, plane), kVxrcSizeMismatch);
        EXPECT_TRUE(sameBits(picture, plane));
        EXPECT_EQ(setUp(grid), kVxrcOk) << "memory is back";
      } else {
        const int done = run(grid, plane);
        if (ShortMemory::refusedOne()) {
          EXPECT_EQ(done, kVxrcNoMemory);
          EXPECT_TRUE(sameBits(picture, plane));
        } else {
          EXPECT_EQ(done, kVxrcOk);
        }
      }
      anyRefused = ShortMemory::refusedOne();
      grid.releaseGrid();
      EXPECT_EQ(ShortMemory::live, 0) << "after refusal " << refused;
    }
  }
  EXPECT_GE(setUpFailures, 4);
}

TEST(ToneMemory, gridsReportItAndLeaveThePlane) {
  Plane picture(40, 30);
  fill(picture, 21);
  refuseEachInTurn<BilateralFilter>(
      picture, [](BilateralFilter& f) { return f.setupGrid(40, 30, 0.0f, 1.0f, 8, 0.1f, 1); },
      [](BilateralFilter& f, Plane& p) { return f.filter(p, p, 0.0f); });
  refuseEachInTurn<BilateralLocalHistEq>(
      picture,
      [](BilateralLocalHistEq& e) {
        return e.setupGrid(40, 30, 0.0f, 1.0f, 8, 0.01f, 0.0f, 1.0f, 0.0f, 0.5f, 1);
      },
      [](BilateralLocalHistEq& e, Plane& p) { return e.equalize(p, 1.0f, 0.0f, 1.0f); });
}

AdjustToneStage everything() {
  AdjustToneStage stage;
  stage.sharpenAmount = 2.0f;
  stage.sharpenSigma = 1.0f;
  stage.hueShift = 0.1f;
  stage.lightness.eqStrength = 1.0f;
  stage.lightness.eqSample = 8;
  stage.lightness.eqTopCut = 0.0f;
  stage.lightness.detailRange = 0.1f;
  stage.lightness.detailGain = 1.5f;
  stage.lightness.gamma = 0.5f;
  stage.saturation.eqStrength = 0.5f;
  stage.saturation.contrast = 1.2f;
  stage.saturation.gamma = 0.8f;
  return stage;
}

TEST(ToneMemory, theStageLeavesOutStepsAndLeaksNothing) {
  const prim::FloatModeGuard floatMode;
  for (const int mode : {0, 2}) {
    for (const bool stays : {false, true}) {
      bool anyRefused = true;
      int refused = 0;
      for (; anyRefused; ++refused) {
        IMG3<float> image(40, 30);
        fill(image, 22);
        AdjustToneStage stage = everything();
        stage.saturation.mode = mode;
        stage.saturation.detailRange = 0.1f;
        const ShortMemory memory(refused, stays);
        EXPECT_EQ(stage.apply(image), 0);
        EXPECT_EQ(ShortMemory::live, 0);
        anyRefused = ShortMemory::refusedOne();
        for (int i = 0; i < 120; ++i) {
          EXPECT_GE(image.row(15)[i], 0.0f);
          EXPECT_LE(image.row(15)[i], 1.0f);
        }
      }
      EXPECT_GT(refused, 20);
    }
  }
}

TEST(ToneMemory, imagesWithoutMemoryAreLeftAlone) {
  const prim::FloatModeGuard floatMode;
  Plane none(INT_MAX / 2, 3), empty(0, 0);
  IMG3<float> noImage(0, 5);
  ASSERT_EQ(none.data, nullptr);
  AdjustToneStage stage = everything();
  EXPECT_EQ(stage.apply(noImage), 0);
  EXPECT_EQ(stage.lightness.apply(none), 0);
  EXPECT_EQ(stage.saturation.apply(empty), 0);
  stage.lightness.splitBaseDetail(none, empty);
  EXPECT_EQ(UnsharpMask().apply(none), 0);
  BilateralFilter filter;
  ASSERT_EQ(filter.setupGrid(0, 0, 0.0f, 1.0f, 8, 0.1f, 0), kVxrcOk);
  EXPECT_EQ(filter.filter(empty, empty, 0.0f), kVxrcOk);
}

TEST(ToneBadValues, gridsThatCannotBeHadAreRefusedInTheSetUp) {
  const float inf = std::numeric_limits<float>::infinity();
  BilateralFilter filter;
  EXPECT_EQ(filter.setupGrid(50, 50, 1.0f, 0.0f, 8, 0.1f, 0), kVxrcNoMemory);
  EXPECT_EQ(filter.setupGrid(-500, 50, 0.0f, 1.0f, 8, 0.1f, 0), kVxrcNoMemory);
  EXPECT_EQ(filter.setupGrid(50, INT_MIN, 0.0f, 1.0f, 2, 0.1f, 0), kVxrcNoMemory);
  EXPECT_EQ(filter.setupGrid(INT_MAX, INT_MAX, 0.0f, 1.0f, 2, 0.1f, 0), kVxrcNoMemory);
  BilateralLocalHistEq eq;
  EXPECT_EQ(eq.setupGrid(50, 50, 0.0f, inf, 8, 0.1f, 0.0f, 1.0f, 0.0f, 0.5f, 0), kVxrcNoMemory);
  EXPECT_EQ(eq.setupGrid(50, 50, 0.0f, 1.0f, 1, 0.1f, 0.0f, 1.0f, 0.0f, 0.5f, 0), kVxrcBadSetup);
}

// For the sanitizers: nothing may be read or written outside, whatever the numbers are.
TEST(ToneBadValues, noSettingAndNoPixelLeavesTheMemory) {
  const prim::FloatModeGuard floatMode;
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float values[] = {nan, inf, -inf, 3.0e38f, -3.0e38f, 0.0f, -1.0f, 1.0f, 1e-30f, 4.5f};
  int ran = 0;
  for (const float bad : values) {
    IMG3<float> image(45, 31);
    fill(image, 23);
    for (int i = 0; i < 40; ++i) image.row(i % 31)[(i * 37) % 135] = values[i % 10];
    Plane plane(45, 31), guide(45, 31);
    fill(plane, 24);
    fill(guide, 25);
    for (int i = 0; i < 40; ++i) at(plane, (i * 7) % 45, i % 31) = values[(i + 3) % 10];
    for (int i = 0; i < 40; ++i) at(guide, (i * 11) % 45, i % 31) = values[(i + 5) % 10];

    AdjustToneStage stage = everything();
    stage.apply(image);
    float* const fields[] = {
        &stage.sharpenAmount,         &stage.sharpenSigma,          &stage.hueShift,
        &stage.lightness.eqStrength,  &stage.lightness.eqClip,      &stage.lightness.eqPeakGain,
        &stage.lightness.gamma,       &stage.lightness.eqTopCut,    &stage.lightness.eqFloor,
        &stage.lightness.detailRange, &stage.lightness.detailGain,  &stage.lightness.detailGamma,
        &stage.saturation.eqStrength, &stage.saturation.contrast,   &stage.saturation.gamma,
        &stage.saturation.highKnee,   &stage.saturation.brightness, &stage.saturation.detailRange};
    for (const int mode : {0, 1, 2, 3}) {
      stage.saturation.mode = mode;
      for (float* field : fields) {
        const float good = *field;
        *field = bad;
        stage.apply(image);
        *field = good;
        ++ran;
      }
    }
    for (const Range range : {Range{0.0f, 1.0f, bad},
                              {bad, 1.0f, 0.1f},
                              {0.0f, bad, 0.1f},
                              {-1.0f, 7.0f, 0.01f},
                              {0.0f, 5.0f, 0.9f}}) {
      BilateralFilter filter;
      if (filter.setupGrid(45, 31, range.low, range.high, 6, range.step, 0) == kVxrcOk)
        filter.filter(plane, guide, bad);
      BilateralLocalHistEq eq;
      if (std::fabs(range.step) > 1e-4f &&
          eq.setupGrid(45, 31, range.low, range.high, 6, range.step, bad, 1.0f, bad, bad, 0) ==
              kVxrcOk)
        eq.equalize(plane, bad, bad, bad);
    }
  }
  EXPECT_EQ(ran, 10 * 4 * 18);
}

TEST(ToneBadValues, cellsFarLargerThanThePlane) {
  const prim::FloatModeGuard floatMode;
  IMG3<float> image(45, 31);
  fill(image, 26);
  AdjustToneStage stage = everything();
  stage.lightness.eqSample = stage.lightness.detailSample = stage.saturation.eqSample = INT_MAX;
  EXPECT_EQ(stage.apply(image), 0);
  for (int i = 0; i < 135; ++i) EXPECT_TRUE(image.row(9)[i] >= 0.0f && image.row(9)[i] <= 1.0f);
}

}  // namespace
