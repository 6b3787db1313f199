// What a choice of tone goes by.
#pragma once

#include "hosts/auto/reduced_picture.h"

namespace vx::automatic {

/// On a scale of 1. Lightness is the mean of the strongest and the weakest colour of a pixel.
struct ToneStatistics {
  double median = 0, bright = 0;  // of the lightness: the 50th and the 95th percentile
  double luma = 0;                // mean (ITU-R BT.601)
  double contrast = 0;  // rms of the lightness around its mean over a twelfth of the longer axis
  double chroma = 0;    // mean of the strongest less the weakest colour
  double clipped = 0;   // share of pixels with a colour that is black or white in 8 bits
};

ToneStatistics toneStatistics(const ReducedPicture& picture);

}  // namespace vx::automatic
