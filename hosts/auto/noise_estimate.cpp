#include <algorithm>
#include <cmath>
#include <exception>

#include "hosts/auto/auto_noise.h"
#include "hosts/auto/block_statistics.h"
#include "hosts/auto/denoise_networks.h"
#include "hosts/auto/noise_features.h"

namespace vx::automatic {
namespace {

constexpr int kLeastAxis = 32;

// How much likelier noise is by what the camera was set to, as log odds: an exposure at ISO 3200
// is noisy, whatever it shows, one at ISO 100 is not. Nothing where the picture is much smaller
// than it was taken, as reduction takes noise away.
double oddsOfTheExposure(const VxAutoEvidence& evidence, const VxAutoPicture& picture) {
  constexpr double kNeutralIso = 400, kPerDoubling = 0.8, kLongExposure = 1;  // seconds
  const double pixels = 1e-6 * picture.width * picture.height;
  if (evidence.fullMegapixels > 3 * pixels) return 0;
  double odds = 0;
  if (evidence.isoSpeed > 0)
    odds = std::clamp(kPerDoubling * std::log2(evidence.isoSpeed / kNeutralIso), -1.6, 2.4);
  if (evidence.exposureTime > kLongExposure) odds += 0.6;
  return odds;
}

struct Limits {
  // Amounts in relation to plane1. Below `least` there is next to nothing to gain, and the advice
  // contradicts itself; that is fine texture.
  double least;
  double most;  // in levels of 255
};
constexpr Limits kNonLocalLimits = {0.15, 60}, kFastLimits = {1, 150};

float amount(const Network& network, const NoiseFeatures& features, double odds, Limits limits) {
  // A loss weighs more than a gain. The weaker the noise, the less there is to gain, and the more
  // it looks like what JPEG leaves of soft texture.
  constexpr double kSure = 1, kSurerPerNeper = 3;
  const double asked = kSure - kSurerPerNeper * std::min(0.0, std::log(features.plane1));
  const Advice advice = advise(network, features);
  if (!(advice.sure + odds > asked && advice.amount > limits.least * features.plane1)) return 0;
  return static_cast<float>(std::min(advice.amount, limits.most));
}

// Whether this cannot be noise: coarser than any camera's, stronger than what can be seen, or lines
// that run one way.
bool impossible(const NoiseFeatures& features, double correlation) {
  constexpr double kMostCorrelated = 12, kMostFine = 40, kWhite = 1.6, kMostCorrelatedNoise = 25;
  constexpr double kOneWay = 0.85;  // training items that gain a decibel have at most 0.8
  return correlation > kMostCorrelated || features.fine1 > kMostFine ||
         (correlation > kWhite && features.plane1 > kMostCorrelatedNoise) ||
         features.coherence > kOneWay;
}

VxAutoNoise estimateNoise(const VxAutoPicture& picture, const VxAutoEvidence& evidence) {
  constexpr double kDrawing = 0.6;  // share of dead blocks
  VxAutoNoise noise{};
  const BlockStatistics statistics = blockStatistics(picture);
  if (statistics.plane8.empty() || statistics.plane16.empty()) return noise;
  if (statistics.dead > kDrawing) {
    noise.seen = VX_AUTO_DRAWING;
    return noise;
  }
  noise.seen = VX_AUTO_CLEAN;
  const NoiseFeatures features = noiseFeatures(statistics, evidence);
  const double correlation = features.plane1 / std::max(features.fine1, 0.15);
  // The lowest hundredth lies below the sigma, the more so where noise reaches over a block.
  const double correction = 1.22 + 0.22 * (std::clamp(correlation, 1.2, 5.0) - 1.2);
  noise.sigma = static_cast<float>(correction * features.plane1);
  noise.correlation = static_cast<float>(correlation);
  if (impossible(features, correlation)) return noise;
  const double odds = oddsOfTheExposure(evidence, picture);
  noise.nonLocal = amount(kNonLocalNetwork, features, odds, kNonLocalLimits);
  noise.fast = amount(kFastNetwork, features, odds, kFastLimits);
  // Much of what the fast filter gains on pictures with colour it gains there. Half the amount is
  // best on grey ones, and all of it loses up to 2 dB on fine texture.
  constexpr float kGreyShare = 0.5F;
  if (features.grey) noise.fast *= kGreyShare;
  if (noise.nonLocal > 0 || noise.fast > 0) noise.seen = VX_AUTO_NOISY;
  return noise;
}

}  // namespace
}  // namespace vx::automatic

int vxAutoMeasureNoise(const VxAutoPicture* picture, const VxAutoEvidence* evidence,
                       VxAutoNoise* noise) try {
  using namespace vx::automatic;
  if (noise == nullptr) return 1;
  *noise = {};
  if (picture == nullptr || std::min(picture->width, picture->height) < kLeastAxis) return 1;
  *noise = estimateNoise(*picture, evidence != nullptr ? *evidence : VxAutoEvidence{});
  return 1;
} catch (const std::exception&) {  // no memory
  return 0;
}
