#include "hosts/cli/pictures/evidence.h"

#include <cmath>
#include <exiv2/exiv2.hpp>

#include "hosts/auto/auto_jpeg.h"
#include "hosts/cli/pictures/jpeg_header.h"

namespace vx::cli {
namespace {

// 0 where the tag is missing or no positive number.
double number(const Exiv2::ExifData& exif, const char* key) {
  const auto tag = exif.findKey(Exiv2::ExifKey(key));
  if (tag == exif.end() || tag->count() == 0) return 0;
  const auto value = static_cast<double>(tag->toFloat());
  return std::isfinite(value) && value > 0 ? value : 0;
}

// What libvips found counts first: Exiv2 0.27 does not open every format.
Exiv2::ExifData exifOf(const std::filesystem::path& path, const Picture& picture) {
  constexpr std::size_t kMarker = 6;  // "Exif" and two zeros
  Exiv2::ExifData exif;
  if (picture.exif.size() > kMarker) {
    const std::size_t start = picture.exif[0] == 'E' ? kMarker : 0;
    Exiv2::ExifParser::decode(exif, picture.exif.data() + start,
                              static_cast<std::uint32_t>(picture.exif.size() - start));
    return exif;
  }
  const auto image = Exiv2::ImageFactory::open(path.string());
  image->readMetadata();
  return image->exifData();
}

void takeExif(const std::filesystem::path& path, const Picture& picture,
              VxAutoEvidence& evidence) try {
  const Exiv2::ExifData exif = exifOf(path, picture);
  evidence.isoSpeed = number(exif, "Exif.Photo.ISOSpeedRatings");
  evidence.exposureTime = number(exif, "Exif.Photo.ExposureTime");
  evidence.fullMegapixels =
      number(exif, "Exif.Photo.PixelXDimension") * number(exif, "Exif.Photo.PixelYDimension") / 1e6;
} catch (const std::exception&) {
  // A file without readable EXIF tells nothing.
}

}  // namespace

VxAutoEvidence evidenceOf(const std::filesystem::path& path, const Picture& picture) {
  VxAutoEvidence evidence{};
  takeExif(path, picture, evidence);
  if (const auto header = jpegHeader(path))
    vxAutoLumaSteps(header->lumaSteps.data(), evidence.lumaSteps);
  return evidence;
}

}  // namespace vx::cli
