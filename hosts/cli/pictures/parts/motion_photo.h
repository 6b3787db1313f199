// What the XMP of a phone's picture claims of the data behind it: the video of a motion photo
// (Android "Motion Photo format" 1.0, and "Micro Video" before it) and a gain map (Android
// "Ultra HDR image format", Adobe "Gain map").
#pragma once

#include <exiv2/exiv2.hpp>
#include <vector>

#include "hosts/cli/pictures/parts/bytes.h"

namespace vx::cli {

/// A part of what lies behind a picture.
struct Range {
  std::size_t start, size;
};

struct Claims {
  bool video = false, gainMap = false;
  // Where they are found, inside the trailer; sizes of 0: not there.
  Range videoRange{0, 0};
  std::vector<Range> otherRanges;  // of all other pictures and data that are listed
};

/// Any numbers may stand in the XMP. A video is found where a file of the ISO base media format
/// starts; the rest is believed as far as it lies inside the trailer.
Claims claimsOf(const Exiv2::XmpData& xmp, Bytes trailer);

/// Makes the claims true of a file that has a video of `videoBytes` at its end (0: none) and
/// nothing else behind the picture.
void settleClaims(Exiv2::XmpData& xmp, std::size_t videoBytes);

}  // namespace vx::cli
