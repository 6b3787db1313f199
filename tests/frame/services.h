#pragma once

// The exported functions on pictures, with settings that leave no stage out, and calls of all of
// them for tests of what no circumstance of a call may change.

#include "tests/adjust/host.h"

namespace vx::test {

inline constexpr AdjustSettings kTone = {.lumaEqAmount = 0.3f,
                                         .lumaEqRadius = 40.0f,
                                         .lumaEqPeakGain = 0.3f,
                                         .lumaGamma = 0.4f,
                                         .lumaEqTopCut = 0.04f,
                                         .lumaEqFloor = 0.03f,
                                         .lumaDetailRange = 0.1f,
                                         .lumaDetailRadius = 12.0f,
                                         .lumaDetailGamma = 0.8f,
                                         .lumaDetailGain = 1.6f,
                                         .sharpenAmount = 1.7f,
                                         .satEqAmount = 0.2f,
                                         .satEqRadius = 50.0f,
                                         .satContrast = 1.2f,
                                         .satGamma = 0.9f,
                                         .hueShift = 0.07f};

/// The noise filter of either mode, with grain; block artifacts in mode 0; then `settings`.
inline AdjustSettings denoising(int mode, AdjustSettings settings = {}) {
  settings.denoiseStrength = 0.6f;
  settings.noiseProfile = &kNoisy;
  settings.grainRestore = 0.2f;
  settings.denoiseMode = mode;
  return settings;
}

inline int unblock(Picture& p, int quality, int mode, int step) {
  const int row = deep(p.format) ? p.step / 2 : p.step;
  return vxUnblock(deep(p.format), p.bytes.data(), 3, row, p.width, p.height, quality, mode, step,
                   0);
}

inline int edges(Picture& p) {
  const int row = deep(p.format) ? p.step / 2 : p.step;
  return vxYUVEdgeRGB(deep(p.format), p.bytes.data(), row, p.width, p.height, 1.5, 0.02, 1.4, 0.9,
                      2.0, 1.1, 0.7, -1, 2, 2.5, 1.6, 0.03, 0);
}

using Bytes = std::vector<std::uint8_t>;

struct Service {
  std::string name;
  /// Makes the call on a picture of its own and returns what it gave: the bytes of the picture, the
  /// result, or how it ended. Any number of threads may be in it.
  std::function<Bytes()> call;
  /// Float sums of a plane decide: the generic bodies add in another order than all others.
  bool sums = false;
};

const std::vector<Service>& services();

/// What the services give one by one.
std::vector<Bytes> callAll();

}  // namespace vx::test
