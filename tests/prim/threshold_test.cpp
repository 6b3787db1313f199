#include "prim/threshold.h"

#include <bit>
#include <limits>
#include <vector>

#include "tests/prim/elements.h"

namespace {

using namespace vx::prim;
using U8 = std::uint8_t;
using U16 = std::uint16_t;
using S16 = std::int16_t;

constexpr float kLevels[] = {0.75f, -2.0f, 100.0f};
constexpr U16 kWordLevels[] = {1000, 0, 40000};

TEST(Threshold, clipsIntegersFromAbove) {
  expectElements<U8, U8, U8>(
      1,
      [](int c, auto&, auto&, auto& d, int w, int h) {
        return table::primThreshold_GT_8u_C1IR[c](d.template data<U8>(), d.step, w, h, 130);
      },
      [](int, int, int d, int) { return d > 130 ? 130 : d; });
  const auto limited = [](int, int, int d, int channel) {
    return channel < 3 && d > kWordLevels[channel] ? kWordLevels[channel] : d;
  };
  const auto call = [](auto& row) {
    return [&row](int c, auto&, auto&, auto& d, int w, int h) {
      return row[c](d.template data<U16>(), d.step, w, h, kWordLevels);
    };
  };
  expectElements<U16, U16, U16>(3, call(table::primThreshold_GT_16u_C3IR), limited);
  expectElements<U16, U16, U16>(4, call(table::primThreshold_GT_16u_AC4IR), limited);
}

TEST(Threshold, clipsFloatsFromAboveAndBelow) {
  const auto one = [](auto& row) {
    return [&row](int c, auto&, auto&, auto& d, int w, int h) {
      return row[c](d.template data<float>(), d.step, w, h, kLevels[0]);
    };
  };
  const auto three = [](auto& row) {
    return [&row](int c, auto&, auto&, auto& d, int w, int h) {
      return row[c](d.template data<float>(), d.step, w, h, kLevels);
    };
  };
  const auto above = [](float, float, float d, int c) { return std::fmin(d, kLevels[c]); };
  const auto below = [](float, float, float d, int c) { return std::fmax(d, kLevels[c]); };
  expectElements<float, float, float>(1, one(table::primThreshold_GT_32f_C1IR), above);
  expectElements<float, float, float>(1, one(table::primThreshold_LT_32f_C1IR), below);
  expectElements<float, float, float>(3, three(table::primThreshold_GT_32f_C3IR), above);
  expectElements<float, float, float>(3, three(table::primThreshold_LT_32f_C3IR), below);
}

TEST(Threshold, nanTakesTheLevelAndWhatEqualsItKeepsItsBits) {
  constexpr float kInf = std::numeric_limits<float>::infinity();
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  const float before[] = {-0.0f, 0.0f, kNan, -kNan, kInf, -kInf};
  const float levels[] = {0.0f, 0.0f, 0.0f};
  const float above[] = {-0.0f, 0.0f, 0.0f, 0.0f, 0.0f, -kInf};
  const float below[] = {-0.0f, 0.0f, 0.0f, 0.0f, kInf, 0.0f};
  forEachBody([&](int column) {
    const auto expectBits = [&](const float* expected, auto clip) {
      std::vector<float> v;
      for (int i = 0; i < 48; ++i) v.push_back(before[i % 6]);
      ASSERT_EQ(clip(v.data()), 0);
      for (std::size_t i = 0; i < 48; ++i)
        ASSERT_EQ(std::bit_cast<std::uint32_t>(v[i]), std::bit_cast<std::uint32_t>(expected[i % 6]))
            << columnName(column) << ", element " << i;
    };
    expectBits(above, [&](float* v) {
      return table::primThreshold_GT_32f_C1IR[column](v, 0, 48, 1, levels[0]);
    });
    expectBits(above, [&](float* v) {
      return table::primThreshold_GT_32f_C3IR[column](v, 0, 16, 1, levels);
    });
    expectBits(below, [&](float* v) {
      return table::primThreshold_LT_32f_C1IR[column](v, 0, 48, 1, levels[0]);
    });
    expectBits(below, [&](float* v) {
      return table::primThreshold_LT_32f_C3IR[column](v, 0, 16, 1, levels);
    });
  });
}

// NaN stands in no relation, so no relation may be the negation of another.
template <class T>
bool holds(int selector, T a, T b) {
  if (a != a || b != b) return false;
  const int order = a < b ? -1 : a > b ? 1 : 0;
  return selector == 0   ? order < 0
         : selector == 1 ? order <= 0
         : selector == 2 ? order == 0
         : selector == 3 ? order >= 0
                         : order > 0;
}

// All pairs of the values as rows of n elements.
template <class T>
struct Pairs {
  explicit Pairs(const std::vector<T>& values) {
    for (const T x : values)
      for (const T y : values) {
        a.push_back(x);
        b.push_back(y);
      }
  }
  std::vector<T> a, b;
};

template <class T>
void expectRelations(const std::vector<T>& values, auto compareWith) {
  const Pairs<T> pairs(values);
  for (int selector = 0; selector <= 4; ++selector) {
    std::vector<U8> marks(pairs.a.size(), 7);
    compareWith(pairs, marks, selector);
    for (std::size_t i = 0; i < marks.size(); ++i)
      ASSERT_EQ(marks[i], holds(selector, pairs.a[i], pairs.b[i]) ? 255 : 0)
          << +pairs.a[i] << ", " << +pairs.b[i] << ", selector " << selector;
  }
}

TEST(Compare, marksEveryRelationOfEveryPair) {
  std::vector<float> floats = {0.0f, -0.0f, 1.0f, 1.0000001f, -3e38f, INFINITY, -INFINITY, NAN};
  std::vector<U8> bytes = {0, 1, 2, 126, 127, 128, 129, 254, 255};
  std::vector<S16> words = {-32768, -32767, -256, -1, 0, 1, 255, 256, 32766, 32767};
  forEachBody([&](int column) {
    SCOPED_TRACE(columnName(column));
    expectRelations(bytes, [&](const auto& p, auto& marks, int selector) {
      EXPECT_EQ(table::primCompare_8u_C1R[column](p.a.data(), 27, p.b.data(), 27, marks.data(), 27,
                                                  27, 3, selector),
                0);
    });
    expectRelations(floats, [&](const auto& p, auto& marks, int selector) {
      EXPECT_EQ(table::primCompare_32f_C1R[column](p.a.data(), 128, p.b.data(), 128, marks.data(),
                                                   32, 32, 2, selector),
                0);
    });
    // The constant is the second operand: one call per distinct value of it.
    expectRelations(floats, [&](const auto& p, auto& marks, int selector) {
      std::vector<U8> all(64);
      for (std::size_t k = 0; k < 8; ++k) {
        EXPECT_EQ(table::primCompareC_32f_C1R[column](p.a.data(), 256, p.b[k], all.data(), 64, 64,
                                                      1, selector),
                  0);
        for (std::size_t i = k; i < 64; i += 8) marks[i] = all[i];
      }
    });
    expectRelations(words, [&](const auto& p, auto& marks, int selector) {
      std::vector<U8> all(100);
      for (std::size_t k = 0; k < 10; ++k) {
        EXPECT_EQ(table::primCompareC_16s_C1R[column](p.a.data(), 200, p.b[k], all.data(), 100, 100,
                                                      1, selector),
                  0);
        for (std::size_t i = k; i < 100; i += 10) marks[i] = all[i];
      }
    });
  });
}

TEST(Compare, touchesOnlyItsPixels) {
  const auto less = [](auto a, auto b, U8, int) { return a < b ? 255 : 0; };
  expectElements<U8, U8, U8>(
      1,
      [](int c, auto& a, auto& b, auto& d, int w, int h) {
        return table::primCompare_8u_C1R[c](a.template data<U8>(), a.step, b.template data<U8>(),
                                            b.step, d.template data<U8>(), d.step, w, h, 0);
      },
      less, false);
  expectElements<float, float, U8>(
      1,
      [](int c, auto& a, auto& b, auto& d, int w, int h) {
        return table::primCompare_32f_C1R[c](a.template data<float>(), a.step,
                                             b.template data<float>(), b.step,
                                             d.template data<U8>(), d.step, w, h, 0);
      },
      less, false);
  expectElements<float, float, U8>(
      1,
      [](int c, auto& a, auto&, auto& d, int w, int h) {
        return table::primCompareC_32f_C1R[c](a.template data<float>(), a.step, 0.01f,
                                              d.template data<U8>(), d.step, w, h, 0);
      },
      [](float a, float, U8, int) { return a < 0.01f ? 255 : 0; }, false);
  expectElements<S16, S16, U8>(
      1,
      [](int c, auto& a, auto&, auto& d, int w, int h) {
        return table::primCompareC_16s_C1R[c](a.template data<S16>(), a.step, 99,
                                              d.template data<U8>(), d.step, w, h, 0);
      },
      [](S16 a, S16, U8, int) { return a < 99 ? 255 : 0; }, false);
}

TEST(Compare, anUnknownSelectorDoesNothing) {
  float f = 1.0f;
  S16 s = 1;
  U8 u = 1, dst = 7;
  for (int selector : {-1, 5, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(primCompare_8u_C1R(&u, 1, &u, 1, &dst, 1, 1, 1, selector), 0);
    EXPECT_EQ(primCompareC_32f_C1R(&f, 4, 1.0f, &dst, 1, 1, 1, selector), 0);
    EXPECT_EQ(primCompareC_16s_C1R(&s, 2, 1, &dst, 1, 1, 1, selector), 0);
    EXPECT_EQ(primCompare_32f_C1R(&f, 4, &f, 0, &dst, 1, 1, 1, selector), -14);
  }
  EXPECT_EQ(dst, 7);
}

TEST(Threshold, refusesNullPointersThenSizesThenSteps) {
  float f[4] = {5, 5, 5, 5};
  U16 w[4] = {5, 5, 5, 5};
  U8 u = 5;
  EXPECT_EQ(primThreshold_GT_32f_C3IR(f, 16, 0, 1, nullptr), -8);
  EXPECT_EQ(primThreshold_LT_32f_C3IR(nullptr, 16, 1, 1, f), -8);
  EXPECT_EQ(primThreshold_GT_16u_AC4IR(w, 8, 0, 1, nullptr), -8);
  EXPECT_EQ(primThreshold_GT_16u_C3IR(w, 6, 1, 0, w), -6);
  EXPECT_EQ(primThreshold_GT_32f_C3IR(f, 16, -1, 1, f), -6);
  EXPECT_EQ(primThreshold_GT_8u_C1IR(&u, 0, 0, 1, 1), -6);
  EXPECT_EQ(primCompare_8u_C1R(&u, 0, &u, 1, nullptr, 1, 1, 1, 0), -8);
  EXPECT_EQ(primCompare_8u_C1R(&u, 0, &u, 1, &u, 1, 1, 0, 0), -6);
  EXPECT_EQ(primCompare_8u_C1R(&u, 1, &u, 1, &u, -1, 1, 1, 0), -14);
  EXPECT_EQ(primCompareC_32f_C1R(f, 0, 1, &u, 1, 1, 1, 0), -14);
  EXPECT_EQ(u, 5);
}

}  // namespace
