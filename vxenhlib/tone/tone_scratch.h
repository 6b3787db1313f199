#pragma once

#include "frame/bands.h"
#include "vxenhlib/tone/lightness_pass.h"
#include "vxenhlib/tone/saturation_pass.h"
#include "vxenhlib/tone/unsharp_mask.h"

namespace vx {

/// What AdjustToneStage needs besides the image: grids, the plane of the base layer, bands. Kept
/// from one tile to the next by whoever has several, since memory that comes fresh from the system
/// costs more than most steps of the stage. Belongs to one call at a time.
struct ToneScratch {
  LightnessPass lightness;
  SaturationPass saturation;
  UnsharpRows unsharp;
  PerSlot<float> pixels;  // of a band
};

}  // namespace vx
