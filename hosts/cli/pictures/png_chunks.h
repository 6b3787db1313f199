// The chunks of a PNG file beside its pixels: read from a source, added to the bytes of a result.
// Exiv2 0.27 would put EXIF into an old-style text and write a bad profile name; libvips would lose
// the maker note, and of texts their language and coding.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/cli/pictures/parts/bytes.h"

namespace vx::cli {

/// What a PNG file says beside its pixels; each text is the content of a chunk, empty: none.
struct PngContent {
  std::string cicp, gama, chrm, srgb;  // colours: of the right size, and before the pixels
  std::string phys;
  std::vector<std::string> texts;  // whole chunks, without those that travel as metadata
  bool damagedText = false;
};

/// Chunks with a wrong CRC count as missing. Any file may come in.
PngContent pngContent(Bytes file);

/// A whole chunk with length and CRC.
std::string pngChunk(std::string_view type, std::string_view data);

/// Inserts whole chunks before the pixels.
void insertPngChunks(std::vector<std::uint8_t>& file, std::string_view chunks);

/// Takes all chunks of this type in front of the pixels away.
void removePngChunks(std::vector<std::uint8_t>& file, std::string_view type);

/// An uncompressed iTXt where `text` is UTF-8, else a tEXt.
std::string pngTextChunk(std::string_view keyword, std::string_view text);
/// An uncompressed iTXt "XML:com.adobe.xmp".
std::string pngXmpChunk(std::string_view packet);
/// A tEXt "Raw profile type iptc": the Photoshop resource 0x0404 around `iptc` as hexadecimal
/// digits, the form in which image programs have exchanged IPTC in PNG since ImageMagick introduced
/// it.
std::string pngIptcChunk(std::string_view iptc);

}  // namespace vx::cli
