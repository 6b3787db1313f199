// Adding chunks to the bytes of a PNG file. Exiv2 0.27 would put EXIF into an old-style text and
// write a bad profile name; libvips would lose the maker note.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace vx::cli {

/// Each inserts one chunk before the pixels, as PNG (third edition) defines it. An eXIf holds the
/// bytes of a TIFF header and its directories, without the "Exif" marker of JPEG.
void insertPngExif(std::vector<std::uint8_t>& file, std::string_view exif);
/// An uncompressed iTXt "XML:com.adobe.xmp".
void insertPngXmp(std::vector<std::uint8_t>& file, std::string_view packet);
/// A tEXt "Raw profile type iptc": the Photoshop resource 0x0404 around `iptc` as hexadecimal
/// digits, the form in which image programs have exchanged IPTC in PNG since ImageMagick introduced
/// it.
void insertPngIptc(std::vector<std::uint8_t>& file, std::string_view iptc);

}  // namespace vx::cli
