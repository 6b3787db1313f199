#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

using Pixel = std::array<float, 3>;

// The formulas with their branches, one pixel at a time.
Pixel hlsOf(const Pixel& rgb) {
  const double r = rgb[0], g = rgb[1], b = rgb[2];
  const double max = std::fmax(std::fmax(r, g), b), min = std::fmin(std::fmin(r, g), b);
  const double d = max - min, lightness = 0.5 * (max + min);
  if (d <= 1.1920929e-7) return {0, static_cast<float>(lightness), 0};
  const double saturation = lightness <= 0.5 ? d / (max + min) : d / (2 - max - min);
  const double hue = r == max   ? (g - b) * 60 / d
                     : g == max ? (b - r) * 60 / d + 120
                                : (r - g) * 60 / d + 240;
  return {static_cast<float>((hue < 0 ? hue + 360 : hue) / 360), static_cast<float>(lightness),
          static_cast<float>(saturation)};
}

float rampAt(float t, float m1, float m2) {
  if (t < 60) return m1 + (m2 - m1) * t / 60;
  if (t < 180) return m2;
  if (t < 240) return m1 + (m2 - m1) * (240 - t) / 60;
  return m1;
}

Pixel rgbOf(const Pixel& hls) {
  const auto& [turn, l, s] = hls;
  if (s == 0) return {l, l, l};
  const float h = turn * 360;
  const float m2 = l <= 0.5f ? l * (1 + s) : (l + s) - l * s;
  const float m1 = 2 * l - m2;
  const float red = h + 120 >= 360 ? h + 120 - 360 : h + 120;
  const float blue = h - 120 < 0 ? h - 120 + 360 : h - 120;
  return {rampAt(red, m1, m2), rampAt(h, m1, m2), rampAt(blue, m1, m2)};
}

// A factor by its bits. Each product is rounded and goes on to the next plane.
float times(float v, std::uint32_t factor) { return v * std::bit_cast<float>(factor); }

Pixel yuvOf(const Pixel& rgb) {
  static constexpr std::uint32_t kFactors[3][3] = {{0x3E991687, 0xBE16872B, 0x3F1D70A4},
                                                   {0x3F1645A2, 0xBEFC1330, 0x3FE418CD},
                                                   {0x3DE978D5, 0x4074C59D, 0xBE6ADCC6}};
  Pixel yuv;
  for (std::size_t i = 0; i < 3; ++i) yuv[i] = times(rgb[0], kFactors[0][i]);
  for (std::size_t c : {1, 2}) {
    float t = rgb[c];
    for (std::size_t i = 0; i < 3; ++i) yuv[i] += t = times(t, kFactors[c][i]);
  }
  return yuv;
}

Pixel rgbOfYuv(const Pixel& yuv) {
  const auto& [y, u, v] = yuv;
  return {times(v, 0x3F91EB85) + y, times(times(v, 0x3FBCC053) + u, 0xBEC9BA5E) + y,
          times(u, 0x40020C4A) + y};
}

// Ordinary colours, coarse ones that tie and wrap, and values far out of range.
float sample(std::mt19937& rng) {
  static constexpr float kCoarse[] = {0.0f, -0.0f, 0.5f, 1.0f, 1.0f / 6, 1.0f / 3, 3e38f, -3e38f};
  const auto kind = rng() % 4;
  if (kind == 0) return kCoarse[rng() % 8];
  if (kind == 1) return rng() % 8 == 0 ? drawValue<float>(rng) * 0x1p20f : 0.25f;
  return static_cast<float>(rng() >> 8) * 0x1p-24f;
}

// Equal values, or two NaN, in channel x % 3 of the conversion of the pixel that holds x.
void expectConverted(const Plane<float>& src, const Plane<float>& dst,
                     Pixel (*convert)(const Pixel&)) {
  for (int x = 0; x < src.width; ++x) {
    const int first = x / 3 * 3;
    const Pixel from = {src.at(first, 0), src.at(first + 1, 0), src.at(first + 2, 0)};
    const float want = convert(from)[static_cast<std::size_t>(x % 3)], got = dst.at(x, 0);
    ASSERT_TRUE(got == want || (std::isnan(got) && std::isnan(want)))
        << "channel " << x % 3 << " of " << from[0] << ", " << from[1] << ", " << from[2] << ": "
        << got << " instead of " << want;
  }
}

// Interleaved, in place and through planes.
TEST(Colour, followsTheFormulasToTheLastBit) {
  constexpr int kWidth = 20000;
  std::mt19937 rng(20);
  Plane<float> src(3 * kWidth, 1), dst(src), p[] = {{kWidth, 1}, {kWidth, 1}, {kWidth, 1}};
  src.draw([&] { return sample(rng); });
  const float step = 0x1p-23f;  // saturation starts above it
  for (int i : {0, 1, 2, 4, 5}) src.at(i, 0) = 0;
  src.at(0, 0) = step;
  src.at(3, 0) = std::nextafter(step, 1.0f);
  const Size size = p[0].size();

  ASSERT_EQ(call(primRGBToHLS_32f_C3R, src, dst, size), 0);
  expectConverted(src, dst, hlsOf);
  EXPECT_EQ(dst.at(2, 0), 0.0f);
  EXPECT_EQ(dst.at(5, 0), 1.0f);
  for (const auto& [toPlanes, oracle] :
       {std::pair{&primRGBToHLS_32f_C3P3R, &hlsOf}, {&primRGBToYUV_32f_C3P3R, &yuvOf}}) {
    ASSERT_EQ(call(toPlanes, src, p[0], p[1], p[2], size), 0);
    expectConverted(src, dst.set([&](int x, int) { return p[x % 3].at(x / 3, 0); }), oracle);
  }
  dst = src;
  ASSERT_EQ(call(primHLSToRGB_32f_C3R, dst, dst, size), 0);
  expectConverted(src, dst, rgbOf);
  for (int c = 0; c < 3; ++c) p[c].set([&](int x, int) { return src.at(3 * x + c, 0); });
  for (const auto& [fromPlanes, oracle] :
       {std::pair{&primHLSToRGB_32f_P3C3R, &rgbOf}, {&primYUVToRGB_32f_P3C3R, &rgbOfYuv}}) {
    ASSERT_EQ(call(fromPlanes, p[0], p[1], p[2], dst, size), 0);
    expectConverted(src, dst, oracle);
  }
}

TEST(ColorTwist, mixesThePlanesOfEachPixel) {
  const float twist[3][4] = {{0.5f, 2, -1, 3}, {0, 1, 0, 0}, {-0.25f, 4, 0.125f, -7}};
  std::mt19937 rng(5);
  std::vector<Plane<float>> planes(3, {33, 2});
  for (Plane<float>& plane : planes) plane.randomise(rng, -4096, 4096);
  const std::vector<Plane<float>> before = planes;
  float* pointers[] = {planes[0].data(), planes[1].data(), planes[2].data()};
  for (float*& pointer : pointers) {
    float* const kept = std::exchange(pointer, nullptr);
    EXPECT_EQ(primColorTwist_32f_P3IR(pointers, planes[0].step, 33, 2, twist), -8);
    pointer = kept;
  }
  ASSERT_EQ(primColorTwist_32f_P3IR(pointers, planes[0].step, 33, 2, twist), 0);
  for (std::size_t r = 0; r < 3; ++r)
    expectPlane(planes[r], [&](int x, int y) {
      double sum = double{twist[r][3]};
      for (std::size_t i = 0; i < 3; ++i) sum += double{twist[r][i]} * before[i].at(x, y);
      return sum;
    });
}

}  // namespace
