#pragma once

#include <cstdint>

#include "jpeg/tables.h"

namespace vx {

/// Everything about a stream that decides the pixels of a round trip.
struct JpegCoding {
  bool useYcc;
  int hFactor;  ///< 2: components two and three are halved horizontally
  int vFactor;  ///< 2: and vertically
  JpegQuantTable table[2];
  prim::JpegQuantiser quantiser[2];
  bool oneTableSet;  ///< all components use the first tables: RGB without subsampling

  JpegCoding(bool ycc, int subsamplingCode, int quality) noexcept;

  /// Index of the tables of component c.
  int tablesOf(int c) const { return c == 0 || oneTableSet ? 0 : 1; }
  int mcuWidth() const { return 8 * hFactor; }
  int mcuHeight() const { return 8 * vFactor; }
  /// Bytes of all markers of a stream, from the start of the image to its end.
  int headerBytes() const;
};

/// Where the rows of an image to be coded come from.
class JpegRowSource {
 public:
  /// Fills `length` samples of each of three rows from image row y, the last pixel repeated.
  virtual void read(int y, int length, std::int16_t* const rows[3]) const = 0;

 protected:
  ~JpegRowSource() = default;
};

/// Codes a whole scan of width * height pixels.
///
/// @param out    `room` bytes; null: the bytes are counted only
/// @return bytes of the scan; when more than `room`, coding ended there
std::int64_t jpegEncodeScan(const JpegCoding& coding, int width, int height,
                            const JpegRowSource& source, std::uint8_t* out, std::int64_t room);

}  // namespace vx
