// How many pixels of a picture fill a length on paper, or the shape of its pixels.
#pragma once

#include <exiv2/exiv2.hpp>
#include <optional>

#include "hosts/cli/pictures/parts/jpeg_segments.h"

namespace vx::cli {

struct Resolution {
  double x, y;     // pixels per metre, or
  bool shapeOnly;  // numbers whose ratio alone counts
};

/// Of the tags XResolution, YResolution and ResolutionUnit; nothing where they make no sense.
std::optional<Resolution> resolutionOf(const Exiv2::ExifData& exif);
void setResolution(Exiv2::ExifData& exif, const std::optional<Resolution>& resolution);

/// Of the JFIF header.
std::optional<Resolution> resolutionOf(const JpegLayout& layout);
/// Of a JPEG file, which gets a JFIF header where it has none.
void setJfifResolution(std::vector<std::uint8_t>& file,
                       const std::optional<Resolution>& resolution);

/// Of a TIFF file, classic or large, whose first directory has the three tags. Exiv2 would leave
/// them as they are.
void setTiffResolution(std::vector<std::uint8_t>& file,
                       const std::optional<Resolution>& resolution);

/// Of the content of a pHYs chunk.
std::optional<Resolution> resolutionOfPhys(std::string_view phys);
std::string physOf(const Resolution& resolution);

/// "300 dpi", "300 x 150 dpi", "pixels 2:1".
std::string inWords(const Resolution& resolution);

}  // namespace vx::cli
