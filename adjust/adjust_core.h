#pragma once

#include "adjust/adjust_settings.h"
#include "frame/img.h"
#include "frame/picture_rows.h"

namespace vx {

struct ToneScratch;

/// Runs the stages of the adjust pipeline over one float RGB image, a whole picture or a tile.
/// Samples are nominally 0 to 1. Statistics are taken on this image alone.
///
/// @param work     memory of the image's size, lost afterwards
/// @param scratch  what the tone stage kept from the last tile
/// @return 1 always; a stage that cannot work leaves the image as it was
int adjustCore(IMG3<float>& work, const AdjustSettings& settings, RowSource& from, RowSink& to,
               ToneScratch& scratch);

}  // namespace vx
