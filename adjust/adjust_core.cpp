#include "adjust/adjust_core.h"

#include "adjust/noise_stage.h"
#include "adjust/tone_settings.h"
#include "adjust/unblock_stage.h"
#include "vxenhlib/tone/adjust_tone_stage.h"

namespace vx {

// The order is part of the result. What works on the defects of the source (block artifacts, then
// noise) belongs before the tone curves, which would amplify them; what is taken out as noise and
// given back as grain belongs behind the curves, so that they do not touch it.
//
// The tone stage takes the rows up and hands them on itself unless a stage beside it has work.
int adjustCore(IMG3<float>& work, const AdjustSettings& settings, RowSource& from, RowSink& to,
               ToneScratch& scratch) {
  ImageRows rows(work);
  const bool filters = unblockActive(settings) || NoiseStage::active(settings);
  NoiseStage noise;
  if (filters) {
    from.take(0, RgbRows(work));
    removeBlockArtifacts(work, settings);
    noise.filter(work, settings);
  }

  AdjustToneStage tone;
  deriveToneSettings(settings, tone);
  tone.apply(work, filters ? rows : from, noise.hasGrain() ? rows : to, scratch);

  if (noise.hasGrain()) {
    noise.restoreGrain(work, settings);
    to.give(0, RgbRows(work));
  }
  return 1;
}

}  // namespace vx
