#include "prim/colour.h"

#include <bit>
#include <cmath>
#include <limits>

#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kUntouched = -77.0f;

struct Pixel {
  float c[3];
};

// Equal values, or two NaN.
void expectSame(const Pixel& got, const Pixel& want, const Pixel& from) {
  for (int i = 0; i < 3; ++i)
    EXPECT_TRUE(got.c[i] == want.c[i] || (std::isnan(got.c[i]) && std::isnan(want.c[i])))
        << "channel " << i << " of " << from.c[0] << ", " << from.c[1] << ", " << from.c[2] << ": "
        << got.c[i] << " instead of " << want.c[i];
}

// The formulas with their branches, one pixel at a time.
Pixel hlsOf(const Pixel& rgb) {
  const double r = rgb.c[0], g = rgb.c[1], b = rgb.c[2];
  const double max = std::fmax(std::fmax(r, g), b), min = std::fmin(std::fmin(r, g), b);
  const double d = max - min, lightness = 0.5 * (max + min);
  if (d <= 1.1920929e-7) return {{0, static_cast<float>(lightness), 0}};
  const double saturation = lightness <= 0.5 ? d / (max + min) : d / (2 - max - min);
  double hue = 0;
  if (r == max)
    hue = (g - b) * 60 / d;
  else if (g == max)
    hue = (b - r) * 60 / d + 120;
  else
    hue = (r - g) * 60 / d + 240;
  if (hue < 0) hue += 360;
  return {{static_cast<float>(hue / 360), static_cast<float>(lightness),
           static_cast<float>(saturation)}};
}

float rampAt(float t, float m1, float m2) {
  if (t < 60) return m1 + (m2 - m1) * t / 60;
  if (t < 180) return m2;
  if (t < 240) return m1 + (m2 - m1) * (240 - t) / 60;
  return m1;
}

Pixel rgbOf(const Pixel& hls) {
  const float l = hls.c[1], s = hls.c[2];
  if (s == 0) return {{l, l, l}};
  const float h = hls.c[0] * 360;
  const float m2 = l <= 0.5f ? l * (1 + s) : (l + s) - l * s;
  const float m1 = 2 * l - m2;
  const float red = h + 120 >= 360 ? h + 120 - 360 : h + 120;
  const float blue = h - 120 < 0 ? h - 120 + 360 : h - 120;
  return {{rampAt(red, m1, m2), rampAt(h, m1, m2), rampAt(blue, m1, m2)}};
}

// Ordinary colours, coarse ones that tie and wrap, and values far out of range.
float sample(std::mt19937& rng) {
  const auto r = static_cast<std::uint32_t>(rng());
  switch (r % 16) {
    case 0:
      return static_cast<float>(r >> 30) / 2;
    case 1:
      return static_cast<float>((r >> 8) % 7) / 6;
    case 2:
      return std::ldexp(static_cast<float>(static_cast<int>(r)), static_cast<int>(r % 90) - 60);
    case 3:
      return (r & 256) != 0 ? -0.0f : 0.0f;
    case 4:
      return (r & 256) != 0 ? 3e38f : -3e38f;
    default:
      return static_cast<float>(r >> 8) / 16777216;
  }
}

using Convert = int (*)(const float*, int, float*, int, int, int);

void checkConversion(Convert convert, Pixel (*expected)(const Pixel&)) {
  std::mt19937 rng(20);
  for (int width : {1, 2, 3, 5, 8, 15, 16, 17, 31, 33, 64, 127, 128, 129, 131, 300}) {
    Plane<float> src(3 * width, 3, 0, 0, 1), dst(3 * width, 3, 2, 1, 3);
    for (int y = 0; y < 3; ++y)
      for (int x = 0; x < 3 * width; ++x) src.at(x, y) = sample(rng);
    dst.fill(kUntouched);
    ASSERT_EQ(convert(src.data(), src.step, dst.data(), dst.step, width, 3), 0);
    Plane<float> inPlace = src;
    ASSERT_EQ(convert(inPlace.data(), src.step, inPlace.data(), src.step, width, 3), 0);
    for (int y = 0; y < 3; ++y)
      for (int x = 0; x < 3 * width; x += 3) {
        const Pixel from = {{src.at(x, y), src.at(x + 1, y), src.at(x + 2, y)}};
        const Pixel want = expected(from);
        expectSame({{dst.at(x, y), dst.at(x + 1, y), dst.at(x + 2, y)}}, want, from);
        expectSame({{inPlace.at(x, y), inPlace.at(x + 1, y), inPlace.at(x + 2, y)}}, want, from);
      }
    ASSERT_EQ(dst.changedOutside(kUntouched), 0);
    if (testing::Test::HasFailure()) return;
  }
}

Pixel convertOne(Convert convert, const Pixel& from) {
  Pixel to = {};
  EXPECT_EQ(convert(from.c, 12, to.c, 12, 1, 1), 0);
  return to;
}

TEST(Colour, followsTheFormulasToTheLastBit) {
  onEveryVariant([] {
    checkConversion(primRGBToHLS_32f_C3R, hlsOf);
    checkConversion(primHLSToRGB_32f_C3R, rgbOf);
  });
}

TEST(Colour, knownColours) {
  const struct {
    Pixel rgb, hls;
  } kKnown[] = {{{{1, 0, 0}}, {{0, 0.5f, 1}}},
                {{{1, 1, 0}}, {{60 / 360.0f, 0.5f, 1}}},
                {{{0, 1, 0}}, {{120 / 360.0f, 0.5f, 1}}},
                {{{0, 1, 1}}, {{0.5f, 0.5f, 1}}},
                {{{0, 0, 1}}, {{240 / 360.0f, 0.5f, 1}}},
                {{{1, 0, 1}}, {{300 / 360.0f, 0.5f, 1}}},
                {{{0, 0, 0}}, {{0, 0, 0}}},
                {{{1, 1, 1}}, {{0, 1, 0}}},
                {{{0.3f, 0.3f, 0.3f}}, {{0, 0.3f, 0}}},
                {{{0.75f, 0.25f, 0.25f}}, {{0, 0.5f, 0.5f}}},
                {{{0.25f, 0.25f, 0.125f}}, {{60 / 360.0f, 0.1875f, 1 / 3.0f}}}};
  onEveryVariant([&] {
    for (const auto& k : kKnown) {
      expectSame(convertOne(primRGBToHLS_32f_C3R, k.rgb), k.hls, k.rgb);
      const Pixel back = convertOne(primHLSToRGB_32f_C3R, k.hls);
      for (int i = 0; i < 3; ++i) EXPECT_NEAR(back.c[i], k.rgb.c[i], 2e-7);
    }
  });
}

TEST(Colour, saturationStartsAboveOneStepOfOne) {
  const float step = std::ldexp(1.0f, -23);
  onEveryVariant([&] {
    const Pixel grey = convertOne(primRGBToHLS_32f_C3R, {{step, 0, 0}});
    EXPECT_EQ(grey.c[2], 0.0f);
    const Pixel red = convertOne(primRGBToHLS_32f_C3R, {{std::nextafter(step, 1.0f), 0, 0}});
    EXPECT_EQ(red.c[2], 1.0f);
  });
}

TEST(Colour, thereAndBackKeepsThePicture) {
  std::mt19937 rng(3);
  constexpr int kWidth = 500;
  Plane<float> rgb(3 * kWidth, 1), hls(3 * kWidth, 1), back(3 * kWidth, 1);
  for (int x = 0; x < 3 * kWidth; ++x) rgb.at(x, 0) = static_cast<float>(rng() >> 8) / 16777216;
  onEveryVariant([&] {
    ASSERT_EQ(primRGBToHLS_32f_C3R(rgb.data(), rgb.step, hls.data(), hls.step, kWidth, 1), 0);
    ASSERT_EQ(primHLSToRGB_32f_C3R(hls.data(), hls.step, back.data(), back.step, kWidth, 1), 0);
    for (int x = 0; x < 3 * kWidth; ++x) {
      ASSERT_TRUE(hls.at(x, 0) >= 0 && hls.at(x, 0) <= 1);
      ASSERT_NEAR(back.at(x, 0), rgb.at(x, 0), 1e-6);
    }
  });
}

// Which NaN comes out, if any, is part of what the variants agree in.
TEST(Colour, infinitiesAndNanGiveTheSameBitsInEveryVariant) {
  const float other = std::bit_cast<float>(0xFFD12345u);
  const float kValues[] = {kNan, other, kInf, -kInf, -0.0f, 0.0f, 0.4f, 1.0f, -2.5f, 3e38f};
  std::vector<float> src;
  for (float a : kValues)
    for (float b : kValues)
      for (float c : kValues) src.insert(src.end(), {a, b, c});
  const int width = static_cast<int>(src.size()) / 3, step = 12 * width;
  const float twist[3][4] = {{1, 2, -1, 3}, {kInf, 1, 1, -1}, {0, 0, other, 1}};
  std::vector<std::uint32_t> first;
  onEveryVariant([&] {
    std::vector<float> hls(src.size()), rgb(src.size()), twisted = src;
    ASSERT_EQ(primRGBToHLS_32f_C3R(src.data(), step, hls.data(), step, width, 1), 0);
    ASSERT_EQ(primHLSToRGB_32f_C3R(src.data(), step, rgb.data(), step, width, 1), 0);
    float* const planes[] = {&twisted[0], &twisted[static_cast<std::size_t>(width)],
                             &twisted[static_cast<std::size_t>(2 * width)]};
    ASSERT_EQ(primColorTwist_32f_P3IR(planes, step, width, 1, twist), 0);
    std::vector<std::uint32_t> bits;
    for (const auto* image : {&hls, &rgb, &twisted})
      for (float v : *image) bits.push_back(std::bit_cast<std::uint32_t>(v));
    if (first.empty()) first = bits;
    EXPECT_EQ(bits, first);
  });
}

TEST(ColorTwist, mixesThePlanesOfEachPixel) {
  const float twist[3][4] = {{0.5f, 2, -1, 3}, {0, 1, 0, 0}, {-0.25f, 4, 0.125f, -7}};
  std::mt19937 rng(5);
  onEveryVariant([&] {
    for (int width : {1, 3, 7, 16, 33, 70}) {
      std::vector<Plane<float>> planes, before;
      for (int i = 0; i < 3; ++i) {
        before.emplace_back(width, 2, 1, 1, 2);
        before.back().randomise(rng, -4096, 4096);
        planes.emplace_back(width, 2, 1, 1, 2);
        planes.back().fill(kUntouched);
        for (int y = 0; y < 2; ++y)
          for (int x = 0; x < width; ++x) planes.back().at(x, y) = before.back().at(x, y);
      }
      float* const p[] = {planes[0].data(), planes[1].data(), planes[2].data()};
      ASSERT_EQ(primColorTwist_32f_P3IR(p, planes[0].step, width, 2, twist), 0);
      for (std::size_t r = 0; r < 3; ++r)
        expectPlane(planes[r], kUntouched, [&](int x, int y) {
          double sum = double{twist[r][3]};
          for (std::size_t i = 0; i < 3; ++i) sum += double{twist[r][i]} * before[i].at(x, y);
          return sum;
        });
    }
  });
}

TEST(Colour, refusesBadArgumentsInOrder) {
  float p[6] = {}, q[6] = {};
  const float twist[3][4] = {};
  for (Convert convert : {Convert{primRGBToHLS_32f_C3R}, Convert{primHLSToRGB_32f_C3R}}) {
    EXPECT_EQ(convert(nullptr, 12, q, 12, 0, 1), kStatusNullPtr);
    EXPECT_EQ(convert(p, 12, nullptr, 12, 1, 1), kStatusNullPtr);
    EXPECT_EQ(convert(p, 12, q, 12, 0, 1), kStatusBadSize);
    EXPECT_EQ(convert(p, 12, q, 12, 1, -1), kStatusBadSize);
  }
  for (int missing = 0; missing < 3; ++missing) {
    float* planes[] = {p, p + 1, p + 2};
    planes[missing] = nullptr;
    EXPECT_EQ(primColorTwist_32f_P3IR(planes, 0, 0, 1, twist), kStatusNullPtr);
  }
  float* const planes[] = {p, p + 1, p + 2};
  EXPECT_EQ(primColorTwist_32f_P3IR(nullptr, 4, 1, 1, twist), kStatusNullPtr);
  EXPECT_EQ(primColorTwist_32f_P3IR(planes, 4, 1, 1, nullptr), kStatusNullPtr);
  EXPECT_EQ(primColorTwist_32f_P3IR(planes, 0, 0, 1, twist), kStatusBadSize);
  EXPECT_EQ(primColorTwist_32f_P3IR(planes, 0, 1, 1, twist), kStatusBadStep);
}

}  // namespace
