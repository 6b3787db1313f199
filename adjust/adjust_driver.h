#pragma once

#include "adjust/adjust_settings.h"
#include "adjust/host_callbacks.h"
#include "adjust/host_pixels.h"

namespace vx {

/// The body of vxAdjustRgb: reads the host's pixels to floats, runs adjustCore over the whole of a
/// picture below 2304 pixels on both axes or over overlapping tiles of a larger one, and writes the
/// result over the host's pixels.
///
/// Whatever happens, an exception of a callback included, all memory goes back the way it was got.
/// Until the result is written the host's pixels are as they were.
///
/// @return 1 done, 0 cancelled, -1 out of memory, -2 unknown format
int adjustRgb(const HostImage& image, const HostCallbacks& host, const AdjustSettings& settings);

}  // namespace vx
