#include "prim/arith_int.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "tests/prim/elements.h"

namespace {

using namespace vx::prim;
using U8 = std::uint8_t;
using S16 = std::int16_t;

// The result of an operation scaled by 2^-s, in 64 bits. `bits`: width of the exact result.
template <class T>
std::int64_t scaled(std::int64_t r, int s, int bits) {
  constexpr std::int64_t kLow = std::numeric_limits<T>::min();
  constexpr std::int64_t kHigh = std::numeric_limits<T>::max();
  constexpr int kMaxUp = sizeof(T) * 8 - 1;
  if (s > bits) return 0;
  if (s < -kMaxUp) return r > 0 ? kHigh : r < 0 ? kLow : 0;
  if (s <= 0) return std::clamp(r * (std::int64_t{1} << -s), kLow, kHigh);
  const double exact = std::ldexp(static_cast<double>(r), -s);
  return std::clamp(std::int64_t{std::llrint(exact)}, kLow, kHigh);  // ties to even
}

std::vector<int> scaleFactors() {
  std::vector<int> all = {std::numeric_limits<int>::min(), -100, 100,
                          std::numeric_limits<int>::max()};
  for (int s = -18; s <= 18; ++s) all.push_back(s);
  return all;
}

// Every pair of bytes as two images of 256 x 256.
struct AllPairs {
  AllPairs() {
    for (int i = 0; i < 65536; ++i) {
      a.push_back(static_cast<U8>(i / 256));
      b.push_back(static_cast<U8>(i % 256));
    }
  }
  std::vector<U8> a, b;
};

TEST(ArithInt, scalesEverySumAndDifferenceOfBytes) {
  const AllPairs pairs;
  forEachBody([&](int column) {
    for (int s : scaleFactors()) {
      SCOPED_TRACE(std::string(columnName(column)) + ", scale factor " + std::to_string(s));
      std::vector<U8> sum(65536), sumInPlace = pairs.b, difference = pairs.b;
      const U8* a = pairs.a.data();
      ASSERT_EQ(table::primAdd_8u_C1RSfs[column](a, 256, pairs.b.data(), 256, sum.data(), 256, 256,
                                                 256, s),
                0);
      ASSERT_EQ(table::primAdd_8u_C1IRSfs[column](a, 256, sumInPlace.data(), 256, 256, 256, s), 0);
      ASSERT_EQ(table::primSub_8u_C1IRSfs[column](a, 256, difference.data(), 256, 256, 256, s), 0);
      EXPECT_EQ(sum, sumInPlace);
      for (std::size_t i = 0; i < 65536; ++i) {
        const int x = pairs.a[i], y = pairs.b[i];
        ASSERT_EQ(sum[i], scaled<U8>(x + y, s, 9)) << x << " + " << y;
        ASSERT_EQ(difference[i], scaled<U8>(std::max(y - x, 0), s, 8)) << y << " - " << x;
      }
    }
  });
}

TEST(ArithInt, scalesSumsAndDifferencesOfWords) {
  std::vector<S16> values = {-32768, -32767, -16384, -3, -2,    -1,    0,
                             1,      2,      3,      5,  16384, 32766, 32767};
  std::mt19937 rng(5);
  while (values.size() < 60) values.push_back(static_cast<S16>(rng()));
  const int n = static_cast<int>(values.size());
  forEachBody([&](int column) {
    for (int s : scaleFactors())
      for (const S16 v : values) {
        SCOPED_TRACE(std::string(columnName(column)) + ", scale factor " + std::to_string(s));
        const std::vector<S16> subtrahend(values.size(), v);
        std::vector<S16> difference = values, sum = values;
        ASSERT_EQ(
            table::primSub_16s_C1IRSfs[column](subtrahend.data(), 0, difference.data(), 0, n, 1, s),
            0);
        ASSERT_EQ(table::primAddC_16s_C1IRSfs[column](v, sum.data(), 0, n, 1, s), 0);
        for (std::size_t i = 0; i < values.size(); ++i) {
          ASSERT_EQ(difference[i], scaled<S16>(values[i] - v, s, 16)) << values[i] << " - " << v;
          ASSERT_EQ(sum[i], scaled<S16>(values[i] + v, s, 16)) << values[i] << " + " << v;
        }
      }
  });
}

TEST(ArithInt, roundsTheMeanOfTwoBytesToEven) {
  U8 one = 1, two = 2, three = 3, seven = 7;
  U8 dst = 2;
  EXPECT_EQ(primAdd_8u_C1IRSfs(&one, 1, &dst, 1, 1, 1, 1), 0);
  EXPECT_EQ(dst, 2);  // 1.5
  EXPECT_EQ(primAdd_8u_C1RSfs(&two, 1, &three, 1, &dst, 1, 1, 1, 1), 0);
  EXPECT_EQ(dst, 2);  // 2.5
  dst = 3;
  EXPECT_EQ(primSub_8u_C1IRSfs(&seven, 1, &dst, 1, 1, 1, 1), 0);
  EXPECT_EQ(dst, 0);
}

TEST(ArithInt, touchesOnlyItsPixelsAtAnyAddressAndStep) {
  for (int s : {0, 1, 4, 20, -3, -20}) {
    expectElements<U8, U8, U8>(
        1,
        [s](int c, auto& a, auto& b, auto& d, int w, int h) {
          return table::primAdd_8u_C1RSfs[c](a.template data<U8>(), a.step, b.template data<U8>(),
                                             b.step, d.template data<U8>(), d.step, w, h, s);
        },
        [s](int a, int b, int, int) { return scaled<U8>(a + b, s, 9); });
    expectElements<U8, U8, U8>(
        1,
        [s](int c, auto&, auto&, auto& d, int w, int h) {
          return table::primSubC_8u_C1IRSfs[c](77, d.template data<U8>(), d.step, w, h, s);
        },
        [s](int, int, int d, int) { return scaled<U8>(std::max(d - 77, 0), s, 8); });
    expectElements<S16, S16, S16>(
        1,
        [s](int c, auto& a, auto&, auto& d, int w, int h) {
          return table::primSub_16s_C1IRSfs[c](a.template data<S16>(), a.step,
                                               d.template data<S16>(), d.step, w, h, s);
        },
        [s](int a, int, int d, int) { return scaled<S16>(d - a, s, 16); });
    expectElements<S16, S16, S16>(
        1,
        [s](int c, auto&, auto&, auto& d, int w, int h) {
          return table::primAddC_16s_C1IRSfs[c](-9999, d.template data<S16>(), d.step, w, h, s);
        },
        [s](int, int, int d, int) { return scaled<S16>(d - 9999, s, 16); });
  }
}

TEST(ArithInt, magnitudeOfEveryWordSaturates) {
  forEachBody([](int column) {
    std::vector<S16> v(65536);
    for (int i = 0; i < 65536; ++i) v[static_cast<std::size_t>(i)] = static_cast<S16>(i - 32768);
    ASSERT_EQ(table::primAbs_16s_C1IR[column](v.data(), 0, 65536, 1), 0);
    for (int i = 0; i < 65536; ++i)
      ASSERT_EQ(v[static_cast<std::size_t>(i)], std::min(std::abs(i - 32768), 32767)) << i - 32768;
  });
}

TEST(ArithInt, absoluteDifferenceAndProductSum) {
  expectElements<U8, U8, U8>(
      1,
      [](int c, auto& a, auto& b, auto& d, int w, int h) {
        return table::primAbsDiff_8u_C1R[c](a.template data<U8>(), a.step, b.template data<U8>(),
                                            b.step, d.template data<U8>(), d.step, w, h);
      },
      [](int a, int b, int, int) { return std::abs(a - b); });
  expectElements<U8, U8, float>(
      1,
      [](int c, auto& a, auto& b, auto& d, int w, int h) {
        return table::primAddProduct_8u32f_C1IR[c](a.template data<U8>(), a.step,
                                                   b.template data<U8>(), b.step,
                                                   d.template data<float>(), d.step, w, h);
      },
      [](int a, int b, double d, int) { return d + a * b; }, false);
}

TEST(ArithInt, refusesBadArgumentsEvenWhereThereIsNothingToDo) {
  U8 u[] = {9, 9};
  S16 s = 9;
  float f[2] = {};
  EXPECT_EQ(primSubC_8u_C1IRSfs(0, nullptr, 1, 1, 1, 0), -8);
  EXPECT_EQ(primSubC_8u_C1IRSfs(0, u, 1, 0, 1, 0), -6);
  EXPECT_EQ(primSubC_8u_C1IRSfs(0, u, 1, 2, 1, 0), 0);
  EXPECT_EQ(u[0], 9);
  EXPECT_EQ(primAddC_16s_C1IRSfs(0, nullptr, 1, 1, 1, 0), -8);
  EXPECT_EQ(primAddC_16s_C1IRSfs(0, &s, 2, 1, 0, 0), -6);
  EXPECT_EQ(primAdd_8u_C1RSfs(u, 1, nullptr, 1, u, 1, 0, 0, 0), -8);
  EXPECT_EQ(primAdd_8u_C1RSfs(u, 1, u, 1, u, 1, -1, 1, 20), -6);
  EXPECT_EQ(primAddProduct_8u32f_C1IR(u, 1, u, 2, f, 8, 2, 1), -14);
  EXPECT_EQ(primAddProduct_8u32f_C1IR(u, 2, u, 1, f, 8, 2, 1), -14);
  EXPECT_EQ(primAddProduct_8u32f_C1IR(u, 2, u, 2, f, 4, 2, 1), -14);
  EXPECT_EQ(primAddProduct_8u32f_C1IR(u, 2, u, 2, f, 10, 2, 1), -14);
  EXPECT_EQ(primAddProduct_8u32f_C1IR(u, 2, u, 2, f, 8, 2, 1), 0);
  EXPECT_EQ(f[1], 81.0f);
}

}  // namespace
