#include "adjust/adjust_core.h"

#include "adjust/noise_stage.h"
#include "adjust/tone_settings.h"
#include "adjust/unblock_stage.h"
#include "vxenhlib/adjust_tone_stage.h"

namespace vx {

// The order is part of the result. What works on the defects of the source (block artifacts, then
// noise) belongs before the tone curves, which would amplify them; what is taken out as noise and
// given back as grain belongs behind the curves, so that they do not touch it.
int adjustCore(IMG3<float>& image, const AdjustSettings& settings) {
  removeBlockArtifacts(image, settings);

  NoiseStage noise;
  noise.filter(image, settings);

  AdjustToneStage tone;
  deriveToneSettings(settings, tone);
  tone.apply(image);

  noise.restoreGrain(image, settings);
  return 1;
}

}  // namespace vx
