#include "prim/pyramid.h"

#include <climits>

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

// Scratch of exactly the size that the query tells, at any alignment.
template <class Query, class Run>
void withBuffer(Query query, int width, Run run) {
  int size = 0;
  ASSERT_EQ(query(width, 13, 1, &size), 0);
  for (std::size_t shift : {0, 1, 12}) {
    std::vector<char> bytes(static_cast<std::size_t>(size) + shift);
    run(bytes.data() + shift);
  }
}

template <class Weight>
double weighted(const Plane<float>& src, int x, int y, Weight weight) {
  double sum = 0;
  for (int j = 0; j < src.height; ++j) {
    const int row = weight(y, j, src.height);
    for (int i = 0; row != 0 && i < src.width; ++i)
      sum += double{src.at(i, j)} * row * weight(x, i, src.width);
  }
  return sum;
}

TEST(Pyramid, halvesWithMirroredEdges) {
  std::mt19937 rng(6);
  onEveryVariant([&] {
    for (int width : {1, 2, 3, 4, 5, 6, 7, 64, 67})
      for (int height : {1, 2, 3, 4, 5, 8, 9}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height);
        Plane<float> src(width, height, 0, 0, 2);
        src.randomise(rng, -1000, 1000);
        withBuffer(primPyrDownGetBufSize, width, [&](void* buffer) {
          Plane<float> dst((width + 1) / 2, (height + 1) / 2, 1, 1);
          dst.fill(0.3f);
          ASSERT_EQ(primPyrDown_Gauss5x5_32f_C1R(src.data(), src.step, dst.data(), dst.step, width,
                                                 height, buffer),
                    0);
          expectPlane(dst, 0.3f,
                      [&](int x, int y) { return weighted(src, x, y, downWeight) / 256; });
        });
      }
  });
}

TEST(Pyramid, doublesWithMirrorAtTheStartAndRepetitionAtTheEnd) {
  std::mt19937 rng(7);
  onEveryVariant([&] {
    for (int width : {1, 2, 3, 4, 5, 33, 70})
      for (int height : {1, 2, 3, 4, 7}) {
        SCOPED_TRACE(testing::Message() << width << "x" << height);
        Plane<float> src(width, height, 0, 0, 2);
        src.randomise(rng, -1000, 1000);
        withBuffer(primPyrUpGetBufSize, width, [&](void* buffer) {
          Plane<float> dst(2 * width, 2 * height, 1, 1);
          dst.fill(0.3f);
          ASSERT_EQ(primPyrUp_Gauss5x5_32f_C1R(src.data(), src.step, dst.data(), dst.step, width,
                                               height, buffer),
                    0);
          expectPlane(dst, 0.3f, [&](int x, int y) { return weighted(src, x, y, upWeight) / 64; });
        });
      }
  });
}

TEST(Pyramid, edgeWeightsAreThoseOfTheMirrors) {
  EXPECT_EQ(downWeight(0, 0, 6), 6);
  EXPECT_EQ(downWeight(0, 1, 6), 8);
  EXPECT_EQ(downWeight(0, 2, 6), 2);
  for (int s = 2; s < 6; ++s)
    EXPECT_EQ(downWeight(2, s, 6), (std::vector<int>{1, 4, 7, 4})[static_cast<std::size_t>(s - 2)]);
}

TEST(Pyramid, bufferSizesFollowTheFormulas) {
  int size = 0;
  EXPECT_EQ(primPyrDownGetBufSize(5, 13, 1, &size), 0);
  EXPECT_EQ(size, 32 * 6 + 32);
  EXPECT_EQ(primPyrDownGetBufSize(5, 1, 3, &size), 0);
  EXPECT_EQ(size, 64 * 6 + 32);
  EXPECT_EQ(primPyrUpGetBufSize(5, 3, 1, &size), 0);
  EXPECT_EQ(size, 48 * 3 + 32);
  for (auto query : {primPyrDownGetBufSize, primPyrUpGetBufSize}) {
    EXPECT_EQ(query(0, 0, 0, nullptr), -8);
    EXPECT_EQ(query(0, 0, 0, &size), -6);
    EXPECT_EQ(query(1, 12, 2, &size), -12);
    EXPECT_EQ(query(1, 13, 2, &size), -53);
    EXPECT_EQ(query(INT_MAX, 13, 3, &size), -6) << "beyond an int";
  }
}

TEST(Pyramid, refusesInTheDocumentedOrder) {
  const float src[16] = {};
  float dst[64];
  char buffer[1024];
  EXPECT_EQ(primPyrDown_Gauss5x5_32f_C1R(src, 12, dst, 7, 3, 1, buffer), -14);
  EXPECT_EQ(primPyrUp_Gauss5x5_32f_C1R(src, 12, dst, 23, 3, 1, buffer), -14);
  for (auto step : {primPyrDown_Gauss5x5_32f_C1R, primPyrUp_Gauss5x5_32f_C1R}) {
    EXPECT_EQ(step(nullptr, 0, dst, 0, 0, 0, buffer), -8);
    EXPECT_EQ(step(src, 0, nullptr, 0, 0, 0, buffer), -8);
    EXPECT_EQ(step(src, 0, dst, 0, 0, 0, nullptr), -8);
    EXPECT_EQ(step(src, 0, dst, 0, 0, 1, buffer), -6);
    EXPECT_EQ(step(src, 0, dst, 0, 1, 0, buffer), -6);
    EXPECT_EQ(step(src, 11, dst, 64, 3, 1, buffer), -14);
    EXPECT_EQ(step(src, 13, dst, 64, 3, 1, buffer), -108);
    EXPECT_EQ(step(src, 12, dst, 66, 3, 1, buffer), -108);
  }
}

}  // namespace
