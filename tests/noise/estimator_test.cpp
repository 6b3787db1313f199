#include "adjust/estimate_noise.h"
#include "prim/prims.h"
#include "tests/support/float_mode.h"
#include "tests/support/images.h"
#include "tests/support/picture.h"
#include "tests/support/variants.h"
#include "vxenhlib/noise/noise_estimator.h"
#include "vxicore26.h"

namespace {

using namespace vx;
using test::paintScene;
using test::Picture;

constexpr NoiseProfile kUnset = {-1, -1, -1, -1, -1, -1};

NoiseProfile estimate(Picture& p) {
  NoiseProfile profile = kUnset;
  EXPECT_EQ(vxDenoiseEstNoise(p.bytes.data(), p.format, p.step, p.width, p.height, &profile), 1);
  return profile;
}

// The estimate pixel by pixel, on plain integers and without a primitive.
using Ints = std::vector<int>;

// The median over a cross with arms of that length; a frame of two keeps the values of `to`.
void crossMedian(const Ints& from, Ints& to, int w, int h, int arm) {
  for (int i = 0; i < w * h; ++i) {
    if (i % w < 2 || i % w >= w - 2 || i / w < 2 || i / w >= h - 2) continue;
    Ints cross = {from[i]};
    for (int k = 1; k <= arm; ++k)
      for (const int d : {-k, k, -k * w, k * w}) cross.push_back(from[i + d]);
    std::sort(cross.begin(), cross.end());
    to[i] = cross[cross.size() / 2];
  }
}

double meanOf(const Ints& values) {
  const double sum = std::accumulate(values.begin(), values.end(), 0.0);
  return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

struct Estimate {
  float minLevel, meanLevel, noiseSigma;
};

Estimate referenceEstimate(const std::vector<float>& luma, int w, int h, int maskSize) {
  Ints plane, deviation;
  for (const float v : luma)
    plane.push_back(
        static_cast<int>(std::nearbyint(std::clamp(v * 32767.0f, -32768.0f, 32767.0f))));
  const int darkest = plane.empty() ? 0 : *std::min_element(plane.begin(), plane.end());
  Ints smooth = plane;
  crossMedian(plane, smooth, w, h, maskSize / 2);
  const float mean = static_cast<float>(meanOf(smooth) / 32767.0);
  for (std::size_t i = 0; i < plane.size(); ++i)
    deviation.push_back(std::abs(std::clamp(smooth[i] - plane[i], -32768, 32767)));
  crossMedian(deviation, plane, w, h, 2);

  const float range = std::min(static_cast<float>(2.0 * meanOf(plane)), 32767.0f);
  const float dark = static_cast<float>(darkest);
  const int low = static_cast<int>(dark + (mean * 32767.0f - dark) * 0.1f);
  const int high = static_cast<int>(mean * 32767.0f);
  const int width = std::max(1, static_cast<int>(range / 110.0f));
  Ints counted;
  for (std::size_t i = 0; i < plane.size(); ++i)
    if (smooth[i] >= low && smooth[i] <= high && plane[i] >= 0 && plane[i] < 32766)
      counted.push_back(std::min(108, plane[i] / width));
  std::sort(counted.begin(), counted.end());
  // The bin in which more than half have been counted; behind the last one without any.
  const int edge = counted.empty() ? 32766 : counted[counted.size() / 2] * width;
  const float middle = static_cast<float>(edge) + static_cast<float>(width) * 0.5f;
  return {dark / 32767.0f, mean, middle / 32767.0f * 1.54f};
}

// Columns x0 on and rows y0 on of the picture.
std::vector<float> referenceLuma(Picture& p, int x0, int y0, int width, int height) {
  std::vector<float> luma;
  const float scale = test::deep(p.format) ? 1.0f / 32768.0f : 1.0f / 256.0f;
  for (int i = 0; i < width * height; ++i) {
    float rgb[3];
    for (int c = 0; c < 3; ++c)
      rgb[c] = static_cast<float>(p.get(x0 + i % width, y0 + i / width, c)) * scale + 0.49f * scale;
    luma.push_back((0.21327f * rgb[0] + 0.41869f * rgb[1]) + 0.081312f * rgb[2]);
  }
  return luma;
}

// Each product is rounded once.
NoiseProfile profileOf(float level, float sigma) {
  const double noise = double{1.4f} * double{sigma};
  return {level, static_cast<float>(noise), 0.0f, level, static_cast<float>(0.35f * noise), 0.0f};
}

NoiseProfile reference(Picture& p, int x0, int y0, int width, int height) {
  const Estimate e = referenceEstimate(referenceLuma(p, x0, y0, width, height), width, height, 5);
  return profileOf(e.meanLevel, e.noiseSigma);
}

// Both reserved fields are 0.
void expectSame(const NoiseProfile& wanted, const NoiseProfile& got) {
  using Fields = std::array<float, 6>;
  EXPECT_EQ(std::bit_cast<Fields>(wanted), std::bit_cast<Fields>(got));
}

TEST(EstNoise, everyFormatAndTinySizeAgainstThePixelByPixelReference) {
  for (const int format : test::kFormats) {
    for (const auto& [w, h] : std::vector<std::array<int, 2>>{
             {203, 151}, {128, 5}, {9, 90}, {8, 8}, {7, 6}, {4, 4}, {4, 400}, {3, 50}, {1, 1}}) {
      SCOPED_TRACE(::testing::Message() << "format " << format << ", " << w << "x" << h);
      Picture p(format, w, h, 5);
      p.randomise(1, test::deep(format) ? 32768 : 255);
      paintScene(p, test::deep(format) ? 900.0 : 12.0, 3);
      const auto before = p.bytes;
      const NoiseProfile wanted = reference(p, 0, 0, w & ~3, h & ~3);
      vx::test::onEveryVariant([&] { expectSame(wanted, estimate(p)); });
      EXPECT_TRUE(p.bytes == before);

      // The same picture stored from the bottom up.
      Picture flipped = p;
      flipped.forEachSample([&](int x, int y, int c) { return p.get(x, h - 1 - y, c); });
      NoiseProfile profile = kUnset;
      const auto* top = flipped.bytes.data() + static_cast<std::ptrdiff_t>(flipped.step) * (h - 1);
      EXPECT_EQ(vxDenoiseEstNoise(top, format, -flipped.step, w, h, &profile), 1);
      expectSame(wanted, profile);
    }
  }
}

TEST(EstNoise, cropsAtTheEdgesOfTheLimit) {
  constexpr int kMost = std::numeric_limits<int>::max();
  for (const auto& [size, start, cropped] : {std::array{3, 0, 0},
                                             {2047, 0, 2044},
                                             {2048, 0, 2048},
                                             {2051, 0, 2048},
                                             {2052, 2, 2048},
                                             {kMost, 1073740798, 2048}}) {
    EXPECT_EQ(cropAxis(size).start, start) << size;
    EXPECT_EQ(cropAxis(size).size, cropped) << size;
  }
  // The noise lies where only the right crop looks.
  for (const int w : {2047, 2048, 2052, 2061}) {
    Picture p(6, w, 23);
    paintScene(p, 700.0, 5);
    const CropAxis crop = cropAxis(w);
    for (int y = 0; y < p.height; ++y)
      for (int x = 0; x < w; ++x)
        if (x < crop.start || x >= crop.start + crop.size || y >= 20) p.set(x, y, 1, 32768);
    expectSame(reference(p, crop.start, 0, crop.size, 20), estimate(p));
  }
  Picture tall(1, 21, 2053);
  paintScene(tall, 9.0, 6);
  expectSame(reference(tall, 0, 2, 20, 2048), estimate(tall));
}

// A flat grey lies at both of its thresholds. The frame of two pixels holds the luma, which widens
// the bins: a picture that is all frame reaches their greatest width.
TEST(EstNoise, flatPicturesHaveTheLeastNoise) {
  for (const int format : test::kFormats)
    for (int step = 0; step <= 16; ++step)
      for (const int size : {4, 40}) {
        Picture p(format, size, size);
        const int level = (test::deep(format) ? 32768 : 255) * step / 16;
        p.forEachSample([&](int, int, int) { return level; });
        expectSame(reference(p, 0, 0, size, size), estimate(p));
        EXPECT_TRUE(size == 4 || estimate(p).lumaNoise < 0.003f) << format << ", " << level;
      }
}

constexpr float kNothingCounted = (32766.0f + 0.5f) / 32767.0f * 1.54f;

TEST(EstNoise, whatCannotBeReadCountsAsBlack) {
  Picture p(1, 60, 44);
  paintScene(p, 9.0, 1);
  const auto expect = [&](const void* pixels, int format, int w, int h, float sigma) {
    NoiseProfile profile = kUnset;
    EXPECT_EQ(vxDenoiseEstNoise(pixels, format, p.step, w, h, &profile), 1);
    expectSame(profileOf(0.0f, sigma), profile);
  };
  constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
  const float least = 0.5f / 32767.0f * 1.54f;
  for (const int format : {0, 2, 4, 7, 8, 9, -1, kMost})
    expect(p.bytes.data(), format, 60, 44, least);
  expect(nullptr, 1, 60, 44, least);
  EXPECT_EQ(vxDenoiseEstNoise(p.bytes.data(), 1, p.step, 60, 44, nullptr), 1);
  for (const auto& [w, h] : {std::array{0, 9}, {9, -4}, {3, 9}, {kLeast, kLeast}})
    expect(p.bytes.data(), 1, w, h, kNothingCounted);
}

TEST(NoiseEstimator, bothMasksAndThePlaneComesBack) {
  NoiseEstimator estimator;  // one for both: the second run reuses its images
  Picture p(3, 120, 75);
  paintScene(p, 500.0, 9);
  const auto luma = referenceLuma(p, 0, 0, 120, 75);
  test::Plane plane(120, 75), before(120, 75);
  test::paint(before, [&](int x, int y) { return luma[120 * y + x]; });
  for (const int mask : {3, 5}) {
    test::copyImage(before, plane);
    estimator.maskSize = mask;
    const Estimate wanted = referenceEstimate(luma, 120, 75, mask);
    EXPECT_EQ(estimator.estimate(plane), wanted.noiseSigma);
    EXPECT_EQ(estimator.minLevel, wanted.minLevel);
    EXPECT_EQ(estimator.meanLevel, wanted.meanLevel);
    EXPECT_LT(test::largestDifference(before, plane), 2e-7f);
  }
  test::copyImage(before, plane);
  estimator.maskSize = 4;
  EXPECT_EQ(estimator.estimate(plane), -1.0f);
  EXPECT_TRUE(test::sameBits(before, plane));
}

// On a flat field under Gaussian noise the medians of medians see 0.8934 of the sigma of the luma
// 0.299 R + 0.587 G + 0.114 B (the limit over 9 million pixels, computed in double apart from this
// code). The picture's ramps and edges, the bins and the rounding to bytes move that by little.
TEST(EstNoise, gaussianNoiseIsRecoveredInProportion) {
  constexpr double kShareSeen = 0.8934;
  for (const double sigma : {2.5, 5.0, 10.0, 25.0, 40.0}) {
    Picture p(1, 640, 480);
    paintScene(p, sigma, 77);
    const double luma = sigma * std::sqrt(0.299 * 0.299 + 0.587 * 0.587 + 0.114 * 0.114) / 256.0;
    const double seen = static_cast<double>(estimate(p).lumaNoise) / luma;
    EXPECT_NEAR(seen / kShareSeen, 1.0, 0.03) << "sigma " << sigma;
  }
}

}  // namespace
