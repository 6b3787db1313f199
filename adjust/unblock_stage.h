#pragma once

#include "adjust/adjust_settings.h"
#include "frame/img.h"

namespace vx {

/// JPEG quality of the round trips for a strength: 100 - 85 * strength truncated, its low eight
/// bits, limited to 1..99; strengths 0.02 to 1 give 98 to 15.
int unblockQuality(float strength);

/// Whether removeBlockArtifacts() has work: an unblockStrength above 0.02, and no preview.
bool unblockActive(const AdjustSettings& settings);

/// Removes block artifacts from samples of value / 256, by way of bytes and vxUnblock, when active.
/// What comes back is value / 255: the scale of reading is not restored, and the picture becomes
/// 0.4 % brighter where this stage runs. Without memory for the bytes nothing happens;
/// MemoryException of vxUnblock passes through.
void removeBlockArtifacts(IMG3<float>& image, const AdjustSettings& settings);

}  // namespace vx
