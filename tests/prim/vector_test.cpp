#include "prim/vector.h"

#include <algorithm>
#include <bit>

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

constexpr int kLength = 96;

std::uint32_t bitsOf(float v) { return std::bit_cast<std::uint32_t>(v); }

// One row of the operands at a time.
TEST(Vector, computesElementByElement) {
  Operands<float> o;
  static constexpr float kC = 0.3f;
  const float* a = o.a.data();
  float* d = o.d.data();
  const auto expect = [&](int status, auto oracle) {
    o.expect(status, [&, row = 0](double s, double, double v, int) mutable {
      return row++ < kLength ? oracle(s, v) : v;
    });
  };
  expect(primvSet_32f(2.5f, d, kLength), [](double, double) { return 2.5; });
  expect(primvZero_32f(d, kLength), [](double, double) { return 0.0; });
  expect(primvCopy_32f(a, d, kLength), [](double s, double) { return s; });
  expect(primvAdd_32f_I(a, d, kLength), [](double s, double v) { return s + v; });
  expect(primvDiv_32f_I(a, d, kLength), [](double s, double v) { return v / s; });
  expect(primvAddC_32f_I(kC, d, kLength), [](double, double v) { return v + double{kC}; });
  expect(primvSubC_32f_I(kC, d, kLength), [](double, double v) { return v - double{kC}; });
  expect(primvMulC_32f_I(kC, d, kLength), [](double, double v) { return v * double{kC}; });
  expect(primvSqr_32f_I(d, kLength), [](double, double v) { return v * v; });
  expect(primvThreshold_GT_32f_I(d, kLength, kC),
         [](double, double v) { return std::min(v, double{kC}); });
  expect(primvThreshold_LT_32f_I(d, kLength, kC),
         [](double, double v) { return std::max(v, double{kC}); });
}

float product(float a, float b) { return static_cast<float>(double{a} * double{b}); }
float sum(float a, float b) { return static_cast<float>(double{a} + double{b}); }

TEST(Vector, computesWithComplexNumbers) {
  std::mt19937 rng(3);
  for (int i = 0; i < 500; ++i) {
    const Complex32f src = {drawValue<float>(rng), drawValue<float>(rng)};
    const Complex32f v = {drawValue<float>(rng), drawValue<float>(rng)};
    Complex32f multiplied = v, scaled = v;
    float magnitude = 0;
    ASSERT_EQ(primvMagnitude_32fc(&src, &magnitude, 1), 0);
    ASSERT_EQ(primvMul_32fc_I(&src, &multiplied, 1), 0);
    ASSERT_EQ(primvMul_32f32fc_I(&src.re, &scaled, 1), 0);
    const float power = sum(product(src.re, src.re), product(src.im, src.im));
    ASSERT_EQ(magnitude, static_cast<float>(std::sqrt(double{power})));
    ASSERT_EQ(multiplied.re, sum(product(src.re, v.re), -product(src.im, v.im)));
    ASSERT_EQ(multiplied.im, sum(product(src.re, v.im), product(src.im, v.re)));
    ASSERT_EQ(scaled.re, product(src.re, v.re));
    ASSERT_EQ(scaled.im, product(src.re, v.im));
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
}

TEST(Vector, divisionByZeroIsReportedWhereverItStands) {
  const float dividends[] = {3.0f, 0.0f, kNan, -kInf};
  const std::uint32_t quotients[] = {bitsOf(kInf), 0xFFC00000u, 0xFFC00000u, bitsOf(-kInf)};
  for (int at = 0; at < 40; ++at)
    for (std::size_t c = 0; c < 4; ++c) {
      std::vector<float> src(40, 2.0f), v(40, 3.0f);
      src[static_cast<std::size_t>(at)] = 0.0f;
      v[static_cast<std::size_t>(at)] = dividends[c];
      ASSERT_EQ(call(primvDiv_32f_I, src, v.data(), 40), 6);
      for (int i = 0; i < 40; ++i)
        ASSERT_EQ(bitsOf(v[static_cast<std::size_t>(i)]), i == at ? quotients[c] : bitsOf(1.5f));
    }
}

}  // namespace
