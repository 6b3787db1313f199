#pragma once

#include <memory>

#include "frame/img.h"

namespace vx {

/// The part of one axis of a picture that the noise estimate looks at.
struct CropAxis {
  int start;
  int size;
};

/// Below 2048 pixels: from 0 on, the size rounded down to a multiple of 4 (0 and less is empty);
/// from there on 2048 pixels in the middle, from an even position.
CropAxis cropAxis(int size);

constexpr int kCropLoaded = 3;

/// Fills three planes of the crop's size from the colour channels of the picture. A plane that is
/// null or of another size is made anew. What cannot be read (an unknown format, null `pixels`)
/// leaves planes of 0.
///
/// @param rowStep  signed bytes; the picture's own size is of no account
/// @return kCropLoaded always
int loadCrop(int format, const void* pixels, int rowStep, const CropAxis& x, const CropAxis& y,
             std::unique_ptr<GIMG<float>> planes[3]);

}  // namespace vx
