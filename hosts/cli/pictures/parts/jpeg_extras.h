// What a JPEG file holds beside one picture and its metadata: video, gain map, further pictures.
#pragma once

#include <exiv2/exiv2.hpp>
#include <optional>
#include <vector>

#include "hosts/cli/pictures/parts/jpeg_segments.h"

namespace vx::cli {

struct JpegExtras {
  std::vector<std::uint8_t> video;  // of a motion photo; empty: none
  bool gainMap = false;
  int pictures = 0;              // further ones, without gain map and previews
  int previews = 0;              // smaller copies of the picture
  std::size_t unknownBytes = 0;  // behind the picture, that nothing explains
  bool emptyClaims = false;      // the XMP claims a video or gain map that is not there
};

/// @param xmp  of the file
JpegExtras jpegExtras(Bytes file, const JpegLayout& layout, const Exiv2::XmpData& xmp);

/// EXIF that goes through several segments, put together; empty where one holds all.
std::string joinedExif(const JpegLayout& layout);

}  // namespace vx::cli
