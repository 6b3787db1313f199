#pragma once

#include "vxicore26.h"

namespace vx {

/// The settings of one vxAdjustRgb call as the host gave them, documented in vxicore26.h. The
/// initial values are the neutral set, with which no stage changes the picture.
struct AdjustSettings {
  int previewScale = 1;
  float lumaEqAmount = 0.0f;
  float lumaEqRadius = 0.0f;
  float lumaEqPeakGain = 0.0f;
  float lumaGamma = 0.0f;
  float lumaEqTopCut = 0.0f;
  float lumaEqFloor = 0.0f;
  float lumaDetailRange = 0.0f;
  float lumaDetailRadius = 0.0f;
  float lumaDetailGamma = 1.0f;
  float lumaDetailGain = 1.0f;
  float sharpenAmount = 1.0f;
  float satEqAmount = 0.0f;
  float satEqRadius = 0.0f;
  float satContrast = 1.0f;
  float satGamma = 1.0f;
  float hueShift = 0.0f;
  float denoiseStrength = 0.0f;
  const NoiseProfile* noiseProfile = nullptr;
  float grainRestore = 0.0f;
  float unblockStrength = 0.0f;
  int denoiseMode = 0;
};

}  // namespace vx
