#include "hosts/auto/noise_estimate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <exception>

namespace vx::automatic {
namespace {

constexpr int kLeastAxis = 32;

float percentile(std::vector<float>& values, double share) {
  const auto rank =
      static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1) + 0.5);
  std::nth_element(values.begin(), values.begin() + rank, values.end());
  return values[static_cast<std::size_t>(rank)];
}

double clamp01(double value) { return std::clamp(value, 0.0, 1.0); }

// How a mode follows from what was seen; fitted, see the results in bench/.
struct Law {
  double gain;                   // of the fine deviation
  double textured, plain;        // exponents of the correlation
  double mostCorrelated;         // limit of the correlation
  double leastWhite, leastReal;  // below this it does no good: white noise, correlated noise
  double hidden;                 // share of the quantiser's steps that is hidden noise
};
constexpr Law kNonLocal = {0.73, 0.8, 1.7, 4.0, 2.35, 1.0, 0.24};
constexpr Law kFast = {2.8, 0.9, 1.2, 5.0, 7.4, 2.45, 0.20};

struct Seen {
  double fine;         // deviation from pixel to pixel in the flattest blocks
  double correlation;  // deviation within these blocks in relation to it
  double flatness;     // 0 to 1: the lower tail is sharp, that is, there are flat places
  double sureness;     // 0 to 1: it is correlated noise
  double steps;        // mean of the quantiser's first AC steps
};

double amount(const Law& law, const Seen& seen) {
  const double correlation = std::clamp(seen.correlation, 1.0, law.mostCorrelated);
  const double exponent = law.textured + (law.plain - law.textured) * seen.flatness;
  const double found = law.gain * seen.fine * std::pow(correlation, exponent);
  const double least = law.leastWhite + (law.leastReal - law.leastWhite) * seen.sureness;
  if (!(found > least)) return 0;
  return found + law.hidden * seen.steps * seen.sureness;
}

double meanStep(const VxAutoEvidence& evidence) {
  double sum = 0;
  for (const int step : evidence.lumaSteps) sum += std::clamp(step, 0, 255);
  return sum / 5;
}

}  // namespace

VxAutoNoise estimateNoise(BlockStatistics& statistics, const VxAutoEvidence& evidence) {
  constexpr float kDead = 0.35F;      // below it, a block has nothing but rounding
  constexpr double kDrawing = 0.25;   // share of dead blocks
  constexpr double kImpossible = 40;  // levels of 255
  VxAutoNoise noise{};
  std::vector<float>& plane8 = statistics.plane8;
  if (plane8.empty() || statistics.plane16.empty()) return noise;

  std::vector<float> fine, plane;
  for (std::size_t i = 0; i < plane8.size(); ++i) {
    if (plane8[i] < kDead) continue;
    plane.push_back(plane8[i]);
    fine.push_back(statistics.fine8[i]);
  }
  const double dead = 1 - static_cast<double>(plane.size()) / static_cast<double>(plane8.size());
  if (dead > kDrawing) {
    noise.seen = VX_AUTO_DRAWING;
    return noise;
  }
  noise.seen = VX_AUTO_CLEAN;
  const double lowest = percentile(plane, 0.01), low = percentile(plane, 0.05);
  const double wide = std::max(percentile(statistics.plane16, 0.25), kDead);
  Seen seen{};
  seen.fine = std::max(0.15, static_cast<double>(percentile(fine, 0.01)));
  seen.correlation = lowest / seen.fine;
  // The lowest hundredth lies below the sigma, the more so where noise reaches over a block.
  const double correction = 1.22 + 0.22 * (std::clamp(seen.correlation, 1.2, 5.0) - 1.2);
  noise.sigma = static_cast<float>(correction * lowest);
  noise.correlation = static_cast<float>(seen.correlation);
  if (seen.fine > kImpossible) return noise;
  seen.flatness = clamp01((lowest / low - 0.5) / 0.2);
  seen.sureness = clamp01((std::clamp(seen.correlation, 1.0, 5.0) - 1.6) / 0.6) *
                  clamp01((lowest / wide - 0.2) / 0.15) * seen.flatness;
  seen.steps = meanStep(evidence);
  noise.nonLocal = static_cast<float>(amount(kNonLocal, seen));
  noise.fast = static_cast<float>(amount(kFast, seen));
  if (noise.nonLocal > 0 || noise.fast > 0) noise.seen = VX_AUTO_NOISY;
  return noise;
}

}  // namespace vx::automatic

int vxAutoMeasureNoise(const VxAutoPicture* picture, const VxAutoEvidence* evidence,
                       VxAutoNoise* noise) try {
  using namespace vx::automatic;
  if (noise == nullptr) return 1;
  *noise = {};
  if (picture == nullptr || std::min(picture->width, picture->height) < kLeastAxis) return 1;
  BlockStatistics statistics = blockStatistics(*picture);
  *noise = estimateNoise(statistics, evidence != nullptr ? *evidence : VxAutoEvidence{});
  return 1;
} catch (const std::exception&) {  // no memory
  *noise = {};
  return 0;
}
