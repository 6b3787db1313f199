// What the passes do to whole planes: colour space, padding, pyramid.

#include "tests/support/float_mode.h"
#include "tests/support/images.h"
#include "vxenhlib/noise/gauss_pyramid.h"
#include "vxenhlib/noise/luma_chroma.h"

namespace {

using namespace vx;
using namespace vx::test;

// The matrices have five digits.
TEST(LumaChroma, thereAndBackKeepsThePictureAndGreyHasNoChroma) {
  constexpr float kOfGrey[2][3] = {{0.6f / 1.402f, 0.61176f, 0.53725f},
                                   {0.6f / 1.402f, 0.0f, 0.0f}};
  for (const bool centred : {false, true}) {
    ThreePlanes rgb(37, 5), before(37, 5);
    for (unsigned p = 0; p < 3; ++p)
      for (Plane* const plane : {rgb.all[p], before.all[p]}) {
        fill(*plane, p);
        at(*plane, 3, 2) = 0.6f;
      }
    EXPECT_EQ(toLumaChroma(rgb.all, centred), 1);
    for (int p = 0; p < 3; ++p)
      EXPECT_NEAR(at(rgb.plane[p], 3, 2), kOfGrey[centred][p], 1e-5f) << p;
    EXPECT_EQ(fromLumaChroma(rgb.all, centred), 1);
    for (int p = 0; p < 3; ++p)
      EXPECT_LT(largestDifference(before.plane[p], rgb.plane[p]), 5e-5f) << p;
  }
}

TEST(CopyPadded, cropsAndRepeatsTheLastColumnAndRow) {
  Plane source(7, 5);
  fill(source, 4);
  for (const auto& [w, h] : {std::pair(7, 5), {8, 6}, {12, 9}, {4, 9}, {3, 2}, {1, 1}}) {
    Plane target(w, h), wanted(w, h);
    paint(wanted, [&](int x, int y) { return at(source, std::min(x, 6), std::min(y, 4)); });
    copyPadded(source, target);
    EXPECT_TRUE(sameBits(wanted, target)) << w << "x" << h;
  }
}

TEST(GaussPyramid, levelsHalveAndAConstantStaysOne) {
  Plane image(53, 37);
  paint(image, [](int, int) { return 0.375f; });
  GaussPyramid pyramid;
  ASSERT_EQ(pyramid.build(image, 3, false), kVxrcOk);
  for (int i = 0; i <= 3; ++i) {
    Plane wanted(56 >> i, 40 >> i);
    paint(wanted, [](int, int) { return 0.375f; });
    EXPECT_TRUE(sameBits(wanted, *pyramid.level[i])) << i;
  }
  EXPECT_EQ(pyramid.level[4], nullptr);
  for (const int levels : {0, 8, -1})
    EXPECT_EQ(pyramid.build(image, levels, false), kVxrcBadArgument);
}

// Both ways of taking the detail off a level give it back when it is put on again; the expansion
// is that of the lower level as it is by then, which the filter changes in between.
TEST(GaussPyramid, detailAndExpansionMakeTheLevelAgain) {
  Plane image(50, 31), before(52, 32), detail(52, 32), sum(52, 32), other(50, 32);
  fill(image, 8);
  GaussPyramid gauss, laplace;
  ASSERT_EQ(gauss.build(image, 2, false), kVxrcOk);
  ASSERT_EQ(laplace.build(image, 2, true), kVxrcOk);
  copyImage(*gauss.level[0], before);
  EXPECT_EQ(gauss.takeDetail(0, other), kVxrcSizeMismatch);
  EXPECT_EQ(gauss.takeDetail(-1, detail), kVxrcBadArgument);
  EXPECT_EQ(gauss.takeDetail(2, detail), kVxrcBadArgument);
  EXPECT_EQ(laplace.takeDetail(0, detail), kVxrcBadArgument);
  EXPECT_TRUE(sameBits(before, *gauss.level[0]));

  ASSERT_EQ(gauss.takeDetail(0, detail), kVxrcOk);
  EXPECT_TRUE(sameBits(*laplace.level[0], detail));
  paint(sum, [&](int x, int y) { return at(detail, x, y) + at(*gauss.level[0], x, y); });
  EXPECT_LT(largestDifference(before, sum), 1e-6f);

  // With an empty lower level the detail is all of the level.
  ASSERT_EQ(gauss.build(image, 1, false), kVxrcOk);
  copyImage(*gauss.level[0], other);
  Plane all(50, 32);
  paint(*gauss.level[1], [](int, int) { return 0.0f; });
  ASSERT_EQ(gauss.takeDetail(0, all), kVxrcOk);
  EXPECT_TRUE(sameBits(other, all));
}

}  // namespace
