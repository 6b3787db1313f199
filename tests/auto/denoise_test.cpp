#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "tests/auto/scenes.h"

namespace vx::test {
namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();

std::string described(const VxAutoNoise& noise, const VxAutoDenoise& choice) {
  char text[100];
  vxAutoDescribeDenoise(&noise, &choice, text, sizeof text);
  return text;
}

TEST(AutoDenoise, RelatesTheAmountToTheAutomatic) {
  const VxAutoNoise noise = vxAutoAssumeNoise(6);
  for (const int mode : {VX_AUTO_FAST, VX_AUTO_NON_LOCAL, VX_AUTO_ANY_MODE}) {
    const VxAutoDenoise one = vxAutoChooseDenoise(&noise, mode, 1);
    EXPECT_EQ(one.mode, mode == VX_AUTO_FAST ? 0 : 1);
    EXPECT_GT(one.strength, 0);
    for (const double amount : {0.5, 2.0, 4.0}) {
      const VxAutoDenoise other = vxAutoChooseDenoise(&noise, mode, amount);
      EXPECT_FLOAT_EQ(other.strength, one.strength * static_cast<float>(amount));
      EXPECT_EQ(other.profile.lumaNoise, one.profile.lumaNoise);
    }
    EXPECT_FLOAT_EQ(vxAutoChooseDenoise(&noise, mode, 1e9).strength, 4 * one.strength);
    for (const double amount : {0.0, -1.0, kNan})
      EXPECT_EQ(vxAutoChooseDenoise(&noise, mode, amount).strength, 0);
    const VxAutoNoise none = vxAutoAssumeNoise(0);
    EXPECT_EQ(vxAutoChooseDenoise(&none, mode, 2).strength, 0);
    EXPECT_EQ(vxAutoChooseDenoise(nullptr, mode, 1).strength, 0);
  }
}

TEST(AutoDenoise, TakesAGivenSigma) {
  EXPECT_GT(vxAutoAssumeNoise(12).nonLocal, 2 * vxAutoAssumeNoise(5).nonLocal);
  EXPECT_EQ(vxAutoAssumeNoise(1e300).sigma, 100);
  for (const double sigma : {-1.0, kNan}) {
    EXPECT_EQ(vxAutoAssumeNoise(sigma).nonLocal, 0);
    EXPECT_EQ(vxAutoAssumeNoise(sigma).fast, 0);
  }
}

TEST(AutoDenoise, ReducesTheNoiseWithThePreview) {
  const VxAutoNoise noise = vxAutoAssumeNoise(8);
  const VxAutoNoise reduced = vxAutoReducedNoise(&noise, 4);
  EXPECT_EQ(reduced.sigma, 2);
  EXPECT_EQ(reduced.nonLocal, noise.nonLocal / 4);
  EXPECT_EQ(reduced.fast, noise.fast / 4);
  EXPECT_EQ(vxAutoReducedNoise(&noise, 0).sigma, 8);
  EXPECT_EQ(vxAutoReducedNoise(nullptr, 2).seen, VX_AUTO_NOTHING_SEEN);
}

TEST(AutoDenoise, TellsWhatItSawAndChose) {
  VxAutoNoise noise{VX_AUTO_NOISY, 4.12F, 3, 5, 12};
  EXPECT_EQ(described(noise, vxAutoChooseDenoise(&noise, VX_AUTO_NON_LOCAL, 1)),
            "noise 4.1, correlated; non-local, strength 1.50");
  noise = {VX_AUTO_CLEAN, 1, 1, 0, 0};
  EXPECT_EQ(described(noise, vxAutoChooseDenoise(&noise, VX_AUTO_FAST, 1)), "no noise seen; off");
  char text[5] = "wxyz";
  EXPECT_EQ(vxAutoDescribeDenoise(&noise, nullptr, text, 3), std::string("no noise seen").size());
  EXPECT_EQ(std::string(text), "no");
  EXPECT_EQ(text[3], 'z');
  EXPECT_EQ(vxAutoDescribeDenoise(nullptr, nullptr, nullptr, 0), 0U);
}

double psnr(const Scene& clean, const Bytes& picture) {
  double sum = 0;
  for (std::size_t i = 0; i < clean.samples.size(); ++i)
    sum += std::pow(static_cast<double>(clean.samples[i]) - picture.samples[i], 2);
  return 10 * std::log10(65025.0 * static_cast<double>(clean.samples.size()) / sum);
}

TEST(AutoDenoise, BringsNoisyPicturesNearerToTheCleanOnes) {
  const Scene clean = photograph(256, 192);
  for (const int passes : {0, 1, 2}) {
    for (const double sigma : {12.0, 20.0}) {
      const Bytes noisy(withNoise(clean, sigma, passes), 255);
      const VxAutoNoise noise = noiseOf(noisy);
      for (const int mode : {VX_AUTO_FAST, VX_AUTO_NON_LOCAL}) {
        const VxAutoDenoise use = vxAutoChooseDenoise(&noise, mode, 1);
        Bytes result = noisy;
        vxAdjustRgb(result.samples.data(), 1, 3 * 256, 256, 192, 1, nullptr, nullptr, nullptr,
                    nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 1, 1, 0, use.strength,
                    &use.profile, 0, 0, use.mode);
        const double gain = psnr(clean, result) - psnr(clean, noisy);
        EXPECT_GT(gain, mode == VX_AUTO_FAST ? 1.0 : 2.0)
            << "sigma " << sigma << ", smoothed " << passes << ", mode " << mode;
      }
    }
  }
}

}  // namespace
}  // namespace vx::test
