#include "vxenhlib/noise/deconvolver.h"

#include "tests/support/float_mode.h"
#include "tests/support/images.h"
#include "vxenhlib/vxrc.h"

namespace {

using namespace vx;
using namespace vx::test;

struct Step {
  float sigma;
  int size, iterations, frame;
};
constexpr Step kSteps[] = {{0.3f, 3, 5, 4},   {0.59f, 3, 5, 4}, {0.6f, 5, 10, 4},
                           {0.65f, 5, 10, 5}, {0.9f, 7, 15, 5}, {1.0f, 7, 15, 6},
                           {1.4f, 9, 20, 6},  {1.5f, 9, 20, 8}, {3.0f, 9, 20, 8}};

TEST(Deconvolver, kernelsAreGaussiansOfSumOneAndGrowWithSigma) {
  for (const auto& [sigma, size, iterations, frame] : kSteps) {
    Deconvolver d;
    d.setKernel(sigma);
    EXPECT_EQ(d.kernelSize, size) << sigma;
    EXPECT_EQ(d.iterations, iterations) << sigma;
    EXPECT_NEAR(std::accumulate(d.kernel, d.kernel + size * size, 0.0), 1.0, 1e-6);
    const float* middle = d.kernel + size / 2 * size + size / 2;
    for (const int way : {1, size})
      EXPECT_NEAR(std::log(middle[0] / middle[-way]) * 2.0f * sigma * sigma, 1.0f, 1e-4f);
  }
}

// Bars blurred by the very Gaussian: a third of the squared error at least goes away inside the
// frame, and the frame stays.
TEST(Deconvolver, bringsABlurredPictureCloserAndKeepsTheFrame) {
  constexpr int kW = 60, kH = 44;
  const auto bars = [](int x, int y) {
    return ((x + 36) / 6 + (y + 36) / 9) % 2 == 0 ? 0.2f : 0.7f;
  };
  for (const Step& step : kSteps) {
    if (step.sigma < 0.5f || step.sigma > 2.0f) continue;
    Deconvolver d;
    d.setKernel(step.sigma);
    const int r = step.size / 2;
    Plane blurred(kW, kH), sharp(kW, kH);
    paint(blurred, [&](int x, int y) {
      float sum = 0.0f;
      for (int i = 0; i < step.size * step.size; ++i)
        sum += d.kernel[i] * bars(x + i % step.size - r, y + i / step.size - r);
      return sum;
    });
    ASSERT_EQ(d.deconvolve(blurred, sharp, step.sigma), kVxrcOk);
    double before = 0.0, after = 0.0;
    bool firstInside = false;
    overPixels(sharp, [&](int x, int y) {
      const int edge = std::min({x, y, kW - 1 - x, kH - 1 - y});
      const bool stays = at(sharp, x, y) == at(blurred, x, y);
      EXPECT_TRUE(stays || edge >= step.frame) << x << ", " << y;
      firstInside |= edge == step.frame && !stays;
      if (edge < step.frame) return;
      before += std::pow(double{at(blurred, x, y) - bars(x, y)}, 2.0);
      after += std::pow(double{at(sharp, x, y) - bars(x, y)}, 2.0);
    });
    EXPECT_LT(after, before * 2.0 / 3.0) << step.sigma;
    EXPECT_TRUE(firstInside) << step.sigma;
  }
}

TEST(Deconvolver, tinyPlanesAreAllFrame) {
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
