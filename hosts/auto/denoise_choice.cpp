// The settings of the noise filter for a given noise.
#include <algorithm>
#include <cmath>

#include "hosts/auto/auto_noise.h"

namespace {

// The filter measures luma with white at 1 / 1.402.
constexpr float kLevels = 255 * 1.402F;
// Cells and blocks grow with noise / lumaLevel; the smallest ones are the best for nearly all
// pictures, in the fast mode by 0.2 to 1.5 dB.
constexpr float kFinest = 1e6F;
// Noise and strength act as a product but for the thresholds of the matching: 1.5 with a small
// noise beats 0.7 with a larger one on the noise of cameras by 0.1 to 0.7 dB and costs at most 0.25
// dB on white noise.
constexpr float kNonLocalStrength = 1.5F, kFastStrength = 0.5F;
constexpr float kFastRange = 2.5F;  // the range of the fast filter is this times noise and strength

// Noise of the colour for a unit of noise of the luma. The filter sees white noise of both at half
// size, where a quarter of it is the best (0.1 to 0.3 dB above one half); in correlated noise a
// half.
float chromaShare(float correlation) {
  constexpr float kWhite = 1.4F, kCorrelated = 2, kUnknown = 0.4F;
  if (!(correlation > 0)) return kUnknown;
  const float t = (correlation - kWhite) / (kCorrelated - kWhite);
  return 0.25F + 0.25F * std::clamp(t, 0.0F, 1.0F);
}

float limited(double value, double most) {
  return value > 0 ? static_cast<float>(std::min(value, most)) : 0;  // NaN gives 0
}

}  // namespace

VxAutoNoise vxAutoAssumeNoise(double sigma) {
  // The best for Gaussian noise of a known sigma, white and of cameras.
  constexpr float kNonLocal = 0.9F, kFast = 2.8F;
  VxAutoNoise noise{};
  noise.sigma = limited(sigma, 100);
  noise.seen = VX_AUTO_ASSUMED;
  noise.nonLocal = kNonLocal * noise.sigma;
  noise.fast = kFast * noise.sigma;
  return noise;
}

VxAutoNoise vxAutoReducedNoise(const VxAutoNoise* noise, int scale) {
  if (noise == nullptr) return {};
  VxAutoNoise reduced = *noise;
  const auto factor = static_cast<float>(std::max(scale, 1));
  reduced.sigma /= factor;
  reduced.nonLocal /= factor;
  reduced.fast /= factor;
  return reduced;
}

VxAutoDenoise vxAutoChooseDenoise(const VxAutoNoise* noise, int mode, double amount) {
  VxAutoDenoise choice{};
  choice.mode = mode == VX_AUTO_FAST ? VX_AUTO_FAST : VX_AUTO_NON_LOCAL;
  const bool fast = choice.mode == VX_AUTO_FAST;
  const float relative = limited(amount, 4);
  const float level = noise == nullptr
                          ? 0
                          : limited(static_cast<double>(fast ? noise->fast : noise->nonLocal), 300);
  if (!(level > 0 && relative > 0)) return choice;
  const float strength = fast ? kFastStrength : kNonLocalStrength;
  choice.strength = strength * relative;
  choice.profile.lumaLevel = choice.profile.chromaLevel = kFinest;
  choice.profile.lumaNoise = level / (strength * (fast ? kFastRange : 1) * kLevels);
  choice.profile.chromaNoise = chromaShare(noise->correlation) * choice.profile.lumaNoise;
  return choice;
}
