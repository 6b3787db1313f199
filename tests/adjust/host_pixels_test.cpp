#include "adjust/host_pixels.h"

#include "tests/support/picture.h"
#include "tests/support/test.h"

namespace {

using vx::GIMG;
using vx::IMG3;
using namespace vx::test;

int top(int format) { return deep(format) ? 32768 : 255; }
double scale(int format) { return deep(format) ? 32768.0 : 256.0; }

// Writes a picture of one value by the way of planes.
void writePlanes(Picture& p, float value) {
  const int samples = p.width * p.height;
  std::vector<float> data(static_cast<std::size_t>(3 * samples), value);
  float* const planes[3] = {&data[0], data.data() + samples, data.data() + 2 * samples};
  const int steps[3] = {4 * p.width, 4 * p.width, 4 * p.width};
  vx::writeHostPlanes(planes, steps, p.width, p.height, p.format, p.bytes.data(), p.step);
}
void writeInterleaved(Picture& p, float value) {
  IMG3<float> image(p.width, p.height);
  for (int y = 0; y < p.height; ++y) std::fill_n(image.row(y), 3 * p.width, value);
  vx::writeHostImage(vx::RgbRows(image), p.format, p.bytes.data(), p.step);
}

// Wider than one block, narrower with many rows, and odd sizes.
constexpr struct { int width, height; } kSizes[] = {{4100, 3}, {7, 700}, {1, 1}, {33, 5}};

// Samples are put under the middle of their step, from the given pixel on.
TEST(HostPixels, readingFollowsItsFormula) {
  for (const int format : kFormats)
    for (const auto& [w, h] : kSizes) {
      Picture p = randomPicture(format, w + 5, h + 4, deep(format) ? 65535 : 255, 3);
      IMG3<float> image(w, h);
      ASSERT_EQ(vx::readHostImage(format, p.bytes.data(), p.step, 5, 3, vx::RgbRows(image)), 1);
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
          for (int c = 0; c < 3; ++c) {
            const double wanted = (p.get(x + 5, y + 3, c) + 0.49) / scale(format);
            ASSERT_NEAR(image.row(y)[3 * x + c], wanted, 1.2e-7 * (wanted + 0.01)) << format;
          }
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
    const auto before = p.bytes;

    IMG3<float> image(w, h);
    vx::readHostImage(format, p.bytes.data(), p.step, 0, 0, vx::RgbRows(image));
    ASSERT_EQ(vx::writeHostImage(vx::RgbRows(image), format, p.bytes.data(), p.step), 1);
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
  const std::tuple<float, int, int> cases[] = {
      {-0.5f, 0, 0},        {1.0f, 255, 32768},   {1.5f, 255, 32768},   {1e9f, 255, 32768},
      {0.5f / 256, 0, 64},  // ties go to even
      {1.5f / 256, 2, 192}, {1.5f / 32768, 0, 2}, {2.5f / 32768, 0, 2}, {std::nanf(""), 0, 0}};
  for (const int format : kFormats)
    for (const auto& [value, bytes, words] : cases) {
      const int wanted = deep(format) ? words : bytes;
      for (const auto write : {writeInterleaved, writePlanes}) {
        Picture p = randomPicture(format, 20, 2, top(format));
        write(p, value);
        EXPECT_EQ(p.get(3, 1, 0), wanted) << value << " in format " << format;
        EXPECT_EQ(p.get(14, 0, 2), wanted) << value << " in format " << format;
      }
    }
}

// What cannot be read stands for black, never for memory as it was found.
TEST(HostPixels, refusedReadingLeavesDefinedFloats) {
  Picture p(1, 8, 8);
  IMG3<float> image(8, 8);
  for (int y = 0; y < 8; ++y) std::fill_n(image.row(y), 24, 5.0f);
  EXPECT_EQ(vx::readHostImage(1, p.bytes.data(), -24, 0, 0, vx::RgbRows(image)), 1);
  for (int y = 0; y < 8; ++y) EXPECT_EQ(image.row(y)[23], 0.49f / 256.0f);
  IMG3<float> none(0, 8);
  EXPECT_EQ(vx::readHostImage(1, p.bytes.data(), 24, 0, 0, vx::RgbRows(none)), 1);
  EXPECT_EQ(vx::writeHostImage(vx::RgbRows(none), 1, p.bytes.data(), 24), 1);
  EXPECT_EQ(vx::readHostImage(1, nullptr, 24, 0, 0, vx::RgbRows(image)), 1);
}

}  // namespace
