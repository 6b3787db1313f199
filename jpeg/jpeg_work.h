#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "jpeg/huffman_decoder.h"
#include "jpeg/jpeg.h"
#include "jpeg/tables.h"

namespace vx {

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
