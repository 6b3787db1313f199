#include "prim/arith.h"

#include <bit>
#include <limits>
#include <vector>

#include "tests/prim/elements.h"

namespace {

using namespace vx::prim;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// The operands are exact in double, and one operation in double rounded to float is the float
// operation: the oracles below are written in double throughout.
template <class Oracle>
void expectInPlace(int (*const (&row)[kColumnCount])(const float*, int, float*, int, int, int),
                   Oracle oracle, int channels = 1) {
  expectElements<float, float, float>(
      channels,
      [&](int c, auto& a, auto&, auto& d, int w, int h) {
        return row[c](a.template data<float>(), a.step, d.template data<float>(), d.step, w, h);
      },
      [&](double a, double, double d, int) { return oracle(a, d); });
}

template <class Oracle>
void expectTwoSources(int (*const (&row)[kColumnCount])(const float*, int, const float*, int,
                                                        float*, int, int, int),
                      Oracle oracle, bool anyStep = true) {
  expectElements<float, float, float>(
      1,
      [&](int c, auto& a, auto& b, auto& d, int w, int h) {
        return row[c](a.template data<float>(), a.step, b.template data<float>(), b.step,
                      d.template data<float>(), d.step, w, h);
      },
      [&](double a, double b, double, int) { return oracle(a, b); }, anyStep);
}

TEST(Arith, combinesTwoImagesWithTheSubtrahendAndDivisorFirst) {
  const auto sum = [](double a, double b) { return a + b; };
  expectInPlace(table::primAdd_32f_C1IR, sum);
  expectInPlace(table::primAdd_32f_C3IR, sum, 3);
  expectInPlace(table::primSub_32f_C1IR, [](double src, double d) { return d - src; });
  expectInPlace(table::primMul_32f_C1IR, [](double a, double b) { return a * b; });
  expectInPlace(table::primDiv_32f_C1IR, [](double src, double d) { return d / src; });
  expectTwoSources(table::primAdd_32f_C1R, sum);
  expectTwoSources(table::primSub_32f_C1R, [](double a, double b) { return b - a; });
  expectTwoSources(
      table::primAbsDiff_32f_C1R, [](double a, double b) { return std::abs(a - b); }, false);
}

TEST(Arith, combinesAnImageWithAConstant) {
  static constexpr float kValues[] = {1.0f / 3, -7.7f, 1e5f};
  static constexpr float kValue = kValues[0];
  const auto expectValue = [](auto& row, auto oracle) {
    expectElements<float, float, float>(
        1,
        [&](int c, auto&, auto&, auto& d, int w, int h) {
          return row[c](kValue, d.template data<float>(), d.step, w, h);
        },
        [&](double, double, double d, int) { return oracle(d, double{kValue}); });
  };
  const auto expectValues = [](auto& row, auto oracle) {
    expectElements<float, float, float>(
        3,
        [&](int c, auto&, auto&, auto& d, int w, int h) {
          return row[c](kValues, d.template data<float>(), d.step, w, h);
        },
        [&](double, double, double d, int channel) { return oracle(d, double{kValues[channel]}); });
  };
  const auto expectCopied = [](auto& row, auto oracle) {
    expectElements<float, float, float>(
        1,
        [&](int c, auto& a, auto&, auto& d, int w, int h) {
          return row[c](a.template data<float>(), a.step, kValue, d.template data<float>(), d.step,
                        w, h);
        },
        [&](double a, double, double, int) { return oracle(a, double{kValue}); });
  };
  const auto sum = [](double a, double b) { return a + b; };
  const auto difference = [](double a, double b) { return a - b; };
  const auto product = [](double a, double b) { return a * b; };
  expectValue(table::primAddC_32f_C1IR, sum);
  expectValue(table::primSubC_32f_C1IR, difference);
  expectValue(table::primMulC_32f_C1IR, product);
  expectValues(table::primAddC_32f_C3IR, sum);
  expectValues(table::primMulC_32f_C3IR, product);
  expectCopied(table::primSubC_32f_C1R, difference);
  expectCopied(table::primMulC_32f_C1R, product);
}

TEST(Arith, squaresAndMagnitudes) {
  const auto expectUnary = [](auto& row, auto oracle) {
    expectElements<float, float, float>(
        1,
        [&](int c, auto&, auto&, auto& d, int w, int h) {
          return row[c](d.template data<float>(), d.step, w, h);
        },
        [&](double, double, double d, int) { return oracle(d); });
  };
  expectUnary(table::primSqr_32f_C1IR, [](double a) { return a * a; });
  expectUnary(table::primAbs_32f_C1IR, [](double a) { return std::abs(a); });
  expectInPlace(table::primAbs_32f_C1R, [](double a, double) { return std::abs(a); });
}

TEST(Arith, takesTheDestinationItselfAsOperand) {
  forEachBody([](int column) {
    std::vector<float> v(37);
    for (std::size_t i = 0; i < v.size(); ++i) v[i] = static_cast<float>(i);
    ASSERT_EQ(table::primAdd_32f_C1IR[column](v.data(), 0, v.data(), 0, 37, 1), 0);
    ASSERT_EQ(table::primMul_32f_C1IR[column](v.data(), 0, v.data(), 0, 37, 1), 0);
    for (std::size_t i = 0; i < v.size(); ++i)
      ASSERT_EQ(v[i], 4.0f * static_cast<float>(i) * static_cast<float>(i));
  });
}

TEST(Arith, dividesByZeroToInfinitiesAndOneNan) {
  const std::uint32_t nan = 0xFFC00000;
  struct Case {
    float dividend, divisor;
    std::uint32_t bits;
  };
  const Case cases[] = {
      {3.0f, 0.0f, 0x7F800000},   {3.0f, -0.0f, 0x7F800000}, {-3.0f, 0.0f, 0xFF800000},
      {-3.0f, -0.0f, 0xFF800000}, {kInf, -0.0f, 0x7F800000}, {-kInf, 0.0f, 0xFF800000},
      {0.0f, 0.0f, nan},          {-0.0f, 0.0f, nan},        {kNan, -0.0f, nan},
      {6.0f, 2.0f, 0x40400000},   {6.0f, -kInf, 0x80000000}};
  forEachBody([&](int column) {
    std::vector<float> src, dst;
    for (int i = 0; i < 100; ++i) {
      src.push_back(cases[i % 11].divisor);
      dst.push_back(cases[i % 11].dividend);
    }
    EXPECT_EQ(table::primDiv_32f_C1IR[column](src.data(), 200, dst.data(), 200, 50, 2), 6);
    for (int i = 0; i < 100; ++i)
      ASSERT_EQ(std::bit_cast<std::uint32_t>(dst[static_cast<std::size_t>(i)]), cases[i % 11].bits)
          << columnName(column) << ", case " << i % 11;
    // A zero in the first row alone is reported as well.
    src.assign(100, 1.0f);
    src[3] = 0.0f;
    EXPECT_EQ(table::primDiv_32f_C1IR[column](src.data(), 200, dst.data(), 200, 50, 2), 6);
  });
}

// Half a unit in the last place of the result, and 1e-6 of it for the error before rounding.
void expectRounded(float result, long double exact, float x) {
  const float next = std::nextafter(std::abs(result), kInf);
  const float below = std::nextafter(std::abs(result), 0.0f);
  const long double room =
      (exact > result) == (result > 0) ? next - std::abs(result) : std::abs(result) - below;
  ASSERT_LE(std::abs(exact - result), room * 0.5000005L) << std::hexfloat << x;
}

TEST(Arith, exponentAndLogarithmAreRoundedFromFullPrecision) {
  std::mt19937 rng(3);
  std::vector<float> x;
  for (int i = 0; i < 50000; ++i) {
    x.push_back(std::ldexp(static_cast<float>(rng() % 20000) + 0.5f, -8) * 0.93f);  // to 72
    x.push_back(
        std::ldexp(static_cast<float>(rng() >> 8) + 1, static_cast<int>(rng() % 240) - 140));
    x.push_back(1.0f + std::ldexp(static_cast<float>(rng() >> 8), -26));
  }
  const int n = static_cast<int>(x.size());
  forEachBody([&](int column) {
    std::vector<float> e, l = x;
    for (float v : x) e.push_back(std::fmod(v, 87.0f) * (e.size() % 2 != 0 ? -1.0f : 1.0f));
    const std::vector<float> power = e;
    ASSERT_EQ(table::primExp_32f_C1IR[column](e.data(), 0, n, 1), 0);
    ASSERT_EQ(table::primLn_32f_C1IR[column](l.data(), 0, n, 1), 0);
    for (std::size_t i = 0; i < x.size() && !HasFatalFailure(); ++i) {
      if (std::abs(power[i]) >= 0x1p-126f) expectRounded(e[i], expl(power[i]), power[i]);
      expectRounded(l[i], logl(x[i]), x[i]);
    }
  });
}

TEST(Arith, exponentHasItsLimitsAndKeepsNan) {
  const float lowest = std::bit_cast<float>(0xC2AEAC50u);
  forEachBody([&](int column) {
    float v[] = {0.0f, -1e-40f, 88.72283f, std::nextafter(88.72284f, kInf),
                 kInf, -kInf,   -1e30f,    std::nextafter(lowest, -kInf),
                 kNan, 1e30f};
    ASSERT_EQ(table::primExp_32f_C1IR[column](v, 0, 10, 1), 0);
    EXPECT_EQ(v[0], 1.0f);
    EXPECT_EQ(v[1], 1.0f);
    EXPECT_NEAR(v[2] / std::numeric_limits<float>::max(), 1.0f, 1e-4f);
    for (int i : {3, 4, 9}) EXPECT_EQ(v[i], kInf) << i;
    for (int i : {5, 6, 7}) EXPECT_EQ(std::bit_cast<std::uint32_t>(v[i]), 0u) << i;
    EXPECT_TRUE(std::isnan(v[8]));
  });
}

TEST(Arith, logarithmReportsTheFirstRowWithoutOne) {
  forEachBody([&](int column) {
    const auto ln = table::primLn_32f_C1IR[column];
    float v[2][3] = {{1.0f, kInf, kNan}, {-0.0f, 1.0f, 0.0f}};
    EXPECT_EQ(ln(v[0], 12, 3, 1), 0);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(v[0][0]), 0u);
    EXPECT_EQ(v[0][1], kInf);
    EXPECT_TRUE(std::isnan(v[0][2]));
    EXPECT_EQ(ln(v[0], 12, 3, 2), 7);
    EXPECT_EQ(v[1][0], -kInf);
    EXPECT_EQ(v[1][2], -kInf);
    float zeroFirst[] = {0.0f, -2.0f}, negativeFirst[] = {-2.0f, 0.0f}, both[] = {0.0f, -kInf};
    EXPECT_EQ(ln(zeroFirst, 4, 1, 2), 7);
    EXPECT_EQ(ln(negativeFirst, 4, 1, 2), 8);
    EXPECT_EQ(ln(both, 4, 2, 1), 8);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(both[1]), 0xFFC00000u);
  });
}

TEST(Arith, refusesNullPointersThenSizesThenSteps) {
  float p[] = {2.0f, 3.0f, 4.0f};
  EXPECT_EQ(primAdd_32f_C1IR(nullptr, 4, p, 4, 0, 1), -8);
  EXPECT_EQ(primSub_32f_C1R(p, 4, p, 4, nullptr, 4, 1, 1), -8);
  EXPECT_EQ(primMulC_32f_C3IR(nullptr, p, 12, 0, 1), -8);
  EXPECT_EQ(primDiv_32f_C1IR(p, 4, p, 4, 1, 0), -6);
  EXPECT_EQ(primLn_32f_C1IR(p, 4, 0, 1), -6);
  EXPECT_EQ(primExp_32f_C1IR(p, 4, 65536, -65536), -6);
  EXPECT_EQ(primAddC_32f_C3IR(p, p, 12, 1, -1), -6);
  EXPECT_EQ(primAbsDiff_32f_C1R(p, 3, p, 4, p, 4, 0, 1), -6);
  EXPECT_EQ(primAbsDiff_32f_C1R(p, 4, p, 4, p, 3, 1, 1), -14);
  EXPECT_EQ(primAbsDiff_32f_C1R(p, 4, p, -4, p, 4, 1, 1), -14);
  EXPECT_EQ(p[0], 2.0f);
  EXPECT_EQ(p[1], 3.0f);
  EXPECT_EQ(p[2], 4.0f);
}

}  // namespace
