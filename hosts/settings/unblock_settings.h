// The settings of vxUnblock: removal of the block artifacts of JPEG.
#pragma once

#include "hosts/settings/setting.h"

namespace vx::settings {

/// The neutral set: blocks are removed at the quality of the file.
struct UnblockValues {
  float quality = kAuto;
  float chroma = 0;
  float colours = 0;
  float shiftStep = 1;
};

std::span<const Field<UnblockValues>> unblockSettings();

}  // namespace vx::settings
