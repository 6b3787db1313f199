#include "prim/rank.h"

#include <algorithm>
#include <utility>

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

// The median of the pixels around (x, y) whose distance to the right and below is listed.
template <class T>
T middleOf(const Plane<T>& src, int x, int y, const std::vector<std::pair<int, int>>& places) {
  std::vector<T> values;
  for (const auto& [right, below] : places) values.push_back(src.at(x + right, y + below));
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct Mask {
  int width, height, anchorX, anchorY;
};

// Two values only exercise a network of comparisons completely (the 0-1 principle); many values the
// counting forms.
TEST(Median, ofARectangleAtAnyAnchorAndOfLines) {
  std::mt19937 rng(25);
  for (const Mask& m : {Mask{1, 1, 0, 0},
                        {3, 1, 1, 0},
                        {5, 1, 2, 0},
                        {1, 3, 0, 1},
                        {1, 5, 0, 2},
                        {3, 3, 1, 1},
                        {5, 5, 2, 2},
                        {3, 3, 0, 2},
                        {5, 5, 4, 0},
                        {5, 1, 0, 0},
                        {7, 1, 3, 0},
                        {1, 9, 0, 4},
                        {3, 5, 1, 2},
                        {9, 7, 8, 0}})
    for (int high : {1, 255})
      for (int width : {1, 530}) {
        SCOPED_TRACE(testing::Message() << m.width << "x" << m.height << " on " << width);
        Plane<std::uint8_t> src(width, 6, 8), dst(width, 6);
        src.randomise(rng, 0, high);
        std::vector<std::pair<int, int>> places;
        for (int i = 0; i < m.width * m.height; ++i)
          places.emplace_back(i % m.width - m.anchorX, i / m.width - m.anchorY);
        const auto middle = [&](int x, int y) { return middleOf(src, x, y, places); };
        ASSERT_EQ(call(primFilterMedian_8u_C1R, src, dst, dst.size(), Size{m.width, m.height},
                       m.anchorX, m.anchorY),
                  0);
        expectPlane(dst, middle);
        const int mask = 10 * m.width + m.height;
        if (mask == kMask13 || mask == kMask15) {
          ASSERT_EQ(call(primFilterMedianVert_8u_C1R, src, dst, dst.size(), mask), 0);
          expectPlane(dst, middle);
        }
        if ((mask == kMask31 || mask == kMask51) && m.anchorX > 0) {
          ASSERT_EQ(call(primFilterMedianHoriz_8u_C1R, src, dst, dst.size(), mask), 0);
          expectPlane(dst, middle);
        }
      }
}

template <class T>
void expectCross(int (*filter)(const T*, int, T*, int, int, int, int), int low, int high) {
  std::mt19937 rng(9);
  for (int mask : {kMask33, kMask55}) {
    std::vector<std::pair<int, int>> places = {{0, 0}};
    for (int d = 1; d <= (mask == kMask33 ? 1 : 2); ++d)
      places.insert(places.end(), {{d, 0}, {-d, 0}, {0, d}, {0, -d}});
    Plane<T> src(133, 9, 2), dst(133, 9);
    src.randomise(rng, low, high);
    ASSERT_EQ(call(filter, src, dst, dst.size(), mask), 0);
    expectPlane(dst, [&](int x, int y) { return middleOf(src, x, y, places); });
  }
}

TEST(Median, ofACross) {
  for (int high : {1, 255}) expectCross<std::uint8_t>(primFilterMedianCross_8u_C1R, 0, high);
  expectCross<std::int16_t>(primFilterMedianCross_16s_C1R, -1, 0);
  expectCross<std::int16_t>(primFilterMedianCross_16s_C1R, -32768, 32767);
}

TEST(Median, refusesStepsThenMasksThenAnchors) {
  std::uint8_t image[64] = {};
  static constexpr int kRows[][6] = {
      {3, 0, 0, 0, 0, -14},  {8, 0, 3, 9, 9, -33}, {8, 3, 0, 9, 9, -33},  {8, -3, 3, 9, 9, -33},
      {8, 3, 2, 9, 9, -33},  {8, 4, 3, 9, 9, -33}, {8, 3, 3, -1, 0, -34}, {8, 3, 3, 3, 0, -34},
      {8, 3, 3, 0, -1, -34}, {8, 3, 3, 0, 3, -34}};
  for (const auto& [step, width, height, anchorX, anchorY, status] : kRows)
    EXPECT_EQ(primFilterMedian_8u_C1R(image, step, image, 8, 4, 4, width, height, anchorX, anchorY),
              status);
  using Form = std::tuple<decltype(&primFilterMedianCross_8u_C1R), int, int>;
  for (const auto& [filter, small, large] : {Form{primFilterMedianCross_8u_C1R, 33, 55},
                                             {primFilterMedianVert_8u_C1R, 13, 15},
                                             {primFilterMedianHoriz_8u_C1R, 31, 51}}) {
    EXPECT_EQ(filter(image, 4, image, 3, 4, 4, 0), -14);
    for (int mask : {0, 3, 5, 11, 13, 15, 31, 33, 51, 55})
      if (mask != small && mask != large) {
        EXPECT_EQ(filter(image, 8, image, 8, 4, 4, mask), -33) << mask;
      }
  }
  std::int16_t word = 0;
  EXPECT_EQ(primFilterMedianCross_16s_C1R(&word, 1, &word, 2, 1, 1, 33), -14);
  EXPECT_EQ(primFilterMedianCross_16s_C1R(&word, 2, &word, 2, 1, 1, 31), -33);
}

TEST(Morphology, largestAndSmallestOfNine) {
  std::mt19937 rng(3);
  for (int width : {1, 2, 67, 600}) {
    Plane<float> src(width, 5, 1), dst(width, 5);
    src.randomise(rng, -5000, 5000);
    const auto extreme = [&](int x, int y, auto better) {
      float best = src.at(x, y);
      for (int i = 0; i < 9; ++i) best = better(best, src.at(x + i % 3 - 1, y + i / 3 - 1));
      return best;
    };
    const auto larger = [](float a, float b) { return std::max(a, b); };
    const auto smaller = [](float a, float b) { return std::min(a, b); };
    ASSERT_EQ(call(primDilate3x3_32f_C1R, src, dst, dst.size()), 0);
    expectPlane(dst, [&](int x, int y) { return extreme(x, y, larger); });
    ASSERT_EQ(call(primErode3x3_32f_C1R, src, dst, dst.size()), 0);
    expectPlane(dst, [&](int x, int y) { return extreme(x, y, smaller); });
  }
}

// One NaN at every place of the neighbourhood: it wins in the top row of the left column only.
TEST(Morphology, nanStaysOnlyWhereItComesFirst) {
  for (int at = 0; at < 9; ++at) {
    float src[9], largest = 0, smallest = 0;
    for (int i = 0; i < 9; ++i) src[i] = i == at ? kNan : static_cast<float>(i);
    ASSERT_EQ(primDilate3x3_32f_C1R(src + 4, 12, &largest, 4, 1, 1), 0);
    ASSERT_EQ(primErode3x3_32f_C1R(src + 4, 12, &smallest, 4, 1, 1), 0);
    // A column that begins with NaN is NaN as a whole.
    if (at == 0) {
      EXPECT_TRUE(largest != largest && smallest != smallest);
    } else {
      EXPECT_EQ(largest, at == 8 || at == 2 ? 7.0f : 8.0f) << at;
      EXPECT_EQ(smallest, 0.0f) << at;
    }
  }
}

TEST(Morphology, refusesStepsBelow1ThenShortOnes) {
  float image[32] = {};
  for (auto filter : {primDilate3x3_32f_C1R, primErode3x3_32f_C1R}) {
    EXPECT_EQ(filter(image, 24, image, -1, 4, 1), -14);
    EXPECT_EQ(filter(image, 23, image, 16, 4, 1), -37);
    EXPECT_EQ(filter(image, 24, image, 15, 4, 1), -37);
  }
}

}  // namespace
