#include "prim/stats.h"

#include <bit>
#include <climits>
#include <cmath>
#include <limits>

#include "prim/alloc.h"
#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr int kWidths[] = {1, 2, 3, 7, 8, 11, 15, 16, 17, 24, 31, 33, 47, 63, 64, 65, 70, 129};

Plane<float> randomFloats(int width, int height, std::mt19937& rng) {
  Plane<float> image(width, height, 2, 1, 3);
  image.fill(kNan);  // a read beyond the region shows
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      image.at(x, y) = static_cast<float>(static_cast<int>(rng())) / 16777216;
  return image;
}

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
  onEveryVariant([&] {
    for (int width : kWidths) {
      const Plane<float> image = randomFloats(width, 5, rng);
      const double want = laneSum(image, primCpuColumn == 0 ? 2 : 16);
      double sum = 0, mean = 0;
      ASSERT_EQ(primSum_32f_C1R(image.data(), image.step, width, 5, &sum, 1), 0);
      ASSERT_EQ(primMean_32f_C1R(image.data(), image.step, width, 5, &mean, 0), 0);
      EXPECT_EQ(sum, want) << width;
      EXPECT_EQ(mean, want / (width * 5));
    }
  });
}

TEST(Sum, isExactOnSmallWholeNumbers) {
  std::mt19937 rng(32);
  onEveryVariant([&] {
    Plane<float> image(700, 90, 0, 0, 1);
    image.randomise(rng, -50, 50);
    std::int64_t want = 0;
    for (int y = 0; y < 90; ++y)
      for (int x = 0; x < 700; ++x) want += static_cast<int>(image.at(x, y));
    double sum = 0;
    ASSERT_EQ(primSum_32f_C1R(image.data(), image.step, 700, 90, &sum, 0), 0);
    EXPECT_EQ(sum, static_cast<double>(want));
  });
}

TEST(Mean16s, isExact) {
  std::mt19937 rng(33);
  onEveryVariant([&] {
    for (int width : kWidths) {
      Plane<std::int16_t> image(width, 3, 1, 0, 1);
      image.randomise(rng, INT16_MIN, INT16_MAX);
      std::int64_t sum = 0;
      for (int y = 0; y < 3; ++y)
        for (int x = 0; x < width; ++x) sum += image.at(x, y);
      double mean = 0;
      ASSERT_EQ(primMean_16s_C1R(image.data(), image.step, width, 3, &mean), 0);
      EXPECT_EQ(mean, static_cast<double>(sum) / (3.0 * width));
    }
    // The sum leaves 32 bits within one row.
    Plane<std::int16_t> lowest(140000, 1);
    lowest.fill(INT16_MIN);
    double mean = 0;
    ASSERT_EQ(primMean_16s_C1R(lowest.data(), lowest.step, lowest.width, 1, &mean), 0);
    EXPECT_EQ(mean, -32768.0);
  });
}

TEST(Min16s, findsTheSmallest) {
  std::mt19937 rng(34);
  onEveryVariant([&] {
    for (int width : kWidths) {
      Plane<std::int16_t> image(width, 3, 2, 1, 1);
      image.fill(INT16_MIN);
      for (int y = 0; y < 3; ++y)
        for (int x = 0; x < width; ++x) image.at(x, y) = INT16_MAX;
      std::int16_t min = 0;
      ASSERT_EQ(primMin_16s_C1R(image.data(), image.step, width, 3, &min), 0);
      EXPECT_EQ(min, INT16_MAX);
      const int x = static_cast<int>(rng() % static_cast<unsigned>(width));
      for (int value : {5, -32767, -32768}) {
        image.at(x, value & 1) = static_cast<std::int16_t>(value);
        ASSERT_EQ(primMin_16s_C1R(image.data(), image.step, width, 3, &min), 0);
        EXPECT_EQ(min, value);
      }
    }
  });
}

// Every position of a row, with equals behind it and NaN all around.
TEST(Extremes, findTheFirstSmallestAndTheLargestAnywhere) {
  std::mt19937 rng(35);
  onEveryVariant([&] {
    for (int width : kWidths) {
      for (int at = 0; at < width; at += 1 + width / 24) {
        Plane<float> image = randomFloats(width, 4, rng);
        image.at(static_cast<int>(rng() % static_cast<unsigned>(width)), 2) = kNan;
        const int y = static_cast<int>(rng() % 3);
        Plane<float> negated = image;
        for (int v = 0; v < 4; ++v)
          for (int u = 0; u < width; ++u) negated.at(u, v) = -image.at(u, v);
        image.at(at, y) = image.at(width - 1, y) = image.at(0, 3) = -1e6f;
        negated.at(at, y) = negated.at(0, 3) = 1e6f;
        float min = 0, max = 0;
        int minX = -1, minY = -1;
        ASSERT_EQ(primMinIndex_32f_C1R(image.data(), image.step, width, 4, &min, &minX, &minY), 0);
        EXPECT_EQ(min, -1e6f);
        EXPECT_EQ(minX, at);
        EXPECT_EQ(minY, y);
        ASSERT_EQ(primMax_32f_C1R(negated.data(), negated.step, width, 4, &max), 0);
        EXPECT_EQ(max, 1e6f);
      }
    }
  });
}

struct Extremes {
  float min, max;
  int x, y;
};

Extremes extremesOf(const Plane<float>& image) {
  Extremes e = {-1, -1, -1, -1};
  EXPECT_EQ(primMax_32f_C1R(image.data(), image.step, image.width, image.height, &e.max), 0);
  EXPECT_EQ(
      primMinIndex_32f_C1R(image.data(), image.step, image.width, image.height, &e.min, &e.x, &e.y),
      0);
  return e;
}

TEST(Extremes, nanNeverWinsAndInfinitiesDo) {
  onEveryVariant([] {
    for (int width : {1, 5, 16, 40, 100}) {
      Plane<float> image(width, 3, 1, 1);
      image.fill(kNan);
      const Extremes none = extremesOf(image);
      EXPECT_TRUE(none.min == 0 && none.max == 0 && none.x == 0 && none.y == 0);
      image.at(width - 1, 1) = -kInf;
      const Extremes low = extremesOf(image);
      EXPECT_TRUE(low.min == -kInf && low.max == -kInf && low.x == width - 1 && low.y == 1);
      image.at(width - 1, 1) = kInf;
      const Extremes high = extremesOf(image);
      EXPECT_TRUE(high.min == kInf && high.max == kInf && high.x == width - 1 && high.y == 1);
    }
  });
}

TEST(Extremes, ofAConstantOrOfZerosAreTheFirst) {
  onEveryVariant([] {
    Plane<float> image(50, 3);
    image.fill(2.5f);
    EXPECT_EQ(extremesOf(image).x, 0);
    EXPECT_EQ(extremesOf(image).y, 0);
    for (int first = 0; first < 50; first += 7) {
      image.fill(first % 2 == 0 ? -0.0f : 0.0f);
      image.at(first, 0) = first % 2 == 0 ? 0.0f : -0.0f;
      const Extremes e = extremesOf(image);
      EXPECT_EQ(e.x, 0);
      EXPECT_EQ(std::signbit(e.min), std::signbit(image.at(0, 0)));
      EXPECT_FALSE(std::signbit(e.max)) << "a largest zero is positive";
    }
  });
}

TEST(NormDiff, addsMagnitudesExactly) {
  std::mt19937 rng(36);
  onEveryVariant([&] {
    for (int width : kWidths) {
      Plane<std::uint8_t> a(width, 3, 1, 0, 2), b(width, 3, 0, 0, 5);
      a.randomise(rng, 0, 255);
      b.randomise(rng, 0, 255);
      std::int64_t want = 0;
      for (int y = 0; y < 3; ++y)
        for (int x = 0; x < width; ++x) want += std::abs(a.at(x, y) - b.at(x, y));
      double result = 0;
      ASSERT_EQ(primNormDiffL1_8u_C1R(a.data(), a.step, b.data(), b.step, width, 3, &result), 0);
      EXPECT_EQ(result, static_cast<double>(want));
    }
    // Beyond 32 bits within one row.
    Plane<std::uint8_t> black(9000000, 1), white(9000000, 1);
    white.fill(255);
    double result = 0;
    ASSERT_EQ(primNormDiffL1_8u_C1R(black.data(), 1, white.data(), 1, 9000000, 1, &result), 0);
    EXPECT_EQ(result, 9000000.0 * 255);
  });
}

void checkHistogram(const Plane<std::int16_t>& image, const std::vector<int>& levels) {
  const std::size_t bins = levels.size() - 1;
  std::vector<int> want(bins), hist(bins + 1, -5);
  for (int y = 0; y < image.height; ++y)
    for (int x = 0; x < image.width; ++x)
      for (std::size_t i = 0; i < bins; ++i)
        want[i] += image.at(x, y) >= levels[i] && image.at(x, y) < levels[i + 1];
  ASSERT_EQ(primHistogramRange_16s_C1R(image.data(), image.step, image.width, image.height,
                                       hist.data(), levels.data(), static_cast<int>(bins + 1)),
            0);
  EXPECT_EQ(hist.back(), -5);
  hist.pop_back();
  EXPECT_EQ(hist, want);
}

TEST(Histogram, countsAlikeForAnyLevelsAndSizes) {
  std::mt19937 rng(37);
  const std::vector<int> kLevels[] = {{0, 1},
                                      {-32768, 32767},
                                      {-32768, -100, 0, 0, 7, 8, 300, 32768},
                                      {INT_MIN, -5, 5, INT_MAX},
                                      {10, -10, 20, 5, 100, 100, 50},
                                      {-32769, -32768, -32767, 32766, 32767, 32768, 32769}};
  std::vector<int> many;
  for (int i = -20; i < 92; ++i) many.push_back(i * 13);
  onEveryVariant([&] {
    for (const auto& [width, height] : {std::pair{5, 3}, {33, 7}, {300, 200}}) {
      Plane<std::int16_t> image(width, height, 1, 1, 1);
      image.randomise(rng, INT16_MIN, INT16_MAX);
      for (int i = 0; i < width; i += 2)
        image.at(i, 1) = static_cast<std::int16_t>(static_cast<int>(rng() % 64) - 32);
      for (const auto& levels : kLevels) checkHistogram(image, levels);
      checkHistogram(image, many);
    }
    // So many pixels that a single bin is worth a table.
    Plane<std::int16_t> large(700, 600);
    large.randomise(rng, INT16_MIN, INT16_MAX);
    for (const auto& levels : kLevels) checkHistogram(large, levels);
  });
}

TEST(Histogram, countsAlikeWithoutMemory) {
  const MemHooks saved = primMemHooks;
  primMemHooks.allocate = [](std::size_t) -> void* { return nullptr; };
  std::mt19937 rng(38);
  onEveryVariant([&] {
    Plane<std::int16_t> image(400, 300);
    image.randomise(rng, -100, 100);
    checkHistogram(image, {-90, -40, 0, 1, 2, 50, 99});
  });
  primMemHooks = saved;
}

TEST(Stats, refuseBadArgumentsInOrderAndWriteNothing) {
  const float f[2] = {1, 2};
  const std::int16_t s[2] = {1, 2};
  const std::uint8_t b[2] = {1, 2};
  double d = -1;
  float m = -1;
  std::int16_t m16 = -1;
  int x = -1, y = -1, hist[1] = {-1};
  const int levels[2] = {0, 1};
  EXPECT_EQ(primSum_32f_C1R(nullptr, 8, 0, 1, &d, 0), kStatusNullPtr);
  EXPECT_EQ(primSum_32f_C1R(f, 8, 1, 1, nullptr, 0), kStatusNullPtr);
  EXPECT_EQ(primSum_32f_C1R(f, 8, 0, 1, &d, 0), kStatusBadSize);
  EXPECT_EQ(primMean_32f_C1R(nullptr, 8, 1, 1, &d, 0), kStatusNullPtr);
  EXPECT_EQ(primMean_32f_C1R(f, 8, 1, 1, nullptr, 0), kStatusNullPtr);
  EXPECT_EQ(primMean_32f_C1R(f, 8, 1, 0, &d, 0), kStatusBadSize);
  EXPECT_EQ(primMean_16s_C1R(nullptr, 4, 1, 1, &d), kStatusNullPtr);
  EXPECT_EQ(primMean_16s_C1R(s, 4, 1, 1, nullptr), kStatusNullPtr);
  EXPECT_EQ(primMean_16s_C1R(s, 4, -1, 1, &d), kStatusBadSize);
  EXPECT_EQ(primMin_16s_C1R(nullptr, 4, 1, 1, &m16), kStatusNullPtr);
  EXPECT_EQ(primMin_16s_C1R(s, 4, 1, 1, nullptr), kStatusNullPtr);
  EXPECT_EQ(primMin_16s_C1R(s, 4, 1, 0, &m16), kStatusBadSize);
  EXPECT_EQ(primMax_32f_C1R(nullptr, 8, 1, 1, &m), kStatusNullPtr);
  EXPECT_EQ(primMax_32f_C1R(f, 8, 1, 1, nullptr), kStatusNullPtr);
  EXPECT_EQ(primMax_32f_C1R(f, 8, 0, 1, &m), kStatusBadSize);
  EXPECT_EQ(primMinIndex_32f_C1R(nullptr, 8, 0, 1, &m, &x, &y), kStatusNullPtr);
  EXPECT_EQ(primMinIndex_32f_C1R(f, 8, 1, 1, nullptr, &x, &y), kStatusNullPtr);
  EXPECT_EQ(primMinIndex_32f_C1R(f, 8, 1, 1, &m, nullptr, &y), kStatusNullPtr);
  EXPECT_EQ(primMinIndex_32f_C1R(f, 8, 1, 1, &m, &x, nullptr), kStatusNullPtr);
  EXPECT_EQ(primMinIndex_32f_C1R(f, 8, 0, 1, &m, &x, &y), kStatusBadSize);
  EXPECT_EQ(primNormDiffL1_8u_C1R(nullptr, 0, b, 1, 0, 1, &d), kStatusNullPtr);
  EXPECT_EQ(primNormDiffL1_8u_C1R(b, 1, nullptr, 1, 1, 1, &d), kStatusNullPtr);
  EXPECT_EQ(primNormDiffL1_8u_C1R(b, 1, b, 1, 1, 1, nullptr), kStatusNullPtr);
  EXPECT_EQ(primNormDiffL1_8u_C1R(b, 0, b, 1, 0, 1, &d), kStatusBadSize);
  EXPECT_EQ(primNormDiffL1_8u_C1R(b, 0, b, 1, 1, 1, &d), kStatusBadStep);
  EXPECT_EQ(primNormDiffL1_8u_C1R(b, 1, b, -1, 1, 1, &d), kStatusBadStep);
  EXPECT_EQ(primHistogramRange_16s_C1R(nullptr, 4, 0, 1, hist, levels, 2), kStatusNullPtr);
  EXPECT_EQ(primHistogramRange_16s_C1R(s, 4, 1, 1, nullptr, levels, 2), kStatusNullPtr);
  EXPECT_EQ(primHistogramRange_16s_C1R(s, 4, 1, 1, hist, nullptr, 2), kStatusNullPtr);
  EXPECT_EQ(primHistogramRange_16s_C1R(s, 4, 1, 0, hist, levels, 1), kStatusBadSize);
  EXPECT_EQ(primHistogramRange_16s_C1R(s, 4, 1, 1, hist, levels, 1), kStatusFewHistogramLevels);
  EXPECT_TRUE(d == -1 && m == -1 && m16 == -1 && x == -1 && y == -1 && hist[0] == -1);
}

}  // namespace
