#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "tests/auto/scenes.h"

namespace vx::test {
namespace {

TEST(AutoNoise, FindsTheSigmaOfWhiteNoise) {
  for (const double sigma : {5.0, 8.0, 20.0}) {
    for (const Scene& scene : {flat(320, 240, 120), photograph(320, 240)}) {
      const VxAutoNoise noise = noiseOf(withNoise(scene, sigma));
      EXPECT_EQ(noise.seen, VX_AUTO_NOISY) << sigma;
      EXPECT_NEAR(noise.sigma / (kLumaOfRgb * sigma), 1, 0.15) << sigma;
      EXPECT_LT(noise.correlation, 1.5) << sigma;
      EXPECT_GT(noise.fast, 0) << sigma;
    }
  }
}

TEST(AutoNoise, KnowsCorrelatedNoise) {
  const Scene scene = withNoise(photograph(320, 240), 12, 2);
  const VxAutoNoise noise = noiseOf(scene);
  EXPECT_EQ(noise.seen, VX_AUTO_NOISY);
  EXPECT_GT(noise.correlation, 2);
  // Two smoothings leave 0.27 of the sigma.
  EXPECT_NEAR(noise.sigma / (kLumaOfRgb * 12 * 0.2734), 1, 0.2);
  EXPECT_GT(noise.nonLocal, 0);
}

TEST(AutoNoise, DoesNotCountClippedPlaces) {
  const Scene scene = withNoise(photograph(320, 240), 6);
  Scene clipped = scene;
  for (int y = 0; y < 240; ++y)
    for (int x = 0; x < 320; ++x)
      if ((x / 40 + y / 40) % 2 != 0)
        for (int c = 0; c < 3; ++c) clipped.at(x, y, c) = x % 80 < 40 ? 0 : 255;
  EXPECT_NEAR(noiseOf(clipped).sigma / noiseOf(scene).sigma, 1, 0.1);
  EXPECT_EQ(noiseOf(clipped).seen, VX_AUTO_NOISY);
}

TEST(AutoNoise, ReadsEveryLayoutAlike) {
  const Scene scene = withNoise(photograph(203, 97), 7);
  const VxAutoNoise bytes = noiseOf(Bytes(scene, 255));
  for (const int white : {32768, 65535}) {
    const VxAutoNoise words = noiseOf(Words(scene, white));
    EXPECT_NEAR(words.sigma / bytes.sigma, 1, 0.03) << white;
    EXPECT_NEAR(words.nonLocal / bytes.nonLocal, 1, 0.1) << white;
  }
  // Bottom up, the extra channel in front, as vxAdjustRgb takes it.
  const Bytes rgb(scene, 255);
  std::vector<std::uint8_t> argb(std::size_t{4} * 203 * 97, 255);
  for (std::size_t y = 0; y < 97; ++y)
    for (std::size_t i = 0; i < std::size_t{3} * 203; ++i)
      argb[4 * (203 * (96 - y) + i / 3) + 1 + i % 3] = rgb.samples[3 * 203 * y + i];
  const VxAutoPicture picture = vxAutoPicture(argb.data() + 4 * 203 * 96, 5, -4 * 203, 203, 97);
  VxAutoNoise noise{};
  vxAutoMeasureNoise(&picture, nullptr, &noise);
  EXPECT_EQ(noise.sigma, bytes.sigma);
  EXPECT_EQ(noise.nonLocal, bytes.nonLocal);
  // The one channel has the noise of a channel, not of the luma.
  const VxAutoNoise grey = noiseOf(Bytes(withNoise(flat(320, 240, 120), 7), 255, 1));
  EXPECT_NEAR(grey.sigma / 7, 1, 0.15);
  EXPECT_GT(grey.nonLocal, 0);
  EXPECT_GT(grey.fast, 0);
}

TEST(AutoNoise, IsOffWhereThereIsNone) {
  const Scene drawing = Scene::of(320, 240, [](int x, int y, int c) {
    return (x / 50 + y / 40) % 2 != 0 ? 255 : x % 50 == y % 40 ? 0 : 60 * c + 20;
  });
  EXPECT_EQ(noiseOf(drawing).seen, VX_AUTO_DRAWING);
  for (const Scene& clean : {photograph(320, 240), flat(320, 240, 120), flat(320, 240, 0),
                             flat(320, 240, 255), drawing}) {
    const VxAutoNoise noise = noiseOf(clean);
    EXPECT_EQ(noise.nonLocal, 0);
    EXPECT_EQ(noise.fast, 0);
  }
  // Grass or sand, to the last pixel: no place is flat.
  const VxAutoNoise texture = noiseOf(Scene::of(320, 240, [](int x, int y, int) {
    return 120 + (40 + 25 * std::sin(x / 19.0) + 10 * std::sin(y / 13.0)) *
                     std::sin(x * 0.9 + 2 * std::sin(y * 0.13)) * std::sin(y * 0.7 + x * 0.05);
  }));
  EXPECT_EQ(texture.nonLocal, 0);
  EXPECT_EQ(texture.fast, 0);
}

// The weakest noise that is filtered, in steps of a quarter of a level.
double weakestSeen(const VxAutoEvidence& evidence) {
  for (int step = 1; step < 40; ++step)
    if (noiseOf(Bytes(withNoise(photograph(192, 128), 0.25 * step), 255), evidence).nonLocal > 0)
      return 0.25 * step;
  return 10;
}

TEST(AutoNoise, BelievesTheExposureBesideThePixels) {
  const double alone = weakestSeen({});
  EXPECT_LT(weakestSeen({6400, 2, 0, {}}), alone);
  EXPECT_GT(weakestSeen({100, 0.01, 0, {}}), alone);
  EXPECT_EQ(weakestSeen({6400, 2, 12, {}}), alone) << "a picture that was reduced lost noise";
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(weakestSeen({nan, nan, nan, {}}), alone);
}

TEST(AutoNoise, AnswersForEverySize) {
  for (int w = 0; w < 70; w += w < 20 ? 1 : 7)
    for (int h = 0; h < 70; h += h < 20 ? 1 : 7) {
      const VxAutoNoise noise = noiseOf(withNoise(flat(w, h, 128), 10));
      if (std::min(w, h) < 32) {
        EXPECT_EQ(noise.seen, VX_AUTO_NOTHING_SEEN) << w << " x " << h;
      } else {
        EXPECT_EQ(noise.seen, VX_AUTO_NOISY) << w << " x " << h;
        EXPECT_NEAR(noise.sigma / (kLumaOfRgb * 10), 1, 0.35) << w << " x " << h;
      }
    }
  VxAutoNoise noise{VX_AUTO_NOISY, 1, 1, 1, 1};
  EXPECT_EQ(vxAutoMeasureNoise(nullptr, nullptr, &noise), 1);
  EXPECT_EQ(noise.seen, VX_AUTO_NOTHING_SEEN);
  EXPECT_EQ(noise.nonLocal, 0);
  const VxAutoPicture unknown = vxAutoPicture(&noise, 4, 12, 100, 100);
  vxAutoMeasureNoise(&unknown, nullptr, &noise);
  EXPECT_EQ(noise.seen, VX_AUTO_NOTHING_SEEN);
  EXPECT_EQ(vxAutoMeasureNoise(&unknown, nullptr, nullptr), 1);
}

}  // namespace
}  // namespace vx::test
