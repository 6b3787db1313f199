#pragma once

#include "frame/img.h"
#include "vxenhlib/nonlocal/nl_im_dn_cn.h"

namespace vx {

/// Settings of the non-local passes; see NoiseFilterRecord::denoise.
struct NonLocalSettings {
  float floorWeight;
  float strength;
  float detailShare;
  float kneeRatio;
  float deviationGain;
  float chromaGuideGain;
  float lumaNoise;
  float chromaNoise;
  bool twoStage;
};

/// Filters luma and chroma in place. All three planes are filtered at half size, with the blocks
/// searched once for all of them; that is the final chroma. On the luma the detail between half and
/// full size follows, searched on the noisy picture; with `twoStage` the noisy luma is then
/// filtered again, searched and weighted by the result so far.
///
/// A pass that cannot have its memory ends the work: what the passes before it made stays.
void filterNonLocal(CNLImDnCn& filter, GIMG<float>* const planes[3],
                    const NonLocalSettings& settings);

}  // namespace vx
