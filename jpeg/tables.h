#pragma once

#include <array>
#include <cstdint>

#include "prim/jpeg.h"

namespace vx {

/// Place of the i-th coefficient of a stream in a block as the primitives lay it out.
extern const std::array<std::uint8_t, 64> kJpegZigzag;

/// A quantisation table in the order of the stream.
using JpegQuantTable = std::array<std::uint8_t, 64>;

/// Table K.1 (`chroma` false) or K.2 scaled by quality: scale = 5000 / quality below 50, 200 - 2 *
/// quality from there on, entry = (entry * scale + 50) / 100 limited to 1..255, in integers.
/// Quality 0 and below: as it stands in the standard.
JpegQuantTable jpegQuantTable(bool chroma, int quality) noexcept;

/// Factors of the primitives for a table.
prim::JpegQuantiser jpegQuantiser(const JpegQuantTable& table) noexcept;

/// A Huffman table as the standard lists it: how many codes of each length 1 to 16, and the symbols
/// in the order of their codes.
struct JpegHuffmanSpec {
  std::array<std::uint8_t, 16> counts;
  const std::uint8_t* symbols;
  int symbolCount;
};

/// Tables K.3 to K.6.
const JpegHuffmanSpec& jpegHuffmanSpec(bool ac, bool chroma) noexcept;

/// Code and length of every symbol; length 0: the symbol has no code.
struct JpegHuffmanCodes {
  std::array<std::uint16_t, 256> code;
  std::array<std::uint8_t, 256> length;
};
const JpegHuffmanCodes& jpegHuffmanCodes(bool ac, bool chroma) noexcept;

}  // namespace vx
