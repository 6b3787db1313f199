#include "vxenhlib/luma_chroma.h"

#include <gtest/gtest.h>

#include "prim/prims.h"
#include "tests/support/images.h"

namespace {

using namespace vx;
using namespace vx::test;

TEST(LumaChroma, thereAndBackKeepsThePictureAndGreyHasNoChroma) {
  const prim::FloatModeGuard floatMode;
  constexpr float kChromaOfGrey[2][2] = {{0.61176f, 0.53725f}, {0.0f, 0.0f}};
  for (const bool centred : {false, true}) {
    Plane a(37, 5), b(37, 5), c(37, 5), before[3] = {{37, 5}, {37, 5}, {37, 5}};
    GIMG<float>* const planes[3] = {&a, &b, &c};
    for (unsigned p = 0; p < 3; ++p) fill(*planes[p], p);
    for (int p = 0; p < 3; ++p) at(*planes[p], 3, 2) = 0.6f;
    for (int p = 0; p < 3; ++p) copyImage(*planes[p], before[p]);
    EXPECT_EQ(toLumaChroma(planes, centred), 1);
    EXPECT_NEAR(at(a, 3, 2), 0.6f / 1.402f, 1e-3f);
    EXPECT_NEAR(at(b, 3, 2), kChromaOfGrey[centred][0], 1e-5f);
    EXPECT_NEAR(at(c, 3, 2), kChromaOfGrey[centred][1], 1e-5f);
    EXPECT_EQ(fromLumaChroma(planes, centred), 1);
    for (int p = 0; p < 3; ++p)
      EXPECT_LT(largestDifference(before[p], *planes[p]), 1e-3f) << centred << p;
  }
}

}  // namespace
