#include "hosts/auto/noise_features.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace vx::automatic {
namespace {

// Interpolated between neighbours. Reorders the values.
double percentile(std::vector<float>& values, double share) {
  const double place = share * static_cast<double>(values.size() - 1);
  const auto rank = static_cast<std::ptrdiff_t>(place);
  const auto at = values.begin() + rank;
  std::nth_element(values.begin(), at, values.end());
  const auto lower = static_cast<double>(*at);
  if (at + 1 == values.end()) return lower;
  const auto upper = static_cast<double>(*std::min_element(at + 1, values.end()));
  return lower + (place - static_cast<double>(rank)) * (upper - lower);
}

double rms(const std::vector<float>& values) {
  double sum = 0;
  for (const float value : values) sum += static_cast<double>(value) * static_cast<double>(value);
  return std::sqrt(sum / static_cast<double>(values.size()));
}

// Of blocks that are not dead.
double coherenceBelow(double most, const BlockStatistics& statistics) {
  double sum = 0;
  int count = 0;
  for (std::size_t i = 0; i < statistics.plane8.size(); ++i) {
    const float plane = statistics.plane8[i];
    if (plane < kDeadBelow || static_cast<double>(plane) > most) continue;
    sum += static_cast<double>(statistics.coherence8[i]);
    ++count;
  }
  return count > 0 ? sum / count : 0;
}

double meanStep(const VxAutoEvidence& evidence) {
  double sum = 0;
  for (const int step : evidence.lumaSteps) sum += std::clamp(step, 0, 255);
  return sum / 5;
}

}  // namespace

NoiseFeatures noiseFeatures(const BlockStatistics& statistics, const VxAutoEvidence& evidence) {
  constexpr std::size_t kFewest = 8;
  // A picture without colour cannot tell its noise by it. It counts as one whose colour is as noisy
  // as white noise of the same fine luma would make it, and shows nothing else.
  constexpr double kGrey = 0.05, kFineColour10 = 1.9, kFineColour = 2.2;
  std::vector<float> plane, fine;
  for (std::size_t i = 0; i < statistics.plane8.size(); ++i) {
    if (statistics.plane8[i] < kDeadBelow) continue;
    plane.push_back(statistics.plane8[i]);
    fine.push_back(statistics.fine8[i]);
  }
  NoiseFeatures features{};
  features.dead =
      1 - static_cast<double>(plane.size()) / static_cast<double>(statistics.plane8.size());
  if (plane.size() < kFewest) {
    plane = statistics.plane8;
    fine = statistics.fine8;
  }
  features.plane1 = percentile(plane, 0.01);
  features.plane5 = percentile(plane, 0.05);
  features.plane25 = percentile(plane, 0.25);
  features.fine1 = percentile(fine, 0.01);
  features.fine25 = percentile(fine, 0.25);
  std::vector<float> wide = statistics.plane16, colour = statistics.fineColour8;
  features.wide25 = percentile(wide, 0.25);
  features.colour10 = percentile(colour, 0.1);
  features.colour = rms(colour);
  features.grey = features.colour < kGrey;
  if (features.grey) {
    features.colour10 = kFineColour10 * features.fine1;
    features.colour = kFineColour * features.fine1;
  }
  features.steps = meanStep(evidence);
  features.coherence = coherenceBelow(features.plane25, statistics);
  return features;
}

}  // namespace vx::automatic
