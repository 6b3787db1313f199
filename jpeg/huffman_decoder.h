#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vx {

/// A Huffman table ready for decoding: codes up to 9 bits by one look-up, longer ones by length.
struct JpegHuffmanDecoder {
  static constexpr int kQuickBits = 9;

  /// Builds the tables from a marker's counts and symbols.
  ///
  /// @return false when the counts are no prefix code
  bool build(const std::array<std::uint8_t, 16>& counts, const std::uint8_t* list) noexcept;

  bool defined = false;
  std::array<std::uint16_t, 1 << kQuickBits> quick;  ///< length << 8 | symbol; 0: longer
  std::array<std::int32_t, 18> endCode;  ///< first code beyond those of a length, in 16 bits
  std::array<std::int32_t, 17> offset;   ///< symbol index less code, per length
  std::array<std::uint8_t, 256> symbols;
};

}  // namespace vx
