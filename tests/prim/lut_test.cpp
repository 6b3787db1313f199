#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

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

// The interpolating polynomial in the form of Lagrange, over the two or four points around the
// segment.
double polynomialAt(const Curve& curve, float x, int points) {
  const int found = segmentOf(curve, x), first0 = points == 2 ? found : found - 1;
  const int first = std::max(0, std::min(first0, curve.count() - points));
  const auto at = [](const std::vector<float>& v, int i) {
    return static_cast<long double>(v[static_cast<std::size_t>(i)]);
  };
  long double sum = 0;
  for (int i = first; i < first + points; ++i) {
    long double term = at(curve.values, i);
    for (int k = first; k < first + points; ++k)
      if (k != i) term *= (x - at(curve.levels, k)) / (at(curve.levels, i) - at(curve.levels, k));
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

// Places at and next to the levels, inside and beyond both ends, and no numbers.
Plane<float> placesOn(const Curve& curve) {
  std::vector<float> places = {kInf, -kInf, kNan};
  for (float at : curve.levels)
    places.insert(places.end(), {at, std::nextafter(at, kInf), std::nextafter(at, -kInf)});
  for (float share = -0.1f; share < 1.1f; share += 0.003f)
    places.push_back(curve.levels.front() + share * (curve.levels.back() - curve.levels.front()));
  Plane<float> image(static_cast<int>(places.size()), 1);
  return image.set([&](int x, int) { return places[static_cast<std::size_t>(x)]; });
}

using Lut = int (*)(float*, int, int, int, const float*, const float*, int);

int run(Lut lut, Plane<float>& image, const Curve& curve) {
  return call(lut, image, image.size(), curve.values, curve.levels, curve.count());
}

// Near the oracle; elements of no segment keep their bits.
void expectCurve(Lut lut, const Curve& curve, double tolerance, int points) {
  SCOPED_TRACE(testing::Message() << curve.count() << " levels");
  const Plane<float> src = placesOn(curve);
  Plane<float> out = src;
  ASSERT_EQ(run(lut, out, curve), 0);
  for (int x = 0; x < src.width; ++x) {
    const float from = src.at(x, 0), to = out.at(x, 0);
    if (segmentOf(curve, from) < 0)
      ASSERT_EQ(bitsOf(to), bitsOf(from));
    else
      ASSERT_NEAR(to, polynomialAt(curve, from, points), tolerance) << from;
  }
}

TEST(Lut, joinsThePointsByLinesOrCubics) {
  std::mt19937 rng(12);
  for (int n : {2, 3, 4, 5, 8, 9, 10, 17, 64, 65, 300}) {
    const Curve curve = risingCurve(rng, n);
    expectCurve(primLUT_Linear_32f_C1IR, curve, 1e-6, 2);
    // Uneven levels let a cubic swing far beyond its points; so far the doubles carry it.
    expectCurve(primLUT_Cubic_32f_C1IR, curve, n < 4 ? 1e-6 : 1e-3, n < 4 ? 2 : 4);
  }
}

// Evenly spaced, as the tone curves are: rounded to float once, from an error far below that.
TEST(Lut, cubicIsRoundedOnce) {
  Curve curve;
  for (int i = 0; i < 9; ++i) {
    curve.levels.push_back(static_cast<float>(i) * 1.001f / 8);
    curve.values.push_back(std::pow(static_cast<float>(i) / 8, 0.6f) * 1.001f);
  }
  expectCurve(primLUT_Cubic_32f_C1IR, curve, 6.1e-8, 4);
}

TEST(Lut, firstSegmentWinsWhateverTheOrderOfTheLevels) {
  const Curve kCurves[] = {
      {{1, 2, 3, 4, 5}, {0, 2, 1, 3, 0.5f}},     // overlapping and falling
      {{1, 2, 3, 4, 5}, {0, 1, 1, 1, 2}},        // a step
      {{1, 2, 3, 4, 5}, {2, 2, 2, 2, 2}},        // no width at all
      {{1, 2, 3, 4, 5}, {5, 4, 3, 2, 1}},        // nothing is ever found
      {{1, 2, 3, 4, 5}, {0, 1, kNan, 1.5f, 3}},  // segments beside a NaN hold nothing
      {{1, 2, 3, 4, 5}, {-0.0f, 0.0f, 1, 2, 3}}};
  for (const Curve& curve : kCurves) expectCurve(primLUT_Linear_32f_C1IR, curve, 1e-6, 2);
  Curve manySegments;
  for (float i = 0; i < 20; ++i) {
    manySegments.levels.push_back(std::floor(i / 2));  // a step at every level
    manySegments.values.push_back(i);
  }
  expectCurve(primLUT_Linear_32f_C1IR, manySegments, 1e-6, 2);
  expectCurve(primLUT_Cubic_32f_C1IR, {{1, 2, 3, 4, 9}, {0, 3, 1, 4, 2}}, 1e-5, 4);
}

TEST(Lut, refusesLongCurvesWithoutMemory) {
  std::mt19937 rng(16);
  const Curve curve = risingCurve(rng, 5000);
  Plane<float> image(1, 1);
  const vx::test::Heap noMemory(0, true);
  for (Lut lut : {Lut{primLUT_Linear_32f_C1IR}, Lut{primLUT_Cubic_32f_C1IR}})
    EXPECT_EQ(run(lut, image, curve), kStatusNoMemory);
}

}  // namespace
