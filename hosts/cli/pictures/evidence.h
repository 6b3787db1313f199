// What a file tells about its noise beside the pixels.
#pragma once

#include <filesystem>

#include "hosts/auto/auto_noise.h"

namespace vx::cli {

/// ISO speed, exposure and size from EXIF, quantiser steps of a JPEG; 0 for what is not known.
VxAutoEvidence evidenceOf(const std::filesystem::path& path);

}  // namespace vx::cli
