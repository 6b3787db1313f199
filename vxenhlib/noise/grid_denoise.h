#pragma once

#include "frame/img.h"
#include "vxenhlib/noise/noise_filter_record.h"

namespace vx {

/// Smooths luma and chroma of an image on three bilateral grids: what NoiseFilterRecord::denoise
/// does with planes when its other passes are off, bit by bit. The planes take the place of the
/// pixels in the rows of the image until the end, so that only the grids and some rows are needed
/// beside it. A grid that cannot be allocated leaves its plane as it is.
///
/// @param removed  three planes of the image's size that get what is taken out, or null
/// @return false when memory for the rows is short; nothing is changed then
bool denoiseOnGrids(IMG3<float>& image, const GridStep& luma, const GridStep& chroma,
                    GIMG<float>* const* removed);

}  // namespace vx
