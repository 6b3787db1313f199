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

// Two values only exercise a network of comparisons completely (the 0-1 principle); many values the
// counting forms.
TEST(Median, ofARectangleAtAnyAnchorAndOfLines) {
  std::mt19937 rng(25);
  static constexpr int kMasks[][4] = {{1, 1, 0, 0}, {3, 1, 1, 0}, {5, 1, 2, 0}, {1, 3, 0, 1},
                                      {1, 5, 0, 2}, {3, 3, 1, 1}, {5, 5, 2, 2}, {3, 3, 0, 2},
                                      {5, 5, 4, 0}, {5, 1, 0, 0}, {7, 1, 3, 0}, {1, 9, 0, 4},
                                      {3, 5, 1, 2}, {9, 7, 8, 0}};
  for (const auto& [columns, rows, anchorX, anchorY] : kMasks)
    for (int high : {1, 255})
      for (int width : {1, 530}) {
        SCOPED_TRACE(testing::Message() << columns << "x" << rows << " on " << width);
        Plane<U8> src(width, 6, 8), dst(width, 6);
        src.randomise(rng, 0, high);
        std::vector<std::pair<int, int>> places;
        for (int i = 0; i < columns * rows; ++i)
          places.emplace_back(i % columns - anchorX, i / columns - anchorY);
        const auto expectMiddle = [&](int status) {
          ASSERT_EQ(status, 0);
          expectPlane(dst, [&](int x, int y) { return middleOf(src, x, y, places); });
        };
        expectMiddle(call(primFilterMedian_8u_C1R, src, dst, dst.size(), Size{columns, rows},
                          anchorX, anchorY));
        const int mask = 10 * columns + rows;
        if (mask == kMask13 || mask == kMask15)
          expectMiddle(call(primFilterMedianVert_8u_C1R, src, dst, dst.size(), mask));
        if ((mask == kMask31 || mask == kMask51) && anchorX > 0)
          expectMiddle(call(primFilterMedianHoriz_8u_C1R, src, dst, dst.size(), mask));
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
  for (int high : {1, 255}) expectCross<U8>(primFilterMedianCross_8u_C1R, 0, high);
  expectCross<S16>(primFilterMedianCross_16s_C1R, -1, 0);
  expectCross<S16>(primFilterMedianCross_16s_C1R, -32768, 32767);
}

TEST(Morphology, largestAndSmallestOfNine) {
  std::mt19937 rng(3);
  for (int width : {1, 2, 67, 600})
    for (const auto& [filter, sign] :
         {std::pair{&primDilate3x3_32f_C1R, 1}, {&primErode3x3_32f_C1R, -1}}) {
      Plane<float> src(width, 5, 1), dst(width, 5);
      src.randomise(rng, -5000, 5000);
      ASSERT_EQ(call(filter, src, dst, dst.size()), 0);
      expectPlane(dst, [&, s = static_cast<float>(sign)](int x, int y) {
        float most = -kInf;
        for (int i = 0; i < 9; ++i) most = std::max(most, s * src.at(x + i % 3 - 1, y + i / 3 - 1));
        return s * most;
      });
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

}  // namespace
