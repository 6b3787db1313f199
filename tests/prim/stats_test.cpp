#include "prim/dispatch.h"
#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

// Two interleaved sums in the generic variant, sixteen folded ones in every other.
double laneSum(const Plane<float>& image, int lanes) {
  std::vector<float> sums(static_cast<std::size_t>(lanes));
  for (int y = 0; y < image.height; ++y)
    for (int x = 0; x < image.width; ++x)
      sums[static_cast<std::size_t>(x % lanes)] += image.at(x, y);
  while (sums.size() > 1) {
    const std::size_t half = sums.size() / 2;
    for (std::size_t i = 0; i < half; ++i) sums[i] += sums[half + i];
    sums.resize(half);
  }
  return double{sums[0]};
}

TEST(Sum, addsInTheOrderOfItsVariant) {
  std::mt19937 rng(31);
  for (int width : {1, 2, 7, 15, 16, 17, 33, 129}) {
    Plane<float> image(width, 5);
    image.draw([&] { return drawValue<float>(rng); });
    for (int column : {0, 1}) {
      const double want = laneSum(image, column == 0 ? 2 : 16);
      double sum = 0, mean = 0;
      ASSERT_EQ(call(table::primSum_32f_C1R[column], image, image.size(), &sum, 1), 0);
      ASSERT_EQ(call(table::primMean_32f_C1R[column], image, image.size(), &mean, 0), 0);
      EXPECT_EQ(sum, want) << width;
      EXPECT_EQ(mean, want / (width * 5));
    }
  }
}

// A single row holds more than 32 bits.
TEST(Words, meanIsExactAndMinimumTheSmallest) {
  std::mt19937 rng(33);
  for (int lowest : {-3, -32767, -32768}) {
    Plane<S16> image(140001, 2);
    image.randomise(rng, lowest + 1, lowest + 9);
    image.at(140000, 1) = static_cast<S16>(lowest);
    std::int64_t sum = 0;
    for (int y = 0; y < 2; ++y)
      for (int x = 0; x < image.width; ++x) sum += image.at(x, y);
    double mean = 0;
    S16 min = 0;
    ASSERT_EQ(call(primMean_16s_C1R, image, image.size(), &mean), 0);
    EXPECT_EQ(mean, static_cast<double>(sum) / (2.0 * image.width));
    ASSERT_EQ(call(primMin_16s_C1R, image, image.size(), &min), 0);
    EXPECT_EQ(min, lowest);
  }
}

// Every position, with an equal and a NaN further on. NaN never wins, infinities do; of zeros the
// first is the smallest, and a largest one is positive.
TEST(Extremes, areTheFirstSmallestAndTheLargestAnywhere) {
  std::mt19937 rng(35);
  Plane<float> image(19, 3);
  const auto expectExtremes = [&](float wantMin, float wantMax, int wantX, int wantY) {
    float min = 5, max = 5;
    int x = -1, y = -1;
    EXPECT_EQ(call(primMax_32f_C1R, image, image.size(), &max), 0);
    EXPECT_EQ(call(primMinIndex_32f_C1R, image, image.size(), &min, &x, &y), 0);
    EXPECT_TRUE(min == wantMin && std::signbit(min) == std::signbit(wantMin)) << min;
    EXPECT_TRUE(max == wantMax && std::signbit(max) == std::signbit(wantMax)) << max;
    EXPECT_TRUE(x == wantX && y == wantY) << x << ", " << y;
  };
  image.draw([] { return kNan; });
  expectExtremes(0, 0, 0, 0);
  for (int at = 0; at < 18 * 3; ++at) {
    const int x = at % 18, y = at / 18;
    for (float infinity : {kInf, -kInf}) {
      image.draw([] { return kNan; }).at(x, y) = infinity;
      expectExtremes(infinity, infinity, x, y);
    }
    image.draw([&] { return drawValue<float>(rng); });
    image.at(18, 2) = image.at(x, y) = -1e9f;
    image.at(18, 1) = kNan;
    image.at(18, 0) = 1e9f;
    expectExtremes(-1e9f, 1e9f, x, y);
    image.at(18, 2) = image.at(x, y) = 2e9f;
    image.at(18, 0) = -2e9f;
    expectExtremes(-2e9f, 2e9f, 18, 0);
  }
  for (float first : {-0.0f, 0.0f}) {
    image.set([&](int x, int) { return x % 2 == 0 ? first : -first; });
    expectExtremes(first, 0.0f, 0, 0);
  }
}

// More than 32 bits within one row.
TEST(NormDiff, addsMagnitudesExactly) {
  std::mt19937 rng(36);
  Plane<U8> a(17000003, 1), b(17000003, 1);
  std::int64_t want = 0;
  for (int x = 0; x < a.width; ++x) {
    a.at(x, 0) = static_cast<U8>(x % 300 == 0 ? rng() : 0);
    b.at(x, 0) = static_cast<U8>(x % 300 == 0 ? rng() : 255);
    want += std::abs(a.at(x, 0) - b.at(x, 0));
  }
  double result = 0;
  ASSERT_EQ(call(primNormDiffL1_8u_C1R, a, b, a.size(), &result), 0);
  EXPECT_EQ(result, static_cast<double>(want));
}

void expectHistogram(Plane<S16>& image, const std::vector<int>& levels) {
  const std::size_t bins = levels.size() - 1;
  std::vector<int> want(bins), hist(bins, -5);
  for (int y = 0; y < image.height; ++y)
    for (int x = 0; x < image.width; ++x)
      for (std::size_t i = 0; i < bins; ++i)
        want[i] += image.at(x, y) >= levels[i] && image.at(x, y) < levels[i + 1];
  ASSERT_EQ(call(primHistogramRange_16s_C1R, image, image.size(), hist.data(), levels,
                 static_cast<int>(bins + 1)),
            0);
  EXPECT_EQ(hist, want);
}

TEST(Histogram, countsAlikeForAnyLevelsAndSizesAndWithoutMemory) {
  std::mt19937 rng(37);
  std::vector<std::vector<int>> kLevels = {{0, 1},
                                           {-32768, 32767},
                                           {-32768, -100, 0, 0, 7, 8, 300, 32768},
                                           {INT_MIN, -5, 5, INT_MAX},
                                           {10, -10, 20, 5, 100, 100, 50},
                                           {-32769, -32768, -32767, 32766, 32767, 32768, 32769},
                                           {}};
  for (int i = -20; i < 92; ++i) kLevels.back().push_back(i * 13);
  // In the last so many pixels that a single bin is worth a table.
  for (const Size& size : {Size{5, 3}, {33, 7}, {300, 200}, {700, 600}})
    for (bool memory : {true, false}) {
      const vx::test::Heap heap(memory ? -1 : 0, true);
      Plane<S16> image(size.width, size.height);
      image.draw([&] { return rng() % 4 == 0 ? int(rng() % 64) - 32 : drawValue<S16>(rng); });
      for (const auto& levels : kLevels) expectHistogram(image, levels);
    }
}

}  // namespace
