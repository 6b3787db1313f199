#include "vxenhlib/deconvolver.h"

#include <gtest/gtest.h>

#include <cmath>

#include "prim/prims.h"
#include "tests/support/images.h"
#include "vxenhlib/vxrc.h"

namespace {

using namespace vx;
using namespace vx::test;

TEST(Deconvolver, kernelsAreGaussiansOfSumOneAndGrowWithSigma) {
  struct Step {
    float sigma;
    int size, iterations;
  };
  for (const auto& [sigma, size, iterations] : {Step{0.3f, 3, 5},
                                                {0.59f, 3, 5},
                                                {0.6f, 5, 10},
                                                {0.9f, 7, 15},
                                                {1.4f, 9, 20},
                                                {3.0f, 9, 20}}) {
    Deconvolver d;
    d.setKernel(sigma);
    EXPECT_EQ(d.kernelSize, size) << sigma;
    EXPECT_EQ(d.iterations, iterations) << sigma;
    double sum = 0.0;
    for (int i = 0; i < size * size; ++i) sum += static_cast<double>(d.kernel[i]);
    EXPECT_NEAR(sum, 1.0, 1e-6);
    const float* middle = d.kernel + size / 2 * size + size / 2;
    EXPECT_NEAR(std::log(middle[0] / middle[-size]) * 2.0f * sigma * sigma, 1.0f, 1e-4f);
    EXPECT_NEAR(std::log(middle[0] / middle[1]) * 2.0f * sigma * sigma, 1.0f, 1e-4f);
  }
}

// Bars blurred by the very Gaussian: half of the squared error at least goes away, inside the
// frame.
TEST(Deconvolver, bringsABlurredPictureCloserAndKeepsTheFrame) {
  const prim::FloatModeGuard floatMode;
  constexpr int kW = 60, kH = 44;
  for (const auto& [sigma, frame] : {std::pair(0.5f, 4), {0.8f, 5}, {1.2f, 6}, {1.6f, 8}}) {
    Deconvolver d;
    d.setKernel(sigma);
    const int r = d.kernelSize / 2;
    const auto bars = [](int x, int y) { return (x / 6 + y / 9) % 2 == 0 ? 0.2f : 0.7f; };
    Plane blurred(kW, kH), sharp(kW, kH);
    for (int y = 0; y < kH; ++y)
      for (int x = 0; x < kW; ++x) {
        at(blurred, x, y) = 0.0f;
        for (int j = -r; j <= r; ++j)
          for (int i = -r; i <= r; ++i)
            at(blurred, x, y) +=
                d.kernel[(j + r) * d.kernelSize + i + r] * bars(x + i + 36, y + j + 36);
      }
    ASSERT_EQ(d.deconvolve(blurred, sharp, sigma), kVxrcOk);
    double before = 0.0, after = 0.0;
    for (int y = 0; y < kH; ++y)
      for (int x = 0; x < kW; ++x) {
        const bool inFrame = x < frame || y < frame || x >= kW - frame || y >= kH - frame;
        if (inFrame) {
          ASSERT_EQ(at(sharp, x, y), at(blurred, x, y)) << x << ", " << y;
          continue;
        }
        before += std::pow(static_cast<double>(at(blurred, x, y) - bars(x + 36, y + 36)), 2.0);
        after += std::pow(static_cast<double>(at(sharp, x, y) - bars(x + 36, y + 36)), 2.0);
      }
    EXPECT_LT(after, before * 2.0 / 3.0) << sigma;
    // The first pixel inside the frame has been worked on.
    EXPECT_FALSE(sameBits(blurred, sharp)) << sigma;
  }
}

TEST(Deconvolver, tinyPlanesAreAllFrame) {
  const prim::FloatModeGuard floatMode;
  for (const auto& [w, h] : {std::pair(1, 1), {8, 3}, {3, 40}, {15, 15}}) {
    Plane source(w, h), target(w, h), other(w + 1, h);
    fill(source, 3);
    Deconvolver d;
    EXPECT_EQ(d.deconvolve(source, other, 1.6f), kVxrcSizeMismatch);
    ASSERT_EQ(d.deconvolve(source, target, 1.6f), kVxrcOk);
    EXPECT_TRUE(sameBits(source, target)) << w << "x" << h;
  }
}

}  // namespace
