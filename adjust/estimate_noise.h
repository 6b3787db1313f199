#pragma once

#include "vxicore26.h"

namespace vx {

/// The part of one axis of a picture that the noise estimate looks at.
struct CropAxis {
  int start;
  int size;
};

/// Below 2048 pixels: from 0 on, the size rounded down to a multiple of 4 (0 and less is empty);
/// from there on 2048 pixels in the middle, from an even position.
CropAxis cropAxis(int size);

/// The body of vxDenoiseEstNoise: converts the middle of a picture to luma and chroma and measures
/// the luma. What cannot be read (an unknown format, null `pixels`) counts as black. Without memory
/// nothing is measured, as in a picture without pixels.
///
/// @param rowStep  signed bytes
NoiseProfile estimateNoise(const void* pixels, int format, int rowStep, int width, int height);

}  // namespace vx
