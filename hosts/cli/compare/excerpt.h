// Parts of a picture made for looking at.
#pragma once

#include "hosts/cli/pictures/picture.h"

namespace vx::cli {

/// In pixels of the raster.
struct Area {
  int x, y, width, height;
};

/// An area of the picture with 8 bits, on white where it is transparent, each scale x scale samples
/// averaged (fewer at the far edges). Profile and orientation are the picture's. Throws
/// std::bad_alloc.
Picture excerpt(const Picture& picture, const Area& area, int scale);

}  // namespace vx::cli
