#include "prim/deconvolution.h"

#include <cmath>
#include <cstdlib>

#include "prim/alloc.h"
#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

struct State {
  State(const std::vector<float>& kernel, int size, int maxWidth, int maxHeight, float threshold) {
    EXPECT_EQ(
        primDeconvLRInitAlloc_32f_C1R(&p, kernel.data(), size, maxWidth, maxHeight, threshold), 0);
  }
  ~State() { EXPECT_EQ(primDeconvLRFree_32f_C1R(p), 0); }
  State(const State&) = delete;
  primDeconvLRState* p = nullptr;
};

// One of the two weighted means, over the part of the kernel that falls on the image. sign 1 is the
// convolution, -1 its transpose.
Plane<double> partialMean(const Plane<double>& in, const std::vector<float>& kernel, int size,
                          double threshold, int sign) {
  const int anchor = (size - 1) / 2;
  Plane<double> out(in.width, in.height);
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x) {
      double sum = 0, part = 0;
      for (int j = 0; j < size; ++j)
        for (int i = 0; i < size; ++i) {
          const int sx = x + sign * (anchor - i), sy = y + sign * (anchor - j);
          if (sx < 0 || sy < 0 || sx >= in.width || sy >= in.height) continue;
          const double k = kernel[static_cast<std::size_t>(j * size + i)];
          sum += k * in.at(sx, sy);
          part += k;
        }
      out.at(x, y) = sum / (std::abs(part) < threshold ? 1.0 : part);
    }
  return out;
}

Plane<double> lucyRichardson(const Plane<float>& src, const std::vector<float>& kernel, int size,
                             double threshold, int iterations) {
  Plane<double> e(src.width, src.height), q(src.width, src.height);
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) e.at(x, y) = double{src.at(x, y)};
  for (int pass = 0; pass < iterations; ++pass) {
    const Plane<double> b = partialMean(e, kernel, size, threshold, 1);
    for (int y = 0; y < src.height; ++y)
      for (int x = 0; x < src.width; ++x)
        q.at(x, y) = b.at(x, y) == 0 ? 0 : double{src.at(x, y)} / b.at(x, y);
    const Plane<double> c = partialMean(q, kernel, size, threshold, -1);
    for (int y = 0; y < src.height; ++y)
      for (int x = 0; x < src.width; ++x) e.at(x, y) *= c.at(x, y);
  }
  return e;
}

std::vector<float> gauss(int size, double sigma) {
  std::vector<float> k;
  double sum = 0;
  const auto w = [=](int i) {
    return std::exp(-(i - size / 2) * (i - size / 2) / (2 * sigma * sigma));
  };
  for (int i = 0; i < size * size; ++i) sum += w(i / size) * w(i % size);
  for (int i = 0; i < size * size; ++i)
    k.push_back(static_cast<float>(w(i / size) * w(i % size) / sum));
  return k;
}

// Lopsided kernels of odd and even size tell the convolution from its transpose; images smaller
// than the kernel are border throughout.
TEST(Deconvolution, iteratesAsLucyAndRichardson) {
  std::mt19937 rng(74);
  onEveryVariant([&] {
    for (int size : {1, 2, 3, 4, 5, 9})
      for (int width : {1, 6, 40, 520}) {
        SCOPED_TRACE(testing::Message() << "kernel " << size << ", width " << width);
        const int height = 7;
        std::vector<float> kernel;
        for (int i = 0; i < size * size; ++i)
          kernel.push_back(static_cast<float>(rng() % 100) / 512);
        const State state(kernel, size, width + size + 3, height + size, 0.05f);
        Plane<float> src(width, height, 0, 0, 2), dst(width, height, 1, 1, 1);
        src.randomise(rng, 1, 255);
        dst.fill(0.5f);
        ASSERT_EQ(primDeconvLR_32f_C1R(src.data(), src.step, dst.data(), dst.step, width, height, 3,
                                       state.p),
                  0);
        const Plane<double> expected = lucyRichardson(src, kernel, size, double{0.05f}, 3);
        ASSERT_EQ(dst.changedOutside(0.5f), 0);
        for (int y = 0; y < height; ++y)
          for (int x = 0; x < width; ++x)
            ASSERT_NEAR(dst.at(x, y), expected.at(x, y), 1e-3 + 1e-4 * std::abs(expected.at(x, y)))
                << "at " << x << ", " << y;
      }
  });
}

TEST(Deconvolution, comesNearerToTheUnblurredImageWithEveryIteration) {
  const std::vector<float> kernel = gauss(7, 1.2);
  const State state(kernel, 7, 46, 46, 0.01f);
  Plane<double> sharp(40, 40);
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 40; ++x) sharp.at(x, y) = (x / 8 + y / 8) % 2 == 0 ? 50 : 200;
  const Plane<double> mean = partialMean(sharp, kernel, 7, 0.01, 1);
  Plane<float> blurred(40, 40), result(40, 40);
  for (int y = 0; y < 40; ++y)
    for (int x = 0; x < 40; ++x) blurred.at(x, y) = static_cast<float>(mean.at(x, y));
  const auto error = [&](const Plane<float>& image) {
    double sum = 0;
    for (int y = 0; y < 40; ++y)
      for (int x = 0; x < 40; ++x) sum += std::pow(double{image.at(x, y)} - sharp.at(x, y), 2);
    return sum;
  };
  double last = error(blurred);
  for (int iterations : {1, 2, 5, 10, 15, 20}) {
    ASSERT_EQ(primDeconvLR_32f_C1R(blurred.data(), blurred.step, result.data(), result.step, 40, 40,
                                   iterations, state.p),
              0);
    EXPECT_LT(error(result), last) << iterations;
    last = error(result);
  }
}

TEST(Deconvolution, keepsFlatImagesUpToTheBorderAndWorksInPlace) {
  const State state(gauss(7, 1.2), 7, 46, 46, 0.01f);
  Plane<float> image(40, 40);
  for (float flat : {0.0f, 100.0f}) {
    image.fill(flat);
    ASSERT_EQ(primDeconvLR_32f_C1R(image.data(), image.step, image.data(), image.step, 40, 40, 15,
                                   state.p),
              0);
    for (int y = 0; y < 40; ++y)
      for (int x = 0; x < 40; ++x) ASSERT_NEAR(image.at(x, y), flat, 1e-3);
  }
}

TEST(Deconvolution, refusesInTheDocumentedOrder) {
  const float kernel[9] = {0, 0, 0, 0, 1, 0, 0, 0, 0};
  primDeconvLRState* none = nullptr;
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(nullptr, kernel, 0, 0, 0, -1), -8);
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(&none, nullptr, 0, 0, 0, -1), -8);
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(&none, kernel, 0, 9, 9, -1), -6);
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(&none, kernel, 3, 0, 9, -1), -6);
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(&none, kernel, 3, 2, 9, -1), -6);
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(&none, kernel, 3, 9, 2, -1), -6);
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(&none, kernel, 3, 9, 9, -1), -5);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(primDeconvLRFree_32f_C1R(nullptr), -8);

  const State state(std::vector<float>(kernel, kernel + 9), 3, 9, 9, 0);
  float image[64] = {};
  const auto call = [&](int s, int ds, int w, int h, int n) {
    return primDeconvLR_32f_C1R(image, s, image, ds, w, h, n, state.p);
  };
  EXPECT_EQ(primDeconvLR_32f_C1R(nullptr, 0, image, 0, 0, 0, 0, state.p), -8);
  EXPECT_EQ(primDeconvLR_32f_C1R(image, 0, nullptr, 0, 0, 0, 0, state.p), -8);
  EXPECT_EQ(primDeconvLR_32f_C1R(image, 0, image, 0, 0, 0, 0, nullptr), -8);
  EXPECT_EQ(call(0, 0, 0, 1, 0), -6);
  EXPECT_EQ(call(0, 0, 8, 1, 0), -6);
  EXPECT_EQ(call(0, 0, 1, 8, 0), -6);
  EXPECT_EQ(call(27, 28, 7, 1, 0), -14);
  EXPECT_EQ(call(28, 27, 7, 1, 0), -14);
  EXPECT_EQ(call(29, 28, 7, 1, 0), -108);
  EXPECT_EQ(call(28, 30, 7, 1, 0), -108);
  EXPECT_EQ(call(28, 28, 7, 1, 0), -5);
  EXPECT_EQ(call(28, 28, 7, 7, 1), 0);
}

// Whichever allocation fails, those before it are released.
TEST(Deconvolution, failedAllocationLeavesNothingBehind) {
  static int left = 0, live = 0;
  const MemHooks saved = primMemHooks;
  primMemHooks.allocate = [](std::size_t size) -> void* {
    return left-- > 0 ? (++live, std::malloc(size)) : nullptr;
  };
  primMemHooks.release = [](void* block) { --live, std::free(block); };
  const float one = 1;
  int failures = 0, status = -9;
  for (; status == -9 && failures < 20; ++failures) {
    left = failures;
    primDeconvLRState* state = nullptr;
    status = primDeconvLRInitAlloc_32f_C1R(&state, &one, 1, 8, 8, 0);
    if (status == 0) primDeconvLRFree_32f_C1R(state);
    EXPECT_EQ(live, 0) << failures;
  }
  primMemHooks = saved;
  EXPECT_EQ(status, 0);
  EXPECT_GT(failures, 5);
}

}  // namespace
