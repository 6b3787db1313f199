#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

// Mirror about both ends: the period is 2 * (size - 1).
int mirror(int i, int size) {
  const int period = size > 1 ? 2 * (size - 1) : 1;
  const int r = ((i % period) + period) % period;
  return r < size ? r : period - r;
}

// Weight of source index s in destination index d of one axis, times 16 or 8.
int downWeight(int d, int s, int size) {
  static constexpr int kTaps[] = {1, 4, 6, 4, 1};
  int weight = 0;
  for (int t = 0; t < 5; ++t) weight += mirror(2 * d - 2 + t, size) == s ? kTaps[t] : 0;
  return weight;
}

int upWeight(int d, int s, int size) {
  const auto at = [=](int i) { return (i < 0 ? mirror(i, size) : i < size ? i : size - 1) == s; };
  const int i = d / 2;
  return d % 2 == 0 ? at(i - 1) + 6 * at(i) + at(i + 1) : 4 * at(i) + 4 * at(i + 1);
}

template <class Weight>
double weighted(const Plane<float>& src, int x, int y, Weight weight) {
  double sum = 0;
  for (int j = 0; j < src.height; ++j)
    for (int i = 0; i < src.width; ++i)
      sum += double{src.at(i, j)} * weight(y, j, src.height) * weight(x, i, src.width);
  return sum;
}

TEST(Pyramid, halvesWithMirrorsAndDoublesWithARepeatedEnd) {
  std::mt19937 rng(6);
  for (int width : {1, 2, 3, 4, 5, 6, 7, 67})
    for (int height : {1, 2, 3, 4, 5, 8, 9}) {
      SCOPED_TRACE(testing::Message() << width << "x" << height);
      Plane<float> src(width, height), half((width + 1) / 2, (height + 1) / 2);
      Plane<float> twice(2 * width, 2 * height);
      src.randomise(rng, -1000, 1000);
      int bytes = 0;
      ASSERT_EQ(primPyrDownGetBufSize(width, 13, 1, &bytes), 0);
      std::vector<char> buffer(static_cast<std::size_t>(bytes) + 1);  // at any address
      void* const odd = buffer.data() + 1;
      ASSERT_EQ(call(primPyrDown_Gauss5x5_32f_C1R, src, half, src.size(), odd), 0);
      expectPlane(half, [&](int x, int y) { return weighted(src, x, y, downWeight) / 256; });
      ASSERT_EQ(primPyrUpGetBufSize(width, 13, 1, &bytes), 0);
      ASSERT_EQ(call(primPyrUp_Gauss5x5_32f_C1R, src, twice, src.size(), buffer.data()), 0);
      expectPlane(twice, [&](int x, int y) { return weighted(src, x, y, upWeight) / 64; });
    }
}

TEST(Pyramid, bufferSizesFollowTheFormulas) {
  static constexpr int kRows[][6] = {{5, 13, 1, 0, 32 * 6 + 32, 48 * 3 + 32},
                                     {5, 3, 1, 0, 32 * 6 + 32, 48 * 3 + 32},
                                     {5, 1, 3, 0, 64 * 6 + 32, 128 * 3 + 32},
                                     {0, 0, 0, -6, -1, -1},
                                     {1, 12, 2, -12, -1, -1},
                                     {1, 13, 2, -53, -1, -1},
                                     {INT_MAX, 13, 3, -6, -1, -1}};
  for (const auto& [width, type, channels, status, downSize, upSize] : kRows) {
    int down = -1, up = -1;
    EXPECT_EQ(primPyrDownGetBufSize(width, type, channels, &down), status);
    EXPECT_EQ(primPyrUpGetBufSize(width, type, channels, &up), status);
    EXPECT_EQ(down, downSize);
    EXPECT_EQ(up, upSize);
  }
  for (auto query : {primPyrDownGetBufSize, primPyrUpGetBufSize})
    EXPECT_EQ(query(0, 0, 0, nullptr), -8);
}

}  // namespace
