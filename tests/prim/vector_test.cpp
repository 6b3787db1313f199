#include "prim/vector.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <vector>

#include "tests/prim/elements.h"

namespace {

using namespace vx::prim;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

std::vector<float> drawVector(int n, unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<float> v;
  for (int i = 0; i < n; ++i) v.push_back(drawFloat(rng));
  return v;
}

// Calls check(column, length) for lengths around all vector widths.
template <class Check>
void forLengths(Check check) {
  forEachBody([&](int column) {
    SCOPED_TRACE(columnName(column));
    for (int n = 1; n <= 70 && !::testing::Test::HasFatalFailure(); ++n) check(column, n);
  });
}

// Runs row(args..., srcDst, n) in place on exactly n floats; the element after them must stay.
template <class Call, class Oracle>
void expectInPlace(Call call, Oracle oracle) {
  forLengths([&](int column, int n) {
    const std::vector<float> src = drawVector(n, 1), before = drawVector(n + 1, 2);
    std::vector<float> v = before;
    ASSERT_EQ(call(column, src.data(), v.data(), n), 0);
    for (std::size_t i = 0; i < src.size(); ++i)
      ASSERT_EQ(v[i], static_cast<float>(oracle(double{src[i]}, double{before[i]}))) << i;
    ASSERT_EQ(v.back(), before.back());
  });
}

TEST(Vector, computesElementByElement) {
  expectInPlace([](int c, auto, auto v, int n) { return table::primvSet_32f[c](2.5f, v, n); },
                [](double, double) { return 2.5; });
  expectInPlace([](int c, auto, auto v, int n) { return table::primvZero_32f[c](v, n); },
                [](double, double) { return 0.0; });
  expectInPlace([](int c, auto s, auto v, int n) { return table::primvCopy_32f[c](s, v, n); },
                [](double s, double) { return s; });
  expectInPlace([](int c, auto s, auto v, int n) { return table::primvAdd_32f_I[c](s, v, n); },
                [](double s, double v) { return s + v; });
  expectInPlace([](int c, auto s, auto v, int n) { return table::primvDiv_32f_I[c](s, v, n); },
                [](double s, double v) { return v / s; });
  expectInPlace([](int c, auto, auto v, int n) { return table::primvAddC_32f_I[c](0.3f, v, n); },
                [](double, double v) { return v + double{0.3f}; });
  expectInPlace([](int c, auto, auto v, int n) { return table::primvSubC_32f_I[c](0.3f, v, n); },
                [](double, double v) { return v - double{0.3f}; });
  expectInPlace([](int c, auto, auto v, int n) { return table::primvMulC_32f_I[c](0.3f, v, n); },
                [](double, double v) { return v * double{0.3f}; });
  expectInPlace([](int c, auto, auto v, int n) { return table::primvSqr_32f_I[c](v, n); },
                [](double, double v) { return v * v; });
  expectInPlace(
      [](int c, auto, auto v, int n) { return table::primvThreshold_GT_32f_I[c](v, n, 0.01f); },
      [](double, double v) { return std::min(v, double{0.01f}); });
  expectInPlace(
      [](int c, auto, auto v, int n) { return table::primvThreshold_LT_32f_I[c](v, n, 0.01f); },
      [](double, double v) { return std::max(v, double{0.01f}); });
}

float roundedProduct(float a, float b) { return static_cast<float>(double{a} * double{b}); }

TEST(Vector, computesWithComplexNumbers) {
  forLengths([](int column, int n) {
    const std::vector<float> a = drawVector(2 * n, 3), b = drawVector(2 * n, 4);
    std::vector<Complex32f> src, product, scaled;
    for (std::size_t i = 0; i < a.size(); i += 2) {
      src.push_back({a[i], a[i + 1]});
      product.push_back({b[i], b[i + 1]});
    }
    scaled = product;
    std::vector<float> magnitude(src.size() + 1, -1.0f);
    ASSERT_EQ(table::primvMagnitude_32fc[column](src.data(), magnitude.data(), n), 0);
    ASSERT_EQ(table::primvMul_32fc_I[column](src.data(), product.data(), n), 0);
    ASSERT_EQ(table::primvMul_32f32fc_I[column](a.data(), scaled.data(), n), 0);
    ASSERT_EQ(magnitude.back(), -1.0f);
    for (std::size_t i = 0; i < src.size(); ++i) {
      const float re = a[2 * i], im = a[2 * i + 1], c = b[2 * i], d = b[2 * i + 1];
      const float power =
          static_cast<float>(double{roundedProduct(re, re)} + double{roundedProduct(im, im)});
      ASSERT_EQ(magnitude[i], static_cast<float>(std::sqrt(double{power})));
      ASSERT_EQ(product[i].re,
                static_cast<float>(double{roundedProduct(re, c)} - double{roundedProduct(im, d)}));
      ASSERT_EQ(product[i].im,
                static_cast<float>(double{roundedProduct(re, d)} + double{roundedProduct(im, c)}));
      ASSERT_EQ(scaled[i].re, roundedProduct(a[i], c));
      ASSERT_EQ(scaled[i].im, roundedProduct(a[i], d));
    }
  });
}

TEST(Vector, neutralConstantsTouchNothingAndZeroClearsEverything) {
  // Any operation would quiet the signalling NaN.
  const float signalling = std::bit_cast<float>(0x7F800001u);
  const std::vector<float> before = {-0.0f, signalling, kInf, -kInf, 3.0f};
  const auto bits = [](float v) { return std::bit_cast<std::uint32_t>(v); };
  forEachBody([&](int column) {
    for (float zero : {0.0f, -0.0f}) {
      std::vector<float> v = before;
      EXPECT_EQ(table::primvAddC_32f_I[column](zero, v.data(), 5), 0);
      EXPECT_EQ(table::primvSubC_32f_I[column](zero, v.data(), 5), 0);
      EXPECT_EQ(table::primvMulC_32f_I[column](1.0f, v.data(), 5), 0);
      for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(bits(v[i]), bits(before[i])) << i;
      EXPECT_EQ(table::primvMulC_32f_I[column](zero, v.data(), 4), 0);
      for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(bits(v[i]), 0u) << i;
      EXPECT_EQ(v[4], 3.0f);
    }
  });
}

TEST(Vector, divisionByZeroIsReportedWhereverItStands) {
  forEachBody([](int column) {
    for (int n : {1, 19, 40})
      for (int at = 0; at < n; ++at) {
        std::vector<float> src(40, 2.0f), v(40, 3.0f);
        src[static_cast<std::size_t>(at)] = -0.0f;
        ASSERT_EQ(table::primvDiv_32f_I[column](src.data(), v.data(), n), 6);
        for (int i = 0; i < n; ++i)
          ASSERT_EQ(v[static_cast<std::size_t>(i)], i == at ? kInf : 1.5f) << at;
      }
    float zero[] = {0.0f, 0.0f, 5.0f}, v[] = {0.0f, kNan, -kInf};
    EXPECT_EQ(table::primvDiv_32f_I[column](zero, v, 3), 6);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(v[0]), 0xFFC00000u);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(v[1]), 0xFFC00000u);
    EXPECT_EQ(v[2], -kInf);
  });
}

TEST(Vector, nanTakesTheThreshold) {
  forEachBody([](int column) {
    std::vector<float> gt(35, kNan), lt(35, kNan);
    gt[20] = lt[20] = -0.0f;
    table::primvThreshold_GT_32f_I[column](gt.data(), 35, 0.0f);
    table::primvThreshold_LT_32f_I[column](lt.data(), 35, 0.0f);
    for (std::size_t i = 0; i < 35; ++i) {
      EXPECT_EQ(std::bit_cast<std::uint32_t>(gt[i]), i == 20 ? 0x80000000u : 0u);
      EXPECT_EQ(std::bit_cast<std::uint32_t>(lt[i]), i == 20 ? 0x80000000u : 0u);
    }
  });
}

TEST(Vector, refusesNullPointersThenLengthsBelow1) {
  float f[] = {4.0f};
  Complex32f z[] = {{1.0f, 2.0f}};
  EXPECT_EQ(primvSet_32f(1, nullptr, 0), -8);
  EXPECT_EQ(primvZero_32f(f, 0), -6);
  EXPECT_EQ(primvCopy_32f(nullptr, f, -1), -8);
  EXPECT_EQ(primvAdd_32f_I(f, nullptr, 1), -8);
  EXPECT_EQ(primvAddC_32f_I(0, nullptr, 1), -8);
  EXPECT_EQ(primvSubC_32f_I(0, f, 0), -6);
  EXPECT_EQ(primvMulC_32f_I(1, nullptr, 1), -8);
  EXPECT_EQ(primvMulC_32f_I(1, f, -3), -6);
  EXPECT_EQ(primvDiv_32f_I(f, f, 0), -6);
  EXPECT_EQ(primvMagnitude_32fc(z, nullptr, 0), -8);
  EXPECT_EQ(primvMul_32fc_I(z, z, 0), -6);
  EXPECT_EQ(primvMul_32f32fc_I(nullptr, z, 1), -8);
  EXPECT_EQ(primvThreshold_LT_32f_I(f, 0, 9), -6);
  EXPECT_EQ(f[0], 4.0f);
}

}  // namespace
