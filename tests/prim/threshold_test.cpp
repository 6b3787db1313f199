#include "prim/threshold.h"

#include <algorithm>
#include <bit>

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;
using U8 = std::uint8_t;
using U16 = std::uint16_t;
using S16 = std::int16_t;

TEST(Threshold, clipsIntegersFromAbove) {
  static constexpr U16 kLevels[] = {1000, 0, 40000};
  Operands<U16> o;
  VX_EXPECT(std::min<int>(v, kLevels[i % 3]), primThreshold_GT_16u_C3IR, o.d, o.d.size(3), kLevels);
  VX_EXPECT(i % 4 == 3 ? v : std::min<int>(v, kLevels[i % 4]), primThreshold_GT_16u_AC4IR, o.d,
            o.d.size(4), kLevels);
  Plane<U8> bytes(256, 1);
  bytes.set([](int x, int) { return x; });
  EXPECT_EQ(call(primThreshold_GT_8u_C1IR, bytes, bytes.size(), U8{130}), 0);
  expectPlane(bytes, [](int x, int) { return std::min(x, 130); });
}

// NaN takes the level, and what equals it keeps its bits.
TEST(Threshold, clipsFloatsFromAboveAndBelow) {
  static constexpr float kLevels[] = {0.0f, -2.0f, 0.01f};
  static constexpr float kSpecial[] = {-0.0f, 0.0f, kNan, -kNan, kInf, -kInf};
  Plane<float> before(96, 3), d(96, 3);
  std::mt19937 rng(7);
  before.draw([&] { return rng() % 2 == 0 ? kSpecial[rng() % 6] : drawValue<float>(rng); });
  const auto expectClipped = [&](auto clip, bool above, auto level, int channels) {
    d = before;
    ASSERT_EQ(call(clip, d, d.size(channels), level), 0);
    for (int x = 0; x < 96 * 3; ++x) {
      const float v = before.at(x % 96, x / 96), limit = kLevels[x % channels];
      const bool kept = above ? v <= limit : v >= limit;
      ASSERT_EQ(std::bit_cast<std::uint32_t>(d.at(x % 96, x / 96)),
                std::bit_cast<std::uint32_t>(kept ? v : limit))
          << v << ", level " << limit;
    }
  };
  expectClipped(primThreshold_GT_32f_C1IR, true, kLevels[0], 1);
  expectClipped(primThreshold_GT_32f_C3IR, true, kLevels, 3);
  expectClipped(primThreshold_LT_32f_C1IR, false, kLevels[0], 1);
  expectClipped(primThreshold_LT_32f_C3IR, false, kLevels, 3);
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

// All pairs of the values: a holds values[x], b values[y]. Unknown selectors do nothing.
template <class T, class Images, class Value>
void expectRelations(const std::vector<T>& values, Images* images, Value* withValue) {
  const int n = static_cast<int>(values.size());
  const auto value = [&](int i) { return values[static_cast<std::size_t>(i)]; };
  Plane<T> a(n, n), b(n, n);
  a.set([&](int x, int) { return value(x); });
  b.set([&](int, int y) { return value(y); });
  for (int selector : {0, 1, 2, 3, 4, 5, -1, std::numeric_limits<int>::max()}) {
    SCOPED_TRACE(selector);
    Plane<U8> marks(n, n);
    const auto expected = [&](int x, int y) {
      return selector < 0 || selector > 4 ? 7 : holds(selector, value(x), value(y)) ? 255 : 0;
    };
    if constexpr (!std::is_same_v<Images, void>) {
      marks.draw([] { return 7; });
      ASSERT_EQ(call(images, a, b, marks, marks.size(), selector), 0);
      expectPlane(marks, expected);
    }
    if constexpr (!std::is_same_v<Value, void>) {
      marks.draw([] { return 7; });
      for (int y = 0; y < n; ++y)
        ASSERT_EQ(
            withValue(&a.at(0, y), a.step, value(y), &marks.at(0, y), marks.step, n, 1, selector),
            0);
      expectPlane(marks, expected);
    }
  }
}

TEST(Compare, marksEveryRelationOfEveryPair) {
  constexpr void* kNone = nullptr;
  expectRelations<U8>({0, 1, 2, 126, 127, 128, 129, 254, 255}, primCompare_8u_C1R, kNone);
  expectRelations<S16>({-32768, -32767, -256, -1, 0, 1, 255, 256, 32766, 32767}, kNone,
                       primCompareC_16s_C1R);
  expectRelations<float>({0.0f, -0.0f, 1.0f, 1.0000001f, -3e38f, kInf, -kInf, kNan},
                         primCompare_32f_C1R, primCompareC_32f_C1R);
}

}  // namespace
