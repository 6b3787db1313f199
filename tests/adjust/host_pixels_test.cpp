#include "adjust/host_pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "picture.h"

namespace {

using vx::GIMG;
using vx::IMG3;
using namespace vx::test;

int top(int format) { return deep(format) ? 32768 : 255; }
double scale(int format) { return deep(format) ? 32768.0 : 256.0; }

// Wider than one block, narrower with many rows, and odd sizes.
constexpr struct { int width, height; } kSizes[] = {{4100, 3}, {7, 700}, {1, 1}, {33, 5}};

TEST(HostPixels, readingPutsSamplesUnderTheMiddleOfTheirStep) {
  for (const int format : kFormats) {
    for (const auto& [w, h] : kSizes) {
      Picture p(format, w, h, 3);
      p.randomise(11, deep(format) ? 65535 : 255);
      IMG3<float> image(w, h);
      ASSERT_EQ(vx::readHostImage(format, p.bytes.data(), p.step, 0, 0, image), 1);
      GIMG<float> r(w, h), g(w, h), b(w, h);
      GIMG<float>* const planes[3] = {&r, &g, &b};
      ASSERT_EQ(vx::readHostPlanes(format, p.bytes.data(), p.step, planes), 1);
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
          for (int c = 0; c < 3; ++c) {
            const double wanted = (p.get(x, y, c) + 0.49) / scale(format);
            ASSERT_NEAR(image.row(y)[3 * x + c], wanted, 1.2e-7 * (wanted + 0.01)) << format;
            ASSERT_EQ(planes[c]->row(y)[x], image.row(y)[3 * x + c]) << format;
          }
    }
  }
}

TEST(HostPixels, readingStartsAtTheGivenPixel) {
  for (const int format : kFormats) {
    Picture p(format, 40, 30);
    p.randomise(5, top(format));
    IMG3<float> image(8, 6);
    ASSERT_EQ(vx::readHostImage(format, p.bytes.data(), p.step, 31, 23, image), 1);
    EXPECT_EQ(std::floor(image.row(0)[0] * scale(format)), p.get(31, 23, 0));
    EXPECT_EQ(std::floor(image.row(5)[3 * 7 + 2] * scale(format)), p.get(38, 28, 2));
  }
}

// All values that a format can hold come back exactly, by both ways, and no other byte changes.
TEST(HostPixels, everySampleValueSurvivesTheRoundTrip) {
  for (const int format : kFormats) {
    const int values = top(format) + 1;
    const int w = 181, h = values / w + 1;
    Picture p(format, w, h, 5);
    p.randomise(3, 0);
    p.forEachSample([&](int x, int y, int c) { return (w * y + x + 1000 * c) % values; });
    if (format == 6)  // below the limit that the cut of this format applies to the extra channel
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) *(p.at(x, y, 0) - 1) &= 0x7F;
    const auto before = p.bytes;

    IMG3<float> image(w, h);
    vx::readHostImage(format, p.bytes.data(), p.step, 0, 0, image);
    ASSERT_EQ(vx::writeHostImage(image, format, p.bytes.data(), p.step), 1);
    EXPECT_EQ(p.bytes, before) << "interleaved, format " << format;

    GIMG<float> r(w, h), g(w, h), b(w + 9, h);
    GIMG<float>* const planes[3] = {&r, &g, &b};
    b.roiWidth = w;
    vx::readHostPlanes(format, p.bytes.data(), p.step, planes);
    float* const data[3] = {r.data, g.data, b.data};
    const int steps[3] = {r.step, g.step, b.step};
    ASSERT_EQ(vx::writeHostPlanes(data, steps, w, h, format, p.bytes.data(), p.step), 1);
    EXPECT_EQ(p.bytes, before) << "planes, format " << format;
  }
}

TEST(HostPixels, writingRoundsSaturatesAndCuts) {
  const struct {
    float value;
    int bytes, words;
  } cases[] = {{-0.5f, 0, 0},        {1.0f, 255, 32768},   {1.5f, 255, 32768},
               {1e9f, 255, 32768},   {0.5f / 256, 0, 64},  // ties go to even
               {1.5f / 256, 2, 192}, {1.5f / 32768, 0, 2}, {2.5f / 32768, 0, 2},
               {std::nanf(""), 0, 0}};
  for (const int format : kFormats)
    for (const auto& c : cases) {
      Picture p(format, 20, 2);
      p.randomise(8, top(format));
      IMG3<float> image(20, 2);
      for (int y = 0; y < 2; ++y) std::fill_n(image.row(y), 60, c.value);
      vx::writeHostImage(image, format, p.bytes.data(), p.step);
      const int wanted = deep(format) ? c.words : c.bytes;
      EXPECT_EQ(p.get(3, 1, 0), wanted) << c.value << " in format " << format;
      EXPECT_EQ(p.get(14, 0, 2), wanted) << c.value << " in format " << format;

      std::vector<float> plane(40, c.value), other = plane, third = plane;
      float* const planes[3] = {plane.data(), other.data(), third.data()};
      const int steps[3] = {80, 80, 80};
      vx::writeHostPlanes(planes, steps, 20, 2, format, p.bytes.data(), p.step);
      EXPECT_EQ(p.get(19, 1, 2), wanted) << c.value << " in format " << format;
    }
}

// The interleaved way cuts words 0 to 3 * width - 1 of each row, extra channel included, and
// nothing behind them; the way of planes cuts all colour and leaves the extra channel alone.
TEST(HostPixels, cutOfFormat6) {
  const int w = 16;
  const auto word = [](Picture& p, int index) {
    std::uint16_t v;
    std::memcpy(&v, p.bytes.data() + p.step + 2 * index, 2);
    return v;
  };
  Picture p(6, w, 2);
  std::fill(p.bytes.begin(), p.bytes.end(), std::uint8_t{0xFF});
  IMG3<float> image(w, 2);
  for (int y = 0; y < 2; ++y) std::fill_n(image.row(y), 3 * w, 1.5f);
  vx::writeHostImage(image, 6, p.bytes.data(), p.step);
  for (int i = 0; i < 4 * w; ++i)
    EXPECT_EQ(word(p, i), i < 3 * w ? 32768 : i % 4 == 0 ? 65535 : 49152) << i;

  std::vector<float> plane(2 * w, 1.5f), other = plane, third = plane;
  float* const planes[3] = {plane.data(), other.data(), third.data()};
  const int steps[3] = {4 * w, 4 * w, 4 * w};
  std::fill(p.bytes.begin(), p.bytes.end(), std::uint8_t{0xFF});
  vx::writeHostPlanes(planes, steps, w, 2, 6, p.bytes.data(), p.step);
  for (int i = 0; i < 4 * w; ++i) EXPECT_EQ(word(p, i), i % 4 == 0 ? 65535 : 32768) << i;
}

TEST(HostPixels, unknownFormatsAreRefusedBeforeAnythingIsTouched) {
  for (const int format : {-1, 0, 2, 4, 7, 8, 1 << 30}) {
    EXPECT_EQ(vx::bytesPerPixel(format), 0);
    std::vector<std::uint8_t> pixels(1024, 77);
    IMG3<float> image(4, 4);
    std::fill_n(image.row(0), 12, 0.25f);
    GIMG<float> plane(4, 4);
    plane.row(0)[0] = 0.25f;
    GIMG<float>* const planes[3] = {&plane, &plane, &plane};
    float* const data[3] = {plane.data, plane.data, plane.data};
    const int steps[3] = {plane.step, plane.step, plane.step};
    EXPECT_EQ(vx::readHostImage(format, pixels.data(), 64, 0, 0, image), 0);
    EXPECT_EQ(vx::readHostPlanes(format, pixels.data(), 64, planes), 0);
    EXPECT_EQ(vx::writeHostImage(image, format, pixels.data(), 64), 0);
    EXPECT_EQ(vx::writeHostPlanes(data, steps, 4, 4, format, pixels.data(), 64), 0);
    EXPECT_EQ(image.row(0)[0], 0.25f);
    EXPECT_EQ(plane.row(0)[0], 0.25f);
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 77), 1024);
  }
}

// What cannot be read stands for black, never for memory as it was found.
TEST(HostPixels, refusedReadingLeavesDefinedFloats) {
  Picture p(1, 8, 8);
  IMG3<float> image(8, 8);
  for (int y = 0; y < 8; ++y) std::fill_n(image.row(y), 24, 5.0f);
  EXPECT_EQ(vx::readHostImage(1, p.bytes.data(), -24, 0, 0, image), 1);
  for (int y = 0; y < 8; ++y) EXPECT_EQ(image.row(y)[23], 0.49f / 256.0f);
  IMG3<float> none(0, 8);
  EXPECT_EQ(vx::readHostImage(1, p.bytes.data(), 24, 0, 0, none), 1);
  EXPECT_EQ(vx::writeHostImage(none, 1, p.bytes.data(), 24), 1);
  EXPECT_EQ(vx::readHostImage(1, nullptr, 24, 0, 0, image), 1);
}

}  // namespace
