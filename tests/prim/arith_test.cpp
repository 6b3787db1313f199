#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

// The operands are exact in double, and one operation in double rounded to float is the float
// operation. Subtrahend and divisor come first.
TEST(Arith, combinesImagesAndConstants) {
  Operands<float> o;
  auto& [a, b, d, before] = o;
  const Size size = d.size(), size3 = d.size(3);
  static constexpr float kC[] = {1.0f / 3, -7.7f, 1e5f};
  const double c = double{kC[0]};
  VX_EXPECT(s + v, primAdd_32f_C1IR, a, d, size);
  VX_EXPECT(s + v, primAdd_32f_C3IR, a, d, size3);
  VX_EXPECT(s + t, primAdd_32f_C1R, a, b, d, size);
  VX_EXPECT(v - s, primSub_32f_C1IR, a, d, size);
  VX_EXPECT(t - s, primSub_32f_C1R, a, b, d, size);
  VX_EXPECT(v * s, primMul_32f_C1IR, a, d, size);
  VX_EXPECT(v / s, primDiv_32f_C1IR, a, d, size);
  VX_EXPECT(std::abs(s - t), primAbsDiff_32f_C1R, a, b, d, size);
  VX_EXPECT(v + c, primAddC_32f_C1IR, kC[0], d, size);
  VX_EXPECT(v - c, primSubC_32f_C1IR, kC[0], d, size);
  VX_EXPECT(v * c, primMulC_32f_C1IR, kC[0], d, size);
  VX_EXPECT(s - c, primSubC_32f_C1R, a, kC[0], d, size);
  VX_EXPECT(s * c, primMulC_32f_C1R, a, kC[0], d, size);
  VX_EXPECT(v + double{kC[i % 3]}, primAddC_32f_C3IR, kC, d, size3);
  VX_EXPECT(v * double{kC[i % 3]}, primMulC_32f_C3IR, kC, d, size3);
  VX_EXPECT(v * v, primSqr_32f_C1IR, d, size);
  VX_EXPECT(std::abs(s), primAbs_32f_C1R, a, d, size);
  VX_EXPECT(std::abs(v), primAbs_32f_C1IR, d, size);
  d = a;  // the destination itself as operand
  VX_EXPECT(s + s, primAdd_32f_C1IR, d, d, size);
}

TEST(Vector, combinesVectorsAndConstants) {
  Operands<float> o(1);
  const float *a = o.a.data(), level = 0.3f;
  float* d = o.d.data();
  const int n = o.d.width;
  const double c = double{level};
  VX_EXPECT(c, primvSet_32f, level, d, n);
  VX_EXPECT(0, primvZero_32f, d, n);
  VX_EXPECT(s, primvCopy_32f, a, d, n);
  VX_EXPECT(s + v, primvAdd_32f_I, a, d, n);
  VX_EXPECT(v / s, primvDiv_32f_I, a, d, n);
  VX_EXPECT(v + c, primvAddC_32f_I, level, d, n);
  VX_EXPECT(v - c, primvSubC_32f_I, level, d, n);
  VX_EXPECT(v * c, primvMulC_32f_I, level, d, n);
  VX_EXPECT(v * v, primvSqr_32f_I, d, n);
  VX_EXPECT(std::min(v, c), primvThreshold_GT_32f_I, d, n, level);
  VX_EXPECT(std::max(v, c), primvThreshold_LT_32f_I, d, n, level);
}

// An operation in double on floats, rounded, is the float operation.
TEST(Vector, computesWithComplexNumbers) {
  const auto f = [](double v) { return double{static_cast<float>(v)}; };
  std::mt19937 rng(3);
  for (int i = 0; i < 500; ++i) {
    const Complex32f src = {drawValue<float>(rng), drawValue<float>(rng)};
    const Complex32f v = {drawValue<float>(rng), drawValue<float>(rng)};
    Complex32f multiplied = v, scaled = v;
    float magnitude = 0;
    ASSERT_EQ(primvMagnitude_32fc(&src, &magnitude, 1), 0);
    ASSERT_EQ(primvMul_32fc_I(&src, &multiplied, 1), 0);
    ASSERT_EQ(primvMul_32f32fc_I(&src.re, &scaled, 1), 0);
    const double a = double{src.re}, b = double{src.im}, c = double{v.re}, d = double{v.im};
    ASSERT_EQ(magnitude, f(std::sqrt(f(f(a * a) + f(b * b)))));
    ASSERT_EQ(multiplied.re, f(f(a * c) - f(b * d)));
    ASSERT_EQ(multiplied.im, f(f(a * d) + f(b * c)));
    ASSERT_EQ(scaled.re, f(a * c));
    ASSERT_EQ(scaled.im, f(a * d));
  }
}

// Neutral constants touch nothing, a factor of 0 clears everything, NaN takes the threshold. Any
// operation would quiet the signalling NaN.
TEST(Vector, shortcutsKeepBits) {
  const float signalling = std::bit_cast<float>(0x7F800001u);
  for (float v : {-0.0f, signalling, kInf, -kInf, 3.0f})
    for (float zero : {0.0f, -0.0f}) {
      float kept = v, cleared = v;
      EXPECT_EQ(primvAddC_32f_I(zero, &kept, 1), 0);
      EXPECT_EQ(primvSubC_32f_I(zero, &kept, 1), 0);
      EXPECT_EQ(primvMulC_32f_I(1.0f, &kept, 1), 0);
      EXPECT_EQ(bitsOf(kept), bitsOf(v));
      EXPECT_EQ(primvMulC_32f_I(zero, &cleared, 1), 0);
      EXPECT_EQ(bitsOf(cleared), 0u);
    }
  for (auto clip : {primvThreshold_GT_32f_I, primvThreshold_LT_32f_I}) {
    float v[] = {kNan, -0.0f};
    clip(v, 2, 0.0f);
    EXPECT_EQ(bitsOf(v[0]), 0u);
    EXPECT_EQ(bitsOf(v[1]), 0x80000000u);
  }
  float nan = kNan;
  EXPECT_EQ(primvClip_32f_I(-2.0f, 3.0f, &nan, 1), 0);
  EXPECT_EQ(nan, -2.0f);
}

TEST(Arith, dividesByZeroToInfinitiesAndOneNan) {
  const std::uint32_t nan = 0xFFC00000, high = 0x7F800000, low = 0xFF800000;
  const std::tuple<float, float, int, std::uint32_t> kCases[] = {
      {3.0f, 0.0f, 6, high},       {3.0f, -0.0f, 6, high},       {-3.0f, 0.0f, 6, low},
      {-3.0f, -0.0f, 6, low},      {kInf, -0.0f, 6, high},       {-kInf, 0.0f, 6, low},
      {0.0f, 0.0f, 6, nan},        {-0.0f, 0.0f, 6, nan},        {kNan, -0.0f, 6, nan},
      {6.0f, 2.0f, 0, 0x40400000}, {6.0f, -kInf, 0, 0x80000000u}};
  for (const auto& [dividend, by, status, bits] : kCases)
    for (int at : {0, 1}) {
      float divisor[] = {1.0f, 1.0f}, image[] = {5.0f, 5.0f}, vector[] = {5.0f, 5.0f};
      divisor[at] = by;
      image[at] = vector[at] = dividend;
      // Reported as well when it stands in one row alone.
      EXPECT_EQ(primDiv_32f_C1IR(divisor, 4, image, 4, 1, 2), status);
      EXPECT_EQ(primvDiv_32f_I(divisor, vector, 2), status);
      for (const float* quotient : {image, vector}) {
        EXPECT_EQ(bitsOf(quotient[at]), bits) << dividend << " / " << by;
        EXPECT_EQ(quotient[1 - at], 5.0f);
      }
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
  const float least = std::bit_cast<float>(0xC2AEAC50u), below = std::nextafter(least, -kInf);
  const float above = std::nextafter(88.72284f, kInf), last = 88.72283f;
  const float x[] = {0.0f, -1e-40f, above, kInf, 1e30f, below, -kInf, -1e30f, last, least, kNan};
  const float power[] = {1, 1, kInf, kInf, kInf, 0, 0, 0, std::exp(last), std::exp(least)};
  float v[11];
  std::copy(x, x + 11, v);
  ASSERT_EQ(primExp_32f_C1IR(v, 44, 11, 1), 0);
  for (int i = 0; i < 10; ++i) {
    EXPECT_FLOAT_EQ(v[i], power[i]) << x[i];
    EXPECT_FALSE(std::signbit(v[i]));
  }
  EXPECT_TRUE(std::isnan(v[10]));
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
  std::vector<int> all = {INT_MIN, -100, 100, INT_MAX};
  for (int s = -18; s <= 18; ++s) all.push_back(s);
  return all;
}

// Every pair of bytes: a holds x, b and d hold y.
TEST(ArithInt, scalesEverySumAndDifferenceOfBytes) {
  Plane<U8> a(256, 256), b(256, 256), d(256, 256);
  a.set([](int x, int) { return x; });
  b.set([](int, int y) { return y; });
  for (int s : scaleFactors()) {
    SCOPED_TRACE(s);
    const auto expect = [&](auto exact, int bits, auto* prim, auto&&... sources) {
      d = b;
      ASSERT_EQ(call(prim, sources..., d, d.size(), s), 0);
      expectPlane(d, [&](int x, int y) { return scaled<U8>(exact(x, y), s, bits); });
    };
    const auto sum = [](int x, int y) { return x + y; };
    expect(sum, 9, primAdd_8u_C1RSfs, a, b);
    expect(sum, 9, primAdd_8u_C1IRSfs, a);
    expect([](int x, int y) { return std::max(y - x, 0); }, 8, primSub_8u_C1IRSfs, a);
    expect([](int, int y) { return std::max(y - 77, 0); }, 8, primSubC_8u_C1IRSfs, U8{77});
  }
  ASSERT_EQ(call(primAbsDiff_8u_C1R, a, b, d, d.size()), 0);
  expectPlane(d, [](int x, int y) { return std::abs(x - y); });
}

TEST(ArithInt, scalesSumsAndDifferencesOfWords) {
  std::vector<S16> values = {-32768, -32767, -16384, -3, -2,    -1,    0,
                             1,      2,      3,      5,  16384, 32766, 32767};
  std::mt19937 rng(5);
  while (values.size() < 60) values.push_back(static_cast<S16>(rng()));
  const auto value = [&](int i) { return values[static_cast<std::size_t>(i)]; };
  Plane<S16> a(60, 60), b(60, 60), d(60, 60);
  a.set([&](int x, int) { return value(x); });
  b.set([&](int, int y) { return value(y); });
  for (int s : scaleFactors()) {
    SCOPED_TRACE(s);
    d = b;
    ASSERT_EQ(call(primSub_16s_C1IRSfs, a, d, d.size(), s), 0);
    expectPlane(d, [&](int x, int y) { return scaled<S16>(value(y) - value(x), s, 16); });
    d = b;
    for (int x = 0; x < 60; ++x)
      ASSERT_EQ(primAddC_16s_C1IRSfs(value(x), &d.at(x, 0), d.step, 1, 60, s), 0);
    expectPlane(d, [&](int x, int y) { return scaled<S16>(value(y) + value(x), s, 16); });
  }
}

TEST(ArithInt, magnitudesSaturateAndProductsAreAdded) {
  Plane<S16> words(65536, 1);
  words.set([](int x, int) { return x - 32768; });
  ASSERT_EQ(call(primAbs_16s_C1IR, words, words.size()), 0);
  expectPlane(words, [](int x, int) { return std::min(std::abs(x - 32768), 32767); });
  Operands<U8, float> o;
  VX_EXPECT(v + s * t, primAddProduct_8u32f_C1IR, o.a, o.b, o.d, o.d.size());
}

}  // namespace
