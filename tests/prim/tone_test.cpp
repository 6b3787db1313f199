#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

// One operation in double on floats, rounded, is the float operation.
double f(double v) { return double{static_cast<float>(v)}; }

TEST(Tone, roundsEveryOperationOfTheFormulas) {
  Operands<float> o(1);
  const float *a = o.a.data(), *b = o.b.data();
  float other[96], *d = o.d.data();
  const int n = 96;
  const double k = 1.7f, least = 0.01f;
  VX_EXPECT(std::min(std::max(v, -0.25), 0.5), primvClip_32f_I, -0.25f, 0.5f, d, n);
  VX_EXPECT(f(v + k) > 1 ? f(v + k) - 1 : f(v + k), primvTurnHue_32f_I, 1.7f, d, n);
  VX_EXPECT(f(v - k) < 0 ? f(v - k) + 1 : f(v - k), primvTurnHue_32f_I, -1.7f, d, n);
  VX_EXPECT(t + f(f(s - t) * k), primvSharpen_32f, 1.7f, a, b, d, n);
  VX_EXPECT(std::abs(s - t), primvDetailSize_32f, a, b, d, n);
  VX_EXPECT(f(s - t) / f(std::abs(f(s - t)) + least), primvDetailPart_32f, 0.01f, a, b, d, other,
            n);
  VX_EXPECT(std::abs(f(s - t)) + least, primvDetailPart_32f, 0.01f, a, b, other, d, n);
  VX_EXPECT(s + f(f(s * t) * k), primvDetailJoin_32f, 1.7f, a, b, a, d, n);
}

TEST(Tone, limitsKeepWhatReachesThemAndNanTakesTheLowOne) {
  float clipped[] = {kNan, -2.0f, 3.0f, kInf, -kInf}, up[] = {0.75f, 0.8f}, down[] = {0.25f, 0.2f};
  ASSERT_EQ(primvClip_32f_I(-2.0f, 3.0f, clipped, 5), 0);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(clipped[i], i == 2 || i == 3 ? 3.0f : -2.0f) << i;
  ASSERT_EQ(primvTurnHue_32f_I(0.25f, up, 2), 0);
  ASSERT_EQ(primvTurnHue_32f_I(-0.25f, down, 2), 0);
  EXPECT_TRUE(up[0] == 1.0f && up[1] < 0.1f && down[0] == 0.0f && down[1] > 0.9f);
}

}  // namespace
