// Removal of the block artifacts of JPEG, for all commands.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hosts/cli/pictures/picture.h"

namespace vx::cli {

/// The quality of the round trips that suits the file: its own; 0 where its blocks should be left
/// alone. Says in a note which of it is the case.
int fittingTripQuality(const std::filesystem::path& path, std::vector<std::string>& notes);

/// Makes the raster one of 16 bits, which keeps fractions of the result, and asks for a coding that
/// does not bring the blocks back. Throws FileError.
void removeBlocks(Picture& picture, int quality, int jpegMode = 0, int shiftStep = 1);

/// Bytes per pixel that this takes beside an 8-bit raster: the second one, changes, and a copy.
inline constexpr int kBlockRemovalBytes = 3 + 6 + 4;

}  // namespace vx::cli
