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

void takeExif(const std::filesystem::path& path, VxAutoEvidence& evidence) try {
  const auto image = Exiv2::ImageFactory::open(path.string());
  image->readMetadata();
  const Exiv2::ExifData& exif = image->exifData();
  evidence.isoSpeed = number(exif, "Exif.Photo.ISOSpeedRatings");
  evidence.exposureTime = number(exif, "Exif.Photo.ExposureTime");
  evidence.fullMegapixels =
      number(exif, "Exif.Photo.PixelXDimension") * number(exif, "Exif.Photo.PixelYDimension") / 1e6;
} catch (const std::exception&) {
  // A file without readable EXIF tells nothing.
}

}  // namespace

VxAutoEvidence evidenceOf(const std::filesystem::path& path) {
  VxAutoEvidence evidence{};
  takeExif(path, evidence);
  if (const auto header = jpegHeader(path))
    vxAutoLumaSteps(header->lumaSteps.data(), evidence.lumaSteps);
  return evidence;
}

}  // namespace vx::cli
