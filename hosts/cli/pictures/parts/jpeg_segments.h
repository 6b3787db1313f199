// The marker segments of a JPEG file in memory (ITU-T T.81, annex B).
#pragma once

#include <vector>

#include "hosts/cli/pictures/parts/bytes.h"

namespace vx::cli {

namespace marker {
inline constexpr std::uint8_t kApp0 = 0xe0, kApp1 = 0xe1, kApp2 = 0xe2, kApp13 = 0xed,
                              kComment = 0xfe;
}

/// The longest payload of a segment, in bytes: its length of 16 bits counts itself.
inline constexpr std::size_t kMaxSegment = 65533;

struct JpegSegment {
  std::uint8_t marker;
  Bytes payload;  // behind the length; a view of the file

  bool is(std::uint8_t wanted, std::string_view identifier) const {
    return marker == wanted && textOf(payload).starts_with(identifier);
  }
};

struct JpegLayout {
  std::vector<JpegSegment> segments;  // before the first scan
  std::size_t end = 0;                // of the picture: behind its EOI, or the end of the file
};

/// Any bytes may come in; what stops making sense ends the walk.
JpegLayout jpegLayout(Bytes file);

/// A segment with its marker and length. `payload` of at most kMaxSegment bytes.
std::string jpegSegment(std::uint8_t marker, std::string_view payload);

/// Puts whole segments behind the JFIF header of an encoded picture, and takes the APP1 segments
/// away that it had.
void replaceMetadataSegments(std::vector<std::uint8_t>& file, std::string_view segments);

}  // namespace vx::cli
