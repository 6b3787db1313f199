// What the statistics of its blocks tell of a picture's noise, in a few numbers.
#pragma once

#include <array>

#include "hosts/auto/auto_noise.h"
#include "hosts/auto/block_statistics.h"

namespace vx::automatic {

/// Deviations are in levels of 255. Dead blocks are left out of the percentiles of plane8 and
/// fine8, clipped ones out of everything.
struct NoiseFeatures {
  double dead;                     // share of dead blocks
  double plane1, plane5, plane25;  // percentiles of plane8
  double fine1, fine25;            // of fine8
  double wide25;                   // of plane16
  double colour, colour10;         // rms and percentile of fineColour8
  bool grey;                       // without colour, for which these two are then made up
  double steps;                    // mean of the luma's first five AC steps; 0: no JPEG
  double coherence;                // mean of coherence8 where plane8 is up to plane25
};

/// `statistics` must have blocks.
NoiseFeatures noiseFeatures(const BlockStatistics& statistics, const VxAutoEvidence& evidence);

}  // namespace vx::automatic
