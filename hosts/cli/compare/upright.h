// Pictures made for looking at: cut, reduced, turned upright and without transparency.
#pragma once

#include "hosts/cli/pictures/picture.h"

namespace vx::cli {

/// In pixels of the raster.
struct Area {
  int x, y, width, height;
};

/// Whether an EXIF orientation exchanges width and height.
constexpr bool liesOnSide(int orientation) { return orientation >= 5 && orientation <= 8; }

/// An area of the picture with 8 bits, on white where it is transparent, each scale x scale samples
/// averaged (fewer at the far edges), and turned as `orientation` says (EXIF, 1 to 8; others count
/// as 1). Throws std::bad_alloc.
Picture uprightPart(const Picture& picture, const Area& area, int scale, int orientation);

}  // namespace vx::cli
