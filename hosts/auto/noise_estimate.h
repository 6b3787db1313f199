// How much noise a picture has, from the statistics of its blocks.
#pragma once

#include "hosts/auto/auto_noise.h"
#include "hosts/auto/block_statistics.h"

namespace vx::automatic {

/// Reorders the statistics.
VxAutoNoise estimateNoise(BlockStatistics& statistics, const VxAutoEvidence& evidence);

}  // namespace vx::automatic
