// The settings of vxYUVEdgeRGB: sharpness of edges and repair of chroma.
#pragma once

#include "hosts/settings/setting.h"

namespace vx::settings {

/// The neutral set: with it the library changes nothing but rounding.
struct EdgeValues {
  float baseGain = 1;
  float rangeFloor = 0.01F;
  float blurX = 0;
  float blurY = 0;
  float adaptiveGain = 0;
  float chromaBlurX = 0;
  float chromaBlurY = 0;
  float chromaShiftX = 0;
  float chromaShiftY = 0;
  float alignX = 0;
  float alignY = 0;
  float alignThreshold = 0;
};

std::span<const Field<EdgeValues>> edgeSettings();

}  // namespace vx::settings
