#include "prim/arith.h"

#include <bit>

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

std::uint32_t bitsOf(float v) { return std::bit_cast<std::uint32_t>(v); }

// The operands are exact in double, and one operation in double rounded to float is the float
// operation: the oracles are written in double throughout. Subtrahend and divisor come first.
TEST(Arith, combinesImagesAndConstants) {
  Operands<float> o;
  auto& [a, b, d, before] = o;
  const Size size = d.size(), size3 = d.size(3);
  static constexpr float kV[] = {1.0f / 3, -7.7f, 1e5f};
  const auto sum = [](double s, double, double v, int) { return s + v; };
  const auto plusValue = [](double, double, double v, int c) { return v + double{kV[c]}; };
  const auto timesValue = [](double, double, double v, int c) { return v * double{kV[c]}; };
  const auto magnitude = [](double s, double, double, int) { return std::abs(s); };
  o.expect(call(primAdd_32f_C1IR, a, d, size), sum);
  o.expect(call(primAdd_32f_C3IR, a, d, size3), sum);
  o.expect(call(primAdd_32f_C1R, a, b, d, size),
           [](double s, double t, double, int) { return s + t; });
  o.expect(call(primSub_32f_C1IR, a, d, size),
           [](double s, double, double v, int) { return v - s; });
  o.expect(call(primSub_32f_C1R, a, b, d, size),
           [](double s, double t, double, int) { return t - s; });
  o.expect(call(primMul_32f_C1IR, a, d, size),
           [](double s, double, double v, int) { return v * s; });
  o.expect(call(primDiv_32f_C1IR, a, d, size),
           [](double s, double, double v, int) { return v / s; });
  o.expect(call(primAbsDiff_32f_C1R, a, b, d, size),
           [](double s, double t, double, int) { return std::abs(s - t); });
  o.expect(call(primAddC_32f_C1IR, kV[0], d, size), plusValue);
  o.expect(call(primAddC_32f_C3IR, kV, d, size3), plusValue, 3);
  o.expect(call(primMulC_32f_C1IR, kV[0], d, size), timesValue);
  o.expect(call(primMulC_32f_C3IR, kV, d, size3), timesValue, 3);
  o.expect(call(primSubC_32f_C1IR, kV[0], d, size),
           [](double, double, double v, int) { return v - double{kV[0]}; });
  o.expect(call(primSubC_32f_C1R, a, kV[0], d, size),
           [](double s, double, double, int) { return s - double{kV[0]}; });
  o.expect(call(primMulC_32f_C1R, a, kV[0], d, size),
           [](double s, double, double, int) { return s * double{kV[0]}; });
  o.expect(call(primSqr_32f_C1IR, d, size), [](double, double, double v, int) { return v * v; });
  o.expect(call(primAbs_32f_C1R, a, d, size), magnitude);
  d = a;
  o.expect(call(primAbs_32f_C1IR, d, size), magnitude);
  d = a;  // the destination itself as operand
  o.expect(call(primAdd_32f_C1IR, d, d, size), [](double s, double, double, int) { return s + s; });
  EXPECT_EQ(primAbsDiff_32f_C1R(a.data(), 4, b.data(), 4, d.data(), 3, 1, 1), -14);
  EXPECT_EQ(primAbsDiff_32f_C1R(a.data(), 3, b.data(), 4, d.data(), 4, 1, 1), -14);
}

TEST(Arith, dividesByZeroToInfinitiesAndOneNan) {
  const std::uint32_t nan = 0xFFC00000;
  const struct {
    float dividend, divisor;
    int status;
    std::uint32_t bits;
  } kCases[] = {
      {3.0f, 0.0f, 6, 0x7F800000},   {3.0f, -0.0f, 6, 0x7F800000}, {-3.0f, 0.0f, 6, 0xFF800000},
      {-3.0f, -0.0f, 6, 0xFF800000}, {kInf, -0.0f, 6, 0x7F800000}, {-kInf, 0.0f, 6, 0xFF800000},
      {0.0f, 0.0f, 6, nan},          {-0.0f, 0.0f, 6, nan},        {kNan, -0.0f, 6, nan},
      {6.0f, 2.0f, 0, 0x40400000},   {6.0f, -kInf, 0, 0x80000000u}};
  for (const auto& c : kCases) {
    float divisor[] = {c.divisor, 1.0f}, v[] = {c.dividend, 5.0f};
    // Reported as well when it stands in the first row alone.
    EXPECT_EQ(primDiv_32f_C1IR(divisor, 4, v, 4, 1, 2), c.status);
    EXPECT_EQ(bitsOf(v[0]), c.bits) << c.dividend << " / " << c.divisor;
    EXPECT_EQ(v[1], 5.0f);
  }
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
  const int n = 50000;
  for (int i = 0; i < n; ++i)
    for (float x :
         {std::ldexp(static_cast<float>(rng() % 20000) + 0.5f, -8) * 0.93f,  // to 72
          std::ldexp(static_cast<float>(rng() >> 8) + 1, static_cast<int>(rng() % 240) - 140),
          1.0f + std::ldexp(static_cast<float>(rng() >> 8), -26)}) {
      const float power = std::fmod(x, 87.0f) * (i % 2 != 0 ? -1.0f : 1.0f);
      float e = power, l = x;
      ASSERT_EQ(primExp_32f_C1IR(&e, 4, 1, 1), 0);
      ASSERT_EQ(primLn_32f_C1IR(&l, 4, 1, 1), 0);
      if (std::abs(power) >= 0x1p-126f) expectRounded(e, expl(power), power);
      expectRounded(l, logl(x), x);
      if (HasFatalFailure()) return;
    }
}

TEST(Arith, exponentHasItsLimitsAndKeepsNan) {
  const float lowest = std::bit_cast<float>(0xC2AEAC50u);
  const struct {
    float x, power;
  } kCases[] = {
      {0.0f, 1.0f},  {-1e-40f, 1.0f}, {std::nextafter(88.72284f, kInf), kInf},
      {kInf, kInf},  {1e30f, kInf},   {std::nextafter(lowest, -kInf), 0.0f},
      {-kInf, 0.0f}, {-1e30f, 0.0f},  {88.72283f, static_cast<float>(std::exp(double{88.72283f}))}};
  for (const auto& c : kCases) {
    float v = c.x;
    ASSERT_EQ(primExp_32f_C1IR(&v, 4, 1, 1), 0);
    EXPECT_FLOAT_EQ(v, c.power) << c.x;
    EXPECT_FALSE(std::signbit(v));
  }
  float nan = kNan;
  ASSERT_EQ(primExp_32f_C1IR(&nan, 4, 1, 1), 0);
  EXPECT_TRUE(std::isnan(nan));
}

TEST(Arith, logarithmReportsTheFirstRowWithoutOne) {
  const std::uint32_t low = bitsOf(-kInf), nan = 0xFFC00000;
  const struct {
    float x[2];
    int width, status;
    std::uint32_t bits[2];
  } kCases[] = {{{1.0f, kInf}, 2, 0, {0, bitsOf(kInf)}},
                {{-0.0f, 0.0f}, 2, 7, {low, low}},
                {{0.0f, -2.0f}, 1, 7, {low, nan}},  // two rows
                {{-2.0f, 0.0f}, 1, 8, {nan, low}},
                {{0.0f, -kInf}, 2, 8, {low, nan}}};
  for (const auto& c : kCases) {
    float v[] = {c.x[0], c.x[1]};
    EXPECT_EQ(primLn_32f_C1IR(v, 4, c.width, 3 - c.width), c.status);
    for (int i : {0, 1}) EXPECT_EQ(bitsOf(v[i]), c.bits[i]) << c.x[i];
  }
  float v = kNan;
  EXPECT_EQ(primLn_32f_C1IR(&v, 4, 1, 1), 0);
  EXPECT_TRUE(std::isnan(v));
}

}  // namespace
