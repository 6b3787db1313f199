#include "vxenhlib/gauss_pyramid.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "prim/prims.h"
#include "tests/support/images.h"

namespace {

using namespace vx;
using namespace vx::test;

TEST(CopyPadded, cropsAndRepeatsTheLastColumnAndRow) {
  Plane source(7, 5);
  fill(source, 4);
  for (const auto& [w, h] : {std::pair(7, 5), {8, 6}, {12, 9}, {4, 9}, {3, 2}, {1, 1}}) {
    Plane target(w, h);
    copyPadded(source, target);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        ASSERT_EQ(at(target, x, y), at(source, std::min(x, 6), std::min(y, 4))) << w << "x" << h;
  }
}

TEST(GaussPyramid, levelsHalveAndAConstantStaysOne) {
  const prim::FloatModeGuard floatMode;
  Plane image(53, 37);
  for (int y = 0; y < 37; ++y)
    for (int x = 0; x < 53; ++x) at(image, x, y) = 0.375f;
  GaussPyramid pyramid;
  ASSERT_EQ(pyramid.build(image, 3, false), kVxrcOk);
  for (int i = 0; i <= 3; ++i) {
    ASSERT_EQ(pyramid.level[i]->width, 56 >> i);
    ASSERT_EQ(pyramid.level[i]->height, 40 >> i);
    for (int y = 0; y < 40 >> i; ++y)
      for (int x = 0; x < 56 >> i; ++x) ASSERT_EQ(at(*pyramid.level[i], x, y), 0.375f);
  }
  EXPECT_EQ(pyramid.level[4], nullptr);
  for (const int levels : {0, 8, -1})
    EXPECT_EQ(pyramid.build(image, levels, false), kVxrcBadArgument);
}

// Both ways of taking the detail off a level give it back when it is put on again; the expansion
// is that of the lower level as it is by then, which the filter changes in between.
TEST(GaussPyramid, detailAndExpansionMakeTheLevelAgain) {
  const prim::FloatModeGuard floatMode;
  Plane image(50, 31);
  fill(image, 8);
  GaussPyramid gauss, laplace;
  ASSERT_EQ(gauss.build(image, 2, false), kVxrcOk);
  ASSERT_EQ(laplace.build(image, 2, true), kVxrcOk);
  Plane before(52, 32), detail(52, 32), other(50, 32);
  copyImage(*gauss.level[0], before);
  EXPECT_EQ(gauss.takeDetail(0, other), kVxrcSizeMismatch);
  EXPECT_EQ(gauss.takeDetail(-1, detail), kVxrcBadArgument);
  EXPECT_EQ(gauss.takeDetail(2, detail), kVxrcBadArgument);
  EXPECT_EQ(laplace.takeDetail(0, detail), kVxrcBadArgument);
  EXPECT_TRUE(sameBits(before, *gauss.level[0]));

  ASSERT_EQ(gauss.takeDetail(0, detail), kVxrcOk);
  EXPECT_TRUE(sameBits(*laplace.level[0], detail));
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 52; ++x)
      ASSERT_NEAR(at(detail, x, y) + at(*gauss.level[0], x, y), at(before, x, y), 1e-6f);

  // With an empty lower level the detail is all of the level.
  ASSERT_EQ(gauss.build(image, 1, false), kVxrcOk);
  Plane all(50, 32);
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 25; ++x) at(*gauss.level[1], x, y) = 0.0f;
  ASSERT_EQ(gauss.takeDetail(0, all), kVxrcOk);
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 50; ++x) {
      ASSERT_EQ(at(all, x, y), at(image, x, std::min(y, 30)));
      ASSERT_EQ(at(*gauss.level[0], x, y), 0.0f);
    }
}

}  // namespace
