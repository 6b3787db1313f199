#include "prim/window.h"

#include <numbers>
#include <vector>

#include "prim/alloc.h"
#include "tests/prim/elements.h"

namespace {

using namespace vx::prim;

TEST(Window, hammingFollowsTheCosine) {
  for (int n : {3, 4, 5, 16, 33, 1000, 65537})
    forEachBody([n](int column) {
      std::mt19937 rng(9);
      std::vector<float> v(static_cast<std::size_t>(n) + 1, 2.0f);
      for (float& sample : v) sample = drawFloat(rng);
      const std::vector<float> before = v;
      ASSERT_EQ(table::primvWinHamming_32f_I[column](v.data(), n), 0);
      for (int i = 0; i < n; ++i) {
        const double in = before[static_cast<std::size_t>(i)];
        const double exact = in * (0.54 - 0.46 * std::cos(2 * std::numbers::pi * i / (n - 1)));
        // Half a unit in the last place of a float, and the drift of the rotation.
        ASSERT_NEAR(v[static_cast<std::size_t>(i)], exact, std::abs(exact) * 6.0e-8)
            << "element " << i << " of " << n;
      }
      ASSERT_EQ(v.back(), before.back());
    });
}

TEST(Window, hammingIsSymmetric) {
  for (int n : {4, 7, 4096}) {
    std::vector<float> v(static_cast<std::size_t>(n), 1.0f);
    ASSERT_EQ(primvWinHamming_32f_I(v.data(), n), 0);
    EXPECT_EQ(v.front(), 0.08f);
    for (std::size_t i = 0; i < v.size(); ++i) ASSERT_EQ(v[i], v[v.size() - 1 - i]);
  }
}

// Rises from both ends in steps of 2 / (n - 1).
double bartlett(int i, int n) { return 1 - std::abs(2.0 * i / (n - 1) - 1); }

TEST(Window, bartlettIsTheProductOfTwoTriangles) {
  std::mt19937 rng(11);
  for (int width : {3, 4, 5, 17, 64, 101})
    for (int height : {3, 4, 9}) {
      forEachBody([&](int column) {
        PagedImage image(width * 4, height, width * 4 + 12, rng);
        fillElements<float>(image, width, height, rng);
        PagedImage expected = image;
        float* data = image.data<float>();
        ASSERT_EQ(table::primWinBartlett2D_32f_C1IR[column](data, image.step, width, height), 0);
        for (int y = 0; y < height; ++y)
          for (int x = 0; x < width; ++x) {
            const double in = expected.get<float>(x, y);
            const double exact = in * bartlett(x, width) * bartlett(y, height);
            // Two windows and two products, each rounded.
            ASSERT_NEAR(image.get<float>(x, y), exact, std::abs(exact) * 4 * 6.0e-8)
                << x << ", " << y << " of " << width << " x " << height;
            expected.set(x, y, image.get<float>(x, y));
          }
        ASSERT_TRUE(image == expected) << "touched the padding";
      });
    }
}

TEST(Window, bartlettOfAnOddSizeKeepsTheMiddle) {
  std::vector<float> v(25, 0.7f);
  ASSERT_EQ(primWinBartlett2D_32f_C1IR(v.data(), 20, 5, 5), 0);
  EXPECT_EQ(v[12], 0.7f);
  EXPECT_EQ(v[11], 0.35f);
  for (std::size_t i : {0, 4, 20, 22, 10}) EXPECT_EQ(v[i], 0.0f) << i;
}

TEST(Window, refusesBadArgumentsAndMissingMemory) {
  float v[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
  EXPECT_EQ(primvWinHamming_32f_I(nullptr, 2), -8);
  EXPECT_EQ(primvWinHamming_32f_I(v, 2), -6);
  EXPECT_EQ(primWinBartlett2D_32f_C1IR(nullptr, 12, 3, 3), -8);
  EXPECT_EQ(primWinBartlett2D_32f_C1IR(v, 0, 2, 3), -6);
  EXPECT_EQ(primWinBartlett2D_32f_C1IR(v, 12, 3, 2), -6);
  EXPECT_EQ(primWinBartlett2D_32f_C1IR(v, 0, 3, 3), -14);
  const MemHooks saved = primMemHooks;
  primMemHooks.allocate = [](std::size_t) -> void* { return nullptr; };
  EXPECT_EQ(primWinBartlett2D_32f_C1IR(v, 12, 3, 3), -9);
  primMemHooks = saved;
  for (float sample : v) EXPECT_EQ(sample, 1.0f);
}

}  // namespace
