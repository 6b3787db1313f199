// XMP beyond the 64 kB of a JPEG segment (Adobe XMP, "Extended XMP in JPEG"): the packet
// names further segments by the MD5 digest of what they hold together.
#pragma once

#include <exiv2/exiv2.hpp>
#include <optional>

#include "hosts/cli/pictures/parts/jpeg_segments.h"

namespace vx::cli {

/// The extension that `digest` (32 hexadecimal digits) names, put together. Nothing where parts
/// are missing, overlap, or have another digest.
std::optional<std::string> extendedXmp(const JpegLayout& layout, const std::string& digest);

/// Puts the properties of the extension into `xmp`, and takes the reference to it out.
/// @return false where the file lacks what the reference names, or holds it damaged
bool mergeExtendedXmp(const JpegLayout& layout, Exiv2::XmpData& xmp);

/// All of `xmp` as segments of a JPEG file; the largest properties go into the extension where one
/// segment does not hold all. Throws Exiv2::Error.
std::string xmpSegments(Exiv2::XmpData xmp);

}  // namespace vx::cli
