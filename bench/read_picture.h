#pragma once

#include <string>

#include "bench/picture_quality.h"

/// A picture file, reduced to 1 / `shrink` and cut to even sizes. Throws what libvips throws.
RgbPicture readPicture(const std::string& path, int shrink);
