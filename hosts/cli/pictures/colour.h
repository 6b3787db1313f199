// The colour profile that goes with the pixels of a result.
#pragma once

#include "hosts/cli/pictures/picture.h"
#include "hosts/cli/pictures/png_chunks.h"

namespace vx::cli {

/// Gives `picture` the profile with which its pixels mean in a file of `result` what they meant in
/// the source, whose PNG content is `png` (empty for other formats). A profile for grey stays on
/// grey pixels and one for RGB on RGB ones: the other kind is turned into it, or goes with a note.
/// Throws FileError for colours that `result` cannot state.
void settleColour(Picture& picture, const PngContent& png, Format result);

/// The chunks with which the pixels keep their meaning from PNG to PNG.
std::string colourChunks(const PngContent& png, bool hasProfile);

}  // namespace vx::cli
