// A small copy of a picture, on which settings can be tried.
#pragma once

#include <cstdint>
#include <vector>

#include "hosts/auto/auto_picture.h"

namespace vx::automatic {

/// Samples of format 3 of vxAdjustRgb, white 32767; even sizes.
struct ReducedPicture {
  int width = 0, height = 0;
  int scale = 1;  // pixels of the original to one, on an axis
  std::vector<std::uint16_t> samples;
};

/// Of `kMean`, squares of pixels become one, which hides noise; of `kSample`, one pixel of each
/// stays, so that clipped ones keep their share.
enum class Reduction { kMean, kSample };

/// Neither axis is above `most`. Throws std::bad_alloc.
ReducedPicture reduced(const VxAutoPicture& picture, int most, Reduction reduction);

}  // namespace vx::automatic
