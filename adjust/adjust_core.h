#pragma once

#include "adjust/adjust_settings.h"
#include "frame/img.h"

namespace vx {

/// Runs the stages of the adjust pipeline over one float RGB image, a whole picture or a tile, in
/// place. Samples are nominally 0 to 1. Statistics are taken on this image alone.
///
/// @return 1 always; a stage that cannot work leaves the image as it was
int adjustCore(IMG3<float>& image, const AdjustSettings& settings);

}  // namespace vx
