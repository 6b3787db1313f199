#include "prim/lut.h"

#include <bit>
#include <climits>
#include <cmath>
#include <limits>

#include "prim/alloc.h"
#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kUntouched = -77.0f;

struct Curve {
  std::vector<float> values, levels;
  int count() const { return static_cast<int>(levels.size()); }
};

// First segment that holds x, or -1.
int segmentOf(const Curve& curve, float x) {
  for (std::size_t i = 0; i + 1 < curve.levels.size(); ++i)
    if (x >= curve.levels[i] && x < curve.levels[i + 1]) return static_cast<int>(i);
  return -1;
}

double linearAt(const Curve& curve, float x) {
  const int found = segmentOf(curve, x);
  if (found < 0) return double{x};
  const auto i = static_cast<std::size_t>(found);
  const double x0 = curve.levels[i], y0 = curve.values[i];
  return y0 + (x - x0) * ((curve.values[i + 1] - y0) / (curve.levels[i + 1] - x0));
}

// The interpolating cubic in the form of Lagrange, over the four points around the segment.
double cubicAt(const Curve& curve, float x) {
  const int found = segmentOf(curve, x);
  if (found < 0) return double{x};
  int first = found - 1;
  if (first > curve.count() - 4) first = curve.count() - 4;
  if (first < 0) first = 0;
  long double sum = 0;
  for (int i = first; i < first + 4; ++i) {
    long double term = curve.values[static_cast<std::size_t>(i)];
    for (int k = first; k < first + 4; ++k)
      if (k != i)
        term *= ((long double)x - curve.levels[static_cast<std::size_t>(k)]) /
                ((long double)curve.levels[static_cast<std::size_t>(i)] -
                 curve.levels[static_cast<std::size_t>(k)]);
    sum += term;
  }
  return static_cast<double>(sum);
}

Curve risingCurve(std::mt19937& rng, int n) {
  Curve curve;
  float level = static_cast<float>(rng() % 100) / -100;
  for (int i = 0; i < n; ++i) {
    curve.levels.push_back(level);
    curve.values.push_back(static_cast<float>(rng() % 2001) / 1000 - 1);
    level += static_cast<float>(1 + rng() % 64) / 64;
  }
  return curve;
}

// Places inside, at, and next to the levels, beyond both ends, and no number.
float placeOn(const Curve& curve, std::mt19937& rng) {
  const float at = curve.levels[rng() % curve.levels.size()];
  switch (rng() % 8) {
    case 0:
      return at;
    case 1:
      return std::nextafter(at, kInf);
    case 2:
      return std::nextafter(at, -kInf);
    case 3:
      return rng() % 2 == 0 ? kInf : -kInf;
    case 4:
      return kNan;
    default:
      return curve.levels.front() + (static_cast<float>(rng() >> 8) / 16777216 * 1.2f - 0.1f) *
                                        (curve.levels.back() - curve.levels.front());
  }
}

using Lut = int (*)(float*, int, int, int, const float*, const float*, int);

int run(Lut lut, Plane<float>& image, const Curve& curve) {
  return lut(image.data(), image.step, image.width, image.height, curve.values.data(),
             curve.levels.data(), curve.count());
}

// Runs the curve over one image on every variant: near the oracle, elements of no segment and the
// padding as they were, and the same bits from every variant.
void checkCurve(Lut lut, const Curve& curve, double (*expected)(const Curve&, float),
                double tolerance, int width, std::mt19937& rng) {
  Plane<float> src(width, 3, 3, 1, 1);
  src.fill(kUntouched);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < width; ++x) src.at(x, y) = placeOn(curve, rng);
  std::vector<std::uint32_t> first;
  onEveryVariant([&] {
    Plane<float> out = src;
    ASSERT_EQ(run(lut, out, curve), 0);
    ASSERT_EQ(out.changedOutside(kUntouched), 0);
    std::vector<std::uint32_t> bits;
    for (int y = 0; y < 3; ++y)
      for (int x = 0; x < width; ++x) {
        bits.push_back(std::bit_cast<std::uint32_t>(out.at(x, y)));
        if (segmentOf(curve, src.at(x, y)) < 0)
          ASSERT_EQ(bits.back(), std::bit_cast<std::uint32_t>(src.at(x, y)));
        else
          ASSERT_NEAR(out.at(x, y), expected(curve, src.at(x, y)), tolerance) << src.at(x, y);
      }
    if (first.empty()) first = bits;
    ASSERT_EQ(bits, first);
  });
}

TEST(Lut, linearJoinsThePoints) {
  std::mt19937 rng(11);
  for (int n : {2, 3, 4, 5, 8, 9, 10, 17, 64, 65, 300})
    checkCurve(primLUT_Linear_32f_C1IR, risingCurve(rng, n), linearAt, 1e-6,
               1 + static_cast<int>(rng() % 70), rng);
}

TEST(Lut, cubicPassesThroughTheFourPointsAroundTheSegment) {
  std::mt19937 rng(12);
  for (int n : {4, 5, 6, 7, 8, 9, 10, 17, 64, 65, 300})
    for (int width : {3, 70, 200}) {
      // Uneven levels let a cubic swing far beyond its points; so far the doubles carry it.
      checkCurve(primLUT_Cubic_32f_C1IR, risingCurve(rng, n), cubicAt, 1e-3, width, rng);
    }
}

// Evenly spaced, as the tone curves are: rounded to float once, from an error far below that.
TEST(Lut, cubicIsRoundedOnce) {
  std::mt19937 rng(13);
  Curve curve;
  for (int i = 0; i < 9; ++i) {
    curve.levels.push_back(static_cast<float>(i) * 1.001f / 8);
    curve.values.push_back(std::pow(static_cast<float>(i) / 8, 0.6f) * 1.001f);
  }
  checkCurve(primLUT_Cubic_32f_C1IR, curve, cubicAt, 6.1e-8, 400, rng);
}

TEST(Lut, cubicOfFewPointsIsLinear) {
  std::mt19937 rng(14);
  for (int n : {2, 3})
    checkCurve(primLUT_Cubic_32f_C1IR, risingCurve(rng, n), linearAt, 1e-6, 40, rng);
}

TEST(Lut, firstSegmentWinsWhateverTheOrderOfTheLevels) {
  std::mt19937 rng(15);
  const Curve kCurves[] = {
      {{1, 2, 3, 4, 5}, {0, 2, 1, 3, 0.5f}},     // overlapping and falling
      {{1, 2, 3, 4, 5}, {0, 1, 1, 1, 2}},        // a step
      {{1, 2, 3, 4, 5}, {2, 2, 2, 2, 2}},        // no width at all
      {{1, 2, 3, 4, 5}, {5, 4, 3, 2, 1}},        // nothing is ever found
      {{1, 2, 3, 4, 5}, {0, 1, kNan, 1.5f, 3}},  // segments beside a NaN hold nothing
      {{1, 2, 3, 4, 5}, {-0.0f, 0.0f, 1, 2, 3}}};
  for (const Curve& curve : kCurves)
    checkCurve(primLUT_Linear_32f_C1IR, curve, linearAt, 1e-6, 60, rng);
  checkCurve(primLUT_Cubic_32f_C1IR, {{1, 2, 3, 4, 9}, {0, 3, 1, 4, 2}}, cubicAt, 1e-5, 60, rng);
}

// Where the curve has no finite value, all that is left to promise is that every variant agrees.
TEST(Lut, nanInTheCurveIsTheSameNanInEveryVariant) {
  const float other = std::bit_cast<float>(0x7FE54321u);
  const Curve kCurves[] = {{{1, kNan, other, 4, kInf, 5, 6, -kInf, 7}, {0, 1, 2, 3, 4, 5, 6, 7, 8}},
                           {{1, 2, 3, 4}, {0, 1, 1, 2}},
                           {{1, other, 3, 4, 5}, {-kInf, 0, 1, 3e38f, kInf}}};
  for (const Curve& curve : kCurves)
    for (Lut lut : {Lut{primLUT_Linear_32f_C1IR}, Lut{primLUT_Cubic_32f_C1IR}}) {
      std::vector<std::uint32_t> first;
      onEveryVariant([&] {
        Plane<float> image(90, 1);
        for (int x = 0; x < 90; ++x) image.at(x, 0) = static_cast<float>(x) / 10 - 0.5f;
        image.at(3, 0) = -kInf;
        image.at(4, 0) = other;
        ASSERT_EQ(run(lut, image, curve), 0);
        std::vector<std::uint32_t> bits;
        for (int x = 0; x < 90; ++x) bits.push_back(std::bit_cast<std::uint32_t>(image.at(x, 0)));
        if (first.empty()) first = bits;
        EXPECT_EQ(bits, first);
      });
    }
}

TEST(Lut, refusesBadArgumentsInOrder) {
  float p[1] = {0.5f};
  const float points[4] = {0, 1, 2, 3};
  for (Lut lut : {Lut{primLUT_Linear_32f_C1IR}, Lut{primLUT_Cubic_32f_C1IR}}) {
    EXPECT_EQ(lut(nullptr, 4, 0, 1, points, points, 4), kStatusNullPtr);
    EXPECT_EQ(lut(p, 4, 1, 1, nullptr, points, 4), kStatusNullPtr);
    EXPECT_EQ(lut(p, 4, 1, 1, points, nullptr, 4), kStatusNullPtr);
    EXPECT_EQ(lut(p, 4, 0, 1, points, points, 1), kStatusBadSize);
    EXPECT_EQ(lut(p, 4, 1, 0, points, points, 1), kStatusBadSize);
    EXPECT_EQ(lut(p, 4, 1, 1, points, points, 1), kStatusFewLutLevels);
    EXPECT_EQ(lut(p, 4, 1, 1, points, points, INT_MIN), kStatusFewLutLevels);
  }
  EXPECT_EQ(p[0], 0.5f);
}

TEST(Lut, saysSoWhenThereIsNoMemoryForALongCurve) {
  const MemHooks saved = primMemHooks;
  primMemHooks.allocate = [](std::size_t) -> void* { return nullptr; };
  std::mt19937 rng(16);
  const Curve curve = risingCurve(rng, 5000);
  onEveryVariant([&] {
    Plane<float> image(1, 1);
    EXPECT_EQ(run(primLUT_Cubic_32f_C1IR, image, curve), kStatusNoMemory);
    EXPECT_EQ(run(primLUT_Linear_32f_C1IR, image, curve), kStatusNoMemory);
  });
  primMemHooks = saved;
}

}  // namespace
