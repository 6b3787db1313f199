#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

TEST(Window, hammingFollowsTheCosineAndIsSymmetric) {
  std::mt19937 rng(9);
  for (int n : {3, 4, 5, 16, 33, 1000, 65537}) {
    Plane<float> before(n, 1), v(n, 1), ones(n, 1);
    v = before.draw([&] { return drawValue<float>(rng); });
    ones.draw([] { return 1; });
    ASSERT_EQ(primvWinHamming_32f_I(v.data(), n), 0);
    ASSERT_EQ(primvWinHamming_32f_I(ones.data(), n), 0);
    EXPECT_EQ(ones.at(0, 0), 0.08f);
    const double turn = 2 * std::numbers::pi / (n - 1);
    // Half a unit in the last place of a float, and the drift of the rotation.
    expectNear(
        v, [&](int i, int) { return before.at(i, 0) * (0.54 - 0.46 * std::cos(turn * i)); }, 0,
        6.0e-8);
    expectPlane(ones, [&](int i, int) { return ones.at(n - 1 - i, 0); });
  }
}

TEST(Window, refusesWithoutMemory) {
  float v[9] = {};
  const vx::test::Heap noMemory(0, true);
  EXPECT_EQ(primWinBartlett2D_32f_C1IR(v, 12, 3, 3), -9);
}

}  // namespace
