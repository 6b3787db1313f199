#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

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
      ASSERT_EQ(bitsOf(d.at(x % 96, x / 96)), bitsOf(kept ? v : limit)) << v << ", level " << limit;
    }
  };
  expectClipped(primThreshold_GT_32f_C1IR, true, kLevels[0], 1);
  expectClipped(primThreshold_GT_32f_C3IR, true, kLevels, 3);
  expectClipped(primThreshold_LT_32f_C1IR, false, kLevels[0], 1);
  expectClipped(primThreshold_LT_32f_C3IR, false, kLevels, 3);
}

// All pairs of the values; NaN stands in no relation, so no relation may be the negation of
// another. Unknown selectors do nothing. compare(x, y, mark, selector)
template <class T, class Compare>
void expectRelations(const std::vector<T>& values, Compare compare) {
  for (int selector : {0, 1, 2, 3, 4, 5, -1, std::numeric_limits<int>::max()})
    for (T x : values)
      for (T y : values) {
        const bool relations[] = {x<y, x <= y, x == y, x >= y, x> y};
        const int want = selector < 0 || selector > 4 ? 7 : relations[selector] ? 255 : 0;
        U8 mark = 7;
        EXPECT_EQ(compare(&x, y, &mark, selector), 0);
        EXPECT_EQ(mark, want) << +x << ", " << +y << ", selector " << selector;
      }
}

TEST(Compare, marksEveryRelationOfEveryPair) {
  expectRelations<U8>({0, 1, 126, 127, 128, 129, 255}, [](auto x, U8 y, U8* mark, int selector) {
    return primCompare_8u_C1R(x, 1, &y, 1, mark, 1, 1, 1, selector);
  });
  expectRelations<S16>({-32768, -32767, -256, -1, 0, 1, 255, 256, 32766, 32767},
                       [](auto x, S16 y, U8* mark, int selector) {
                         return primCompareC_16s_C1R(x, 2, y, mark, 1, 1, 1, selector);
                       });
  expectRelations<float>({0.0f, -0.0f, 1.0f, 1.0000001f, -3e38f, kInf, -kInf, kNan},
                         [](auto x, float y, U8* mark, int selector) {
                           U8 second = *mark;
                           primCompare_32f_C1R(x, 4, &y, 4, &second, 1, 1, 1, selector);
                           const int status =
                               primCompareC_32f_C1R(x, 4, y, mark, 1, 1, 1, selector);
                           return second == *mark ? status : -1;
                         });
}

}  // namespace
