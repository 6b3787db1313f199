#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

struct State {
  State(const std::vector<float>& kernel, int size, Size max, float threshold) {
    EXPECT_EQ(call(primDeconvLRInitAlloc_32f_C1R, &p, kernel, size, max, threshold), 0);
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
  return Plane<double>(in.width, in.height).set([&](int x, int y) {
    double sum = 0, part = 0;
    for (int j = 0; j < size; ++j)
      for (int i = 0; i < size; ++i) {
        const int sx = x + sign * (anchor - i), sy = y + sign * (anchor - j);
        if (sx < 0 || sy < 0 || sx >= in.width || sy >= in.height) continue;
        const double k = kernel[static_cast<std::size_t>(j * size + i)];
        sum += k * in.at(sx, sy);
        part += k;
      }
    return sum / (std::abs(part) < threshold || part == 0 ? 1.0 : part);
  });
}

Plane<double> lucyRichardson(const Plane<float>& src, const std::vector<float>& kernel, int size,
                             double threshold, int iterations) {
  Plane<double> e(src.width, src.height), q(src.width, src.height);
  e.set([&](int x, int y) { return src.at(x, y); });
  for (int pass = 0; pass < iterations; ++pass) {
    const Plane<double> b = partialMean(e, kernel, size, threshold, 1);
    q.set([&](int x, int y) { return b.at(x, y) == 0 ? 0 : double{src.at(x, y)} / b.at(x, y); });
    const Plane<double> c = partialMean(q, kernel, size, threshold, -1);
    e.set([&](int x, int y) { return e.at(x, y) * c.at(x, y); });
  }
  return e;
}

// Lopsided kernels of odd and even size tell the convolution from its transpose; images smaller
// than the kernel are border throughout; a black image divides by 0, and so does the border where a
// kernel of one corner misses the image.
TEST(Deconvolution, iteratesAsLucyAndRichardsonAlsoInPlace) {
  std::mt19937 rng(74);
  for (int size : {1, 2, 3, 4, 5, 9})
    for (int width : {1, 6, 40})
      for (int brightest : {0, 255}) {
        SCOPED_TRACE(testing::Message() << "kernel " << size << ", width " << width);
        std::vector<float> kernel(static_cast<std::size_t>(size * size));
        for (float& k : kernel) k = static_cast<float>(rng() % 100) / 512;
        if (size == 4) kernel.assign(15, 0.0f), kernel.push_back(0.75f);
        const float threshold = size == 4 ? 0.0f : 0.05f;
        const State state(kernel, size, {width + size + 3, 7 + size}, threshold);
        Plane<float> image(width, 7);
        image.randomise(rng, brightest / 255, brightest);
        const Plane<double> expected = lucyRichardson(image, kernel, size, double{threshold}, 3);
        ASSERT_EQ(call(primDeconvLR_32f_C1R, image, image, image.size(), 3, state.p), 0);
        expectNear(
            image, [&](int x, int y) { return expected.at(x, y); }, 1e-3, 1e-4);
      }
}

TEST(Deconvolution, refusesBadKernelsAndImagesBeyondItsSize) {
  const std::vector<float> kernel = {0, 0, 0, 0, 1, 0, 0, 0, 0};
  primDeconvLRState* none = nullptr;
  static constexpr int kInits[][4] = {
      {0, 9, 9, -6}, {3, 0, 9, -6}, {3, 2, 9, -6}, {3, 9, 2, -6}, {3, 9, 9, -5}};
  for (const auto& [size, width, height, status] : kInits)
    EXPECT_EQ(call(primDeconvLRInitAlloc_32f_C1R, &none, kernel, size, width, height, -1), status);
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(nullptr, kernel.data(), 0, 0, 0, -1), -8);
  EXPECT_EQ(primDeconvLRInitAlloc_32f_C1R(&none, nullptr, 0, 0, 0, -1), -8);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(primDeconvLRFree_32f_C1R(nullptr), -8);

  const State state(kernel, 3, {9, 9}, 0);
  float image[64] = {};
  for (const auto& [width, height] : {std::pair{8, 7}, {7, 8}})
    EXPECT_EQ(primDeconvLR_32f_C1R(image, 0, image, 0, width, height, 0, state.p), -6);
  EXPECT_EQ(primDeconvLR_32f_C1R(image, 28, image, 28, 7, 7, 1, state.p), 0);
}

// Whichever allocation fails, those before it are released.
TEST(Deconvolution, failedAllocationLeavesNothingBehind) {
  const float one = 1;
  int failures = 0, status = -9;
  for (; status == -9 && failures < 20; ++failures) {
    const vx::test::Heap heap(failures);
    primDeconvLRState* state = nullptr;
    status = primDeconvLRInitAlloc_32f_C1R(&state, &one, 1, 8, 8, 0);
    if (status == 0) primDeconvLRFree_32f_C1R(state);
    EXPECT_EQ(vx::test::Heap::live(), 0) << failures;
  }
  EXPECT_EQ(status, 0);
  EXPECT_GT(failures, 5);
}

}  // namespace
