#include "prim/arith_int.h"

#include <algorithm>
#include <climits>

#include "tests/prim/plane.h"

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
  std::vector<int> all = {INT_MIN, -100, 100, INT_MAX};
  for (int s = -18; s <= 18; ++s) all.push_back(s);
  return all;
}

// Every pair of bytes: a holds x, b holds y.
TEST(ArithInt, scalesEverySumAndDifferenceOfBytes) {
  Plane<U8> a(256, 256), b(256, 256), d(256, 256);
  a.set([](int x, int) { return x; });
  b.set([](int, int y) { return y; });
  for (int s : scaleFactors()) {
    SCOPED_TRACE(s);
    const auto sum = [s](int x, int y) { return scaled<U8>(x + y, s, 9); };
    ASSERT_EQ(call(primAdd_8u_C1RSfs, a, b, d, d.size(), s), 0);
    expectPlane(d, sum);
    d = b;
    ASSERT_EQ(call(primAdd_8u_C1IRSfs, a, d, d.size(), s), 0);
    expectPlane(d, sum);
    d = b;
    ASSERT_EQ(call(primSub_8u_C1IRSfs, a, d, d.size(), s), 0);
    expectPlane(d, [s](int x, int y) { return scaled<U8>(std::max(y - x, 0), s, 8); });
    d = b;
    ASSERT_EQ(call(primSubC_8u_C1IRSfs, U8{77}, d, d.size(), s), 0);
    expectPlane(d, [s](int, int y) { return scaled<U8>(std::max(y - 77, 0), s, 8); });
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
  Plane<S16> a(60, 60), d(60, 60);
  a.set([&](int x, int) { return value(x); });
  for (int s : scaleFactors()) {
    SCOPED_TRACE(s);
    d.set([&](int, int y) { return value(y); });
    ASSERT_EQ(call(primSub_16s_C1IRSfs, a, d, d.size(), s), 0);
    expectPlane(d, [&](int x, int y) { return scaled<S16>(value(y) - value(x), s, 16); });
    d.set([&](int, int y) { return value(y); });
    for (int x = 0; x < 60; ++x)
      ASSERT_EQ(primAddC_16s_C1IRSfs(value(x), d.data() + x, d.step, 1, 60, s), 0);
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
  const U8* u = o.a.data();
  for (const auto& [s1, s2, s3] : {std::tuple{1, 2, 8}, {2, 1, 8}, {2, 2, 4}, {2, 2, 10}})
    EXPECT_EQ(primAddProduct_8u32f_C1IR(u, s1, u, s2, o.d.data(), s3, 2, 1), -14);
}

}  // namespace
