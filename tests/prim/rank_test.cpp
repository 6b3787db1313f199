#include "prim/rank.h"

#include <algorithm>
#include <limits>

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;
using Bytes = Plane<std::uint8_t>;

template <class T>
T middle(std::vector<T> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

template <class T>
T middleOfBox(const Plane<T>& src, int left, int top, int columns, int rows) {
  std::vector<T> values;
  for (int j = 0; j < rows; ++j)
    for (int i = 0; i < columns; ++i) values.push_back(src.at(left + i, top + j));
  return middle(values);
}

template <class T>
T middleOfCross(const Plane<T>& src, int x, int y, int arm) {
  std::vector<T> values{src.at(x, y)};
  for (int d = 1; d <= arm; ++d)
    for (T v : {src.at(x - d, y), src.at(x + d, y), src.at(x, y - d), src.at(x, y + d)})
      values.push_back(v);
  return middle(values);
}

// Two values only exercise a network of comparisons completely (the 0-1 principle); many values the
// counting forms.
TEST(Median, ofARectangleAtAnyAnchor) {
  std::mt19937 rng(25);
  struct Mask {
    int width, height, anchorX, anchorY;
  };
  onEveryVariant([&] {
    for (Mask m : {Mask{1, 1, 0, 0},
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
        for (int width : {1, 70, m.height > 5 ? 20 : 530}) {
          SCOPED_TRACE(testing::Message() << m.width << "x" << m.height << " on " << width);
          Bytes src(width, 6, 8, 8), dst(width, 6, 1, 1, 3);
          src.randomise(rng, 0, high);
          dst.fill(77);
          ASSERT_EQ(primFilterMedian_8u_C1R(src.data(), src.step, dst.data(), dst.step, width, 6,
                                            m.width, m.height, m.anchorX, m.anchorY),
                    0);
          expectPlane<std::uint8_t>(dst, 77, [&](int x, int y) {
            return middleOfBox(src, x - m.anchorX, y - m.anchorY, m.width, m.height);
          });
        }
  });
}

template <class T>
void checkCross(decltype(primFilterMedianCross_8u_C1R) bytes,
                decltype(primFilterMedianCross_16s_C1R) words, int low, int high) {
  std::mt19937 rng(9);
  for (int mask : {kMask33, kMask55}) {
    Plane<T> src(133, 9, 2, 2), dst(133, 9, 1, 1, 5);
    src.randomise(rng, low, high);
    dst.fill(77);
    int status = -1;
    if constexpr (sizeof(T) == 1) {
      status = bytes(src.data(), src.step, dst.data(), dst.step, 133, 9, mask);
    } else {
      status = words(src.data(), src.step, dst.data(), dst.step, 133, 9, mask);
    }
    ASSERT_EQ(status, 0);
    expectPlane<T>(dst, 77,
                   [&](int x, int y) { return middleOfCross(src, x, y, mask == kMask33 ? 1 : 2); });
  }
}

TEST(Median, ofACross) {
  onEveryVariant([] {
    for (int high : {1, 255})
      checkCross<std::uint8_t>(primFilterMedianCross_8u_C1R, nullptr, 0, high);
    checkCross<std::int16_t>(nullptr, primFilterMedianCross_16s_C1R, -1, 0);
    checkCross<std::int16_t>(nullptr, primFilterMedianCross_16s_C1R, -32768, 32767);
  });
}

TEST(Median, ofAColumnOrARow) {
  std::mt19937 rng(10);
  onEveryVariant([&] {
    for (int n : {3, 5}) {
      Bytes src(130, 5, 2, 2), dst(130, 5, 1, 1, 5);
      src.randomise(rng, 0, 255);
      dst.fill(77);
      ASSERT_EQ(
          primFilterMedianVert_8u_C1R(src.data(), src.step, dst.data(), dst.step, 130, 5, 10 + n),
          0);
      expectPlane<std::uint8_t>(dst, 77,
                                [&](int x, int y) { return middleOfBox(src, x, y - n / 2, 1, n); });
      dst.fill(77);
      ASSERT_EQ(primFilterMedianHoriz_8u_C1R(src.data(), src.step, dst.data(), dst.step, 130, 5,
                                             10 * n + 1),
                0);
      expectPlane<std::uint8_t>(dst, 77,
                                [&](int x, int y) { return middleOfBox(src, x - n / 2, y, n, 1); });
    }
  });
}

TEST(Median, refusesInTheDocumentedOrder) {
  const std::uint8_t src[64] = {};
  std::uint8_t dst[64];
  EXPECT_EQ(primFilterMedian_8u_C1R(nullptr, 0, dst, 0, 0, 0, 0, 0, 0, 0), -8);
  EXPECT_EQ(primFilterMedian_8u_C1R(src, 0, nullptr, 0, 0, 0, 0, 0, 0, 0), -8);
  EXPECT_EQ(primFilterMedian_8u_C1R(src, 0, dst, 0, 0, 4, 0, 0, 0, 0), -6);
  EXPECT_EQ(primFilterMedian_8u_C1R(src, 3, dst, 4, 4, 4, 0, 0, 0, 0), -14);
  for (int bad : {0, -3, 2, 4}) {
    EXPECT_EQ(primFilterMedian_8u_C1R(src, 8, dst, 8, 4, 4, bad, 3, 9, 9), -33);
    EXPECT_EQ(primFilterMedian_8u_C1R(src, 8, dst, 8, 4, 4, 3, bad, 9, 9), -33);
  }
  for (int bad : {-1, 3}) {
    EXPECT_EQ(primFilterMedian_8u_C1R(src, 8, dst, 8, 4, 4, 3, 3, bad, 0), -34);
    EXPECT_EQ(primFilterMedian_8u_C1R(src, 8, dst, 8, 4, 4, 3, 3, 0, bad), -34);
  }
  struct Form {
    decltype(&primFilterMedianCross_8u_C1R) filter;
    std::vector<int> masks;
  };
  for (const Form& f :
       {Form{primFilterMedianCross_8u_C1R, {33, 55}}, Form{primFilterMedianVert_8u_C1R, {13, 15}},
        Form{primFilterMedianHoriz_8u_C1R, {31, 51}}}) {
    EXPECT_EQ(f.filter(nullptr, 0, dst, 0, 0, 0, 0), -8);
    EXPECT_EQ(f.filter(src, 0, dst, 0, 4, 0, 0), -6);
    EXPECT_EQ(f.filter(src, 4, dst, 3, 4, 4, 0), -14);
    for (int mask : {0, 3, 5, 11, 13, 15, 31, 33, 51, 55})
      if (std::count(f.masks.begin(), f.masks.end(), mask) == 0) {
        EXPECT_EQ(f.filter(src, 8, dst, 8, 4, 4, mask), -33) << mask;
      }
  }
  std::int16_t word = 0;
  EXPECT_EQ(primFilterMedianCross_16s_C1R(&word, 1, &word, 2, 1, 1, 33), -14);
  EXPECT_EQ(primFilterMedianCross_16s_C1R(&word, 2, &word, 2, 1, 1, 31), -33);
}

TEST(Morphology, largestAndSmallestOfNine) {
  std::mt19937 rng(3);
  onEveryVariant([&] {
    for (int width : {1, 2, 67, 512, 600}) {
      Plane<float> src(width, 5, 1, 1), dst(width, 5, 1, 1, 3);
      src.randomise(rng, -5000, 5000);
      const auto box = [&](int x, int y, bool largest) {
        std::vector<float> v;
        for (int j = -1; j <= 1; ++j)
          for (int i = -1; i <= 1; ++i) v.push_back(src.at(x + i, y + j));
        return largest ? *std::max_element(v.begin(), v.end())
                       : *std::min_element(v.begin(), v.end());
      };
      dst.fill(0.5f);
      ASSERT_EQ(primDilate3x3_32f_C1R(src.data(), src.step, dst.data(), dst.step, width, 5), 0);
      expectPlane(dst, 0.5f, [&](int x, int y) { return box(x, y, true); });
      dst.fill(0.5f);
      ASSERT_EQ(primErode3x3_32f_C1R(src.data(), src.step, dst.data(), dst.step, width, 5), 0);
      expectPlane(dst, 0.5f, [&](int x, int y) { return box(x, y, false); });
    }
  });
}

// One NaN at every place of the neighbourhood: it wins in the top row of the left column only.
TEST(Morphology, nanStaysOnlyWhereItComesFirst) {
  onEveryVariant([] {
    for (int at = 0; at < 9; ++at) {
      Plane<float> src(1, 1, 1, 1);
      for (int i = 0; i < 9; ++i) src.at(i % 3 - 1, i / 3 - 1) = static_cast<float>(i);
      src.at(at % 3 - 1, at / 3 - 1) = std::numeric_limits<float>::quiet_NaN();
      float largest = 0, smallest = 0;
      ASSERT_EQ(primDilate3x3_32f_C1R(src.data(), src.step, &largest, 4, 1, 1), 0);
      ASSERT_EQ(primErode3x3_32f_C1R(src.data(), src.step, &smallest, 4, 1, 1), 0);
      // A column that begins with NaN is NaN as a whole.
      if (at == 0) {
        EXPECT_TRUE(largest != largest && smallest != smallest);
      } else {
        EXPECT_EQ(largest, at == 8 || at == 2 ? 7.0f : 8.0f) << at;
        EXPECT_EQ(smallest, 0.0f) << at;
      }
    }
  });
}

TEST(Morphology, refusesInTheDocumentedOrder) {
  const float src[32] = {};
  float dst[32];
  for (auto filter : {primDilate3x3_32f_C1R, primErode3x3_32f_C1R}) {
    EXPECT_EQ(filter(nullptr, 0, dst, 0, 0, 0), -8);
    EXPECT_EQ(filter(src, 0, nullptr, 0, 0, 0), -8);
    EXPECT_EQ(filter(src, 0, dst, 0, 0, 1), -6);
    EXPECT_EQ(filter(src, 0, dst, 0, 1, 0), -6);
    EXPECT_EQ(filter(src, 0, dst, 16, 4, 1), -14);
    EXPECT_EQ(filter(src, 24, dst, -1, 4, 1), -14);
    EXPECT_EQ(filter(src, 23, dst, 16, 4, 1), -37);
    EXPECT_EQ(filter(src, 24, dst, 15, 4, 1), -37);
  }
}

}  // namespace
