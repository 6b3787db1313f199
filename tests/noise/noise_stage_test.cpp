#include "adjust/noise_stage.h"

#include "tests/adjust/host.h"
#include "tests/support/picture.h"
#include "tests/support/test.h"

namespace {

using namespace vx;
using test::adjust;
using test::Picture;

constexpr NoiseProfile kProfile = {0.3f, 0.026f, 0.0f, 0.3f, 0.009f, 0.0f};

Picture noisyPicture(int format, int width, int height, double sigma) {
  Picture p(format, width, height);
  p.randomise(1, 255);
  test::paintScene(p, (test::deep(format) ? 128.0 : 1.0) * sigma, 11);
  return p;
}

// Sum of squared differences to the picture without noise.
double error(Picture& p) {
  Picture clean = noisyPicture(p.format, p.width, p.height, 0.0);
  double sum = 0.0;
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x)
      for (int c = 0; c < 3; ++c) sum += std::pow(p.get(x, y, c) - clean.get(x, y, c), 2.0);
  return sum;
}

struct NoiseModes : ::testing::TestWithParam<int> {
  // What the stage makes of the picture with a share of the grain.
  static Picture filtered(Picture p, float strength, float grain = 0.0f,
                          const NoiseProfile* profile = &kProfile) {
    EXPECT_EQ(adjust(p, {.denoiseStrength = strength,
                         .noiseProfile = profile,
                         .grainRestore = grain,
                         .denoiseMode = GetParam()}),
              1);
    return p;
  }
};

TEST_P(NoiseModes, noiseFallsAndAllGrainGivesThePictureBack) {
  for (const int format : {1, 6}) {
    Picture before = noisyPicture(format, 160, 120, 6.0);
    const double noise = error(before);
    Picture none = filtered(before, 1.0f), half = filtered(before, 1.0f, 0.5f);
    EXPECT_LT(error(none), 0.25 * noise) << format;
    EXPECT_LT(error(half), 0.5 * noise) << format;
    EXPECT_GT(error(half), 0.2 * noise) << format;
    // The limit itself adds nothing.
    EXPECT_TRUE(filtered(before, 1.0f, 0.01f).bytes == none.bytes) << format;
    EXPECT_LE(filtered(before, 1.0f, 1.0f).distance(before), test::deep(format) ? 2 : 1) << format;
  }
}

TEST_P(NoiseModes, thresholdAndMissingProfileLeaveThePicture) {
  const Picture before = noisyPicture(3, 80, 64, 6.0), plain = filtered(before, 0.0f);
  for (const float strength : {0.001f, std::nanf("")})
    EXPECT_TRUE(filtered(before, strength, 1.0f).bytes == plain.bytes);
  EXPECT_TRUE(filtered(before, 1.0f, 1.0f, nullptr).bytes == plain.bytes);
}

TEST_P(NoiseModes, picturesBelowTheSearchTileAndFlatOnesStay) {
  const auto expectStays = [](const Picture& p) {
    Picture plain = filtered(p, 0.0f);
    EXPECT_LE(filtered(p, 1.0f).distance(plain), 1)
        << p.width << "x" << p.height << ", " << int{p.bytes[0]};
  };
  for (const auto& [w, h] : {std::pair(2, 2), {30, 90}, {90, 30}})
    expectStays(noisyPicture(1, w, h, 6.0));
  for (const int level : {0, 128, 255}) {
    Picture p(1, 64, 48);
    p.forEachSample([&](int, int, int) { return level; });
    expectStays(p);
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, NoiseModes, ::testing::Values(0, 1),
                         [](const auto& mode) { return mode.param == 0 ? "fast" : "nonlocal"; });

}  // namespace
