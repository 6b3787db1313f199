// The settings of vxAdjustRgb: blocks, noise, tone, detail, sharpness and colour.
#pragma once

#include "hosts/settings/setting.h"

namespace vx::settings {

/// The denoiseMode of vxAdjustRgb.
enum class NoiseFilter { kFast, kNonLocal };

/// The neutral set: with it the library changes nothing but float rounding.
struct AdjustValues {
  float automatic = 0;
  float lumaEqAmount = 0;
  float lumaEqRadius = 0;
  float lumaEqPeakGain = 0;
  float lumaEqTopCut = 0;
  float lumaEqFloor = 0;
  float lumaGamma = 0;
  float lumaDetailRange = 0;
  float lumaDetailRadius = 0;
  float lumaDetailGain = 1;
  float lumaDetailGamma = 1;
  float sharpenAmount = 1;
  float satEqAmount = 0;
  float satEqRadius = 0;
  float satContrast = 1;
  float satGamma = 1;
  float hueShift = 0;
  float denoise = 0;
  float noise = kAuto;
  float denoiseMode = kAuto;
  float grain = 0;
  float unblock = 0;
};

std::span<const Field<AdjustValues>> adjustSettings();

}  // namespace vx::settings
