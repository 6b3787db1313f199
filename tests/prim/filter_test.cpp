#include "prim/filter.h"

#include <climits>

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

std::vector<int> randomKernel(std::mt19937& rng, int size, int limit) {
  std::vector<int> kernel(static_cast<std::size_t>(size));
  for (int& k : kernel) k = static_cast<int>(rng() % static_cast<unsigned>(2 * limit + 1)) - limit;
  return kernel;
}

// Widths up to a strip and more, lengths around the groups of eight taps; whole numbers keep every
// order of summation exact.
TEST(FilterFloat, convolvesRowsAndColumns) {
  std::mt19937 rng(4711);
  onEveryVariant([&] {
    for (int len : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 23}) {
      const int width = len == 7 ? 530 : 1 + static_cast<int>(rng() % 70), height = 5;
      const int anchor = static_cast<int>(rng() % static_cast<unsigned>(len + 2)) - 1;
      const std::vector<int> taps = randomKernel(rng, len, 50);
      const std::vector<float> kernel(taps.begin(), taps.end());
      SCOPED_TRACE(testing::Message() << len << " taps, anchor " << anchor << ", width " << width);

      Plane<float> src(width, height, 24, 24), dst(width, height, 3, 1, 2);
      src.randomise(rng, -1000, 1000);
      dst.fill(0.5f);
      ASSERT_EQ(primFilterRow_32f_C1R(src.data(), src.step, dst.data(), dst.step, width, height,
                                      kernel.data(), len, anchor),
                0);
      expectPlane(dst, 0.5f, [&](int x, int y) {
        double sum = 0;
        for (int j = 0; j < len; ++j) sum += double{src.at(x + anchor - j, y)} * taps[j];
        return sum;
      });
      dst.fill(0.5f);
      ASSERT_EQ(primFilterColumn_32f_C1R(src.data(), src.step, dst.data(), dst.step, width, height,
                                         kernel.data(), len, anchor),
                0);
      expectPlane(dst, 0.5f, [&](int x, int y) {
        double sum = 0;
        for (int j = 0; j < len; ++j) sum += double{src.at(x, y + anchor - j)} * taps[j];
        return sum;
      });
    }
  });
}

TEST(FilterFloat, firstTapMeetsThePixelAtTheAnchor) {
  const float src[] = {1, 2, 3, 4, 5, 6}, kernel[] = {1, 0, 0};
  float dst[4];
  ASSERT_EQ(primFilterRow_32f_C1R(src + 1, 24, dst, 16, 4, 1, kernel, 3, 1), 0);
  for (int x = 0; x < 4; ++x) EXPECT_EQ(dst[x], src[1 + x + 1]);
}

// 1e8 + 1 is 1e8 in single precision, so the order of the taps decides between 0 and 1.
TEST(FilterFloat, addsFromTheLastTapToTheFirstInSinglePrecision) {
  const float pixels[] = {1, 1e8f, -1e8f, 1}, ones[] = {1, 1, 1};
  onEveryVariant([&] {
    float dst[2];
    ASSERT_EQ(primFilterRow_32f_C1R(pixels + 1, 16, dst, 8, 2, 1, ones, 3, 1), 0);
    EXPECT_EQ(dst[0], 0.0f) << "(1 + 1e8) - 1e8";
    EXPECT_EQ(dst[1], 1.0f) << "(1e8 - 1e8) + 1";
    ASSERT_EQ(primFilterColumn_32f_C1R(pixels + 1, 4, dst, 4, 1, 2, ones, 3, 1), 0);
    EXPECT_EQ(dst[0], 0.0f);
    EXPECT_EQ(dst[1], 1.0f);
  });
}

TEST(FilterFloat, refusesInTheDocumentedOrder) {
  const float src[16] = {}, kernel[3] = {};
  float dst[16];
  for (auto filter : {primFilterRow_32f_C1R, primFilterColumn_32f_C1R}) {
    EXPECT_EQ(filter(nullptr, 0, dst, 0, 0, 0, kernel, 0, 0), -8);
    EXPECT_EQ(filter(src, 0, nullptr, 0, 0, 0, kernel, 0, 0), -8);
    EXPECT_EQ(filter(src, 0, dst, 0, 0, 0, nullptr, 0, 0), -8);
    EXPECT_EQ(filter(src, 0, dst, 0, 0, 1, kernel, 3, 0), -6);
    EXPECT_EQ(filter(src, 0, dst, 0, 1, 0, kernel, 3, 0), -6);
    EXPECT_EQ(filter(src, 0, dst, 0, 1, 1, kernel, 0, 0), -6);
    EXPECT_EQ(filter(src, 64, dst, 15, 4, 1, kernel, 3, 1), -14);
    EXPECT_EQ(filter(src, -64, dst, 16, 4, 1, kernel, 3, 1), -14);
    EXPECT_EQ(filter(src, INT_MAX, dst, 16, INT_MAX, 1, kernel, 3, 1), -14);
  }
  EXPECT_EQ(primFilterRow_32f_C1R(src, 23, dst, 16, 4, 1, kernel, 3, 1), -14);
  EXPECT_EQ(primFilterColumn_32f_C1R(src, 15, dst, 16, 4, 1, kernel, 3, 1), -14);
}

TEST(FilterGauss, matchesTheKernels) {
  static constexpr int k55[5][5] = {{2, 7, 12, 7, 2},
                                    {7, 31, 52, 31, 7},
                                    {12, 52, 127, 52, 12},
                                    {7, 31, 52, 31, 7},
                                    {2, 7, 12, 7, 2}};
  static constexpr int k121[] = {1, 2, 1};
  std::mt19937 rng(15);
  onEveryVariant([&] {
    for (int width : {1, 2, 7, 24, 44, 65, 255, 256, 257, 600})
      for (int height : {1, 2, 3, 7}) {
        Plane<float> src(width, height, 2, 2), dst(width, height, 1, 1, 3);
        src.randomise(rng, -9999, 9999);
        dst.fill(0.5f);
        ASSERT_EQ(primFilterGauss_32f_C1R(src.data(), src.step, dst.data(), dst.step, width, height,
                                          kMask33),
                  0);
        expectPlane(dst, 0.5f, [&](int x, int y) {
          double sum = 0;
          for (int j = -1; j <= 1; ++j)
            for (int i = -1; i <= 1; ++i)
              sum += double{src.at(x + i, y + j)} * k121[i + 1] * k121[j + 1];
          return sum / 16;
        });
        dst.fill(0.5f);
        ASSERT_EQ(primFilterGauss_32f_C1R(src.data(), src.step, dst.data(), dst.step, width, height,
                                          kMask55),
                  0);
        expectPlane(dst, 0.5f, [&](int x, int y) {
          double sum = 0;
          for (int j = -2; j <= 2; ++j)
            for (int i = -2; i <= 2; ++i) sum += double{src.at(x + i, y + j)} * k55[j + 2][i + 2];
          return sum / 571;
        });
      }
  });
}

TEST(FilterGauss, mirroredImageGivesTheMirroredResult) {
  std::mt19937 rng(16);
  Plane<float> src(37, 9, 2, 2), flipped(37, 9, 2, 2), a(37, 9), b(37, 9);
  for (int y = -2; y < 11; ++y)
    for (int x = -2; x < 39; ++x)
      flipped.at(36 - x, 8 - y) = src.at(x, y) = static_cast<float>(rng()) * 1e-7f;
  for (int mask : {kMask33, kMask55}) {
    ASSERT_EQ(primFilterGauss_32f_C1R(src.data(), src.step, a.data(), a.step, 37, 9, mask), 0);
    ASSERT_EQ(primFilterGauss_32f_C1R(flipped.data(), src.step, b.data(), b.step, 37, 9, mask), 0);
    expectPlane(a, 0.0f, [&](int x, int y) { return b.at(36 - x, 8 - y); });
  }
}

TEST(FilterGauss, refusesInTheDocumentedOrder) {
  const float src[9] = {};
  float dst[9];
  EXPECT_EQ(primFilterGauss_32f_C1R(nullptr, 0, dst, 0, 0, 0, 0), -8);
  EXPECT_EQ(primFilterGauss_32f_C1R(src, 0, nullptr, 0, 0, 0, 0), -8);
  EXPECT_EQ(primFilterGauss_32f_C1R(src, 0, dst, 0, 0, 1, 0), -6);
  EXPECT_EQ(primFilterGauss_32f_C1R(src, 0, dst, 0, 1, -1, 0), -6);
  EXPECT_EQ(primFilterGauss_32f_C1R(src, 7, dst, 8, 2, 1, 0), -14);
  EXPECT_EQ(primFilterGauss_32f_C1R(src, 8, dst, 7, 2, 1, 0), -14);
  for (int mask : {0, 13, 3, 35, 51})
    EXPECT_EQ(primFilterGauss_32f_C1R(src, 8, dst, 8, 2, 1, mask), -33);
}

}  // namespace
