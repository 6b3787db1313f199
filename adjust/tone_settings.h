#pragma once

#include "adjust/adjust_settings.h"
#include "vxenhlib/tone/adjust_tone_stage.h"

namespace vx {

/// Fills the fields of the tone stage that the settings decide, and the fixed ones of its
/// saturation part; what is not named here keeps the value of the stage's construction.
///
/// The radii and the width of the sharpening blur belong to the full-size picture and shrink with
/// 1 / previewScale, the radii to not less than 6 pixels. All in single precision.
void deriveToneSettings(const AdjustSettings& settings, AdjustToneStage& tone);

}  // namespace vx
