#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "jpeg/jpeg.h"
#include "jpeg/tables.h"

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

struct JpegFrameComponent {
  int id;
  int h, v;   ///< sampling factors
  int quant;  ///< index of its quantisation table
};

struct JpegFrame {
  bool defined = false;
  int width, height;
  int count;
  int hMax, vMax;
  std::array<JpegFrameComponent, 3> components;
};

/// A component as a scan names it.
struct JpegScanComponent {
  int component;  ///< index in the frame
  int dc, ac;     ///< tables
};

struct JpegScanHeader {
  int count;
  std::array<JpegScanComponent, 3> components;
};

/// What jpegInit allocates: the state of a decoder between its markers.
struct JpegWork {
  std::array<bool, 4> quantDefined{};
  std::array<JpegQuantTable, 4> quant;
  std::array<JpegHuffmanDecoder, 4> dc, ac;
  JpegFrame frame;
  JpegScanHeader scan;
  int restartInterval = 0;
  bool jfif = false;
  int adobeTransform = -1;                 ///< -1: no Adobe marker
  const std::uint8_t* position = nullptr;  ///< what is to be read next
  const std::uint8_t* end = nullptr;
};

}  // namespace vx
