// What a file tells about its noise beside the pixels.
#pragma once

#include <filesystem>

#include "hosts/auto/auto_noise.h"
#include "hosts/cli/pictures/picture.h"

namespace vx::cli {

/// ISO speed, exposure and size from EXIF, quantiser steps of a JPEG; 0 for what is not known.
/// @param picture  what was read from the file
VxAutoEvidence evidenceOf(const std::filesystem::path& path, const Picture& picture);

}  // namespace vx::cli
