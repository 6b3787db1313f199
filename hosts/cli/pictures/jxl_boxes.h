// The boxes of a JPEG XL file that hold metadata (ISO/IEC 18181-2). libvips neither reads nor
// writes them.
#pragma once

#include <cstdint>
#include <istream>
#include <string_view>
#include <vector>

namespace vx::cli {

struct JxlMetadata {
  std::vector<std::uint8_t> exif;  // from the TIFF header on
  std::vector<std::uint8_t> xmp;
};

/// What lies in a file uncompressed; what cannot be read is left out.
JxlMetadata readJxlMetadata(std::istream& file);

/// Puts EXIF (from the TIFF header on) and an XMP packet into a finished file, which becomes a
/// container if it was a bare codestream. Empty ones are left out.
void insertJxlMetadata(std::vector<std::uint8_t>& file, std::string_view exif,
                       std::string_view xmp);

}  // namespace vx::cli
