#include "hosts/cli/pictures/coding.h"

#include <exiv2/exiv2.hpp>
#include <fstream>

#include "hosts/auto/auto_jpeg.h"
#include "hosts/cli/pictures/jpeg_header.h"

namespace vx::cli {
namespace {

Coding ofJpeg(const std::filesystem::path& path) {
  Coding coding;
  const auto header = jpegHeader(path);
  if (!header) return coding;
  const int quality = vxAutoJpegQuality(header->lumaSteps.data());
  if (quality > 0) coding.quality = quality;
  coding.subsampled = header->subsampled;
  coding.progressive = header->progressive;
  return coding;
}

// The number of a tag of the first directory; 0 where it is missing.
long tiffTag(const Exiv2::ExifData& exif, const char* key) {
  const auto tag = exif.findKey(Exiv2::ExifKey(key));
  return tag == exif.end() || tag->count() == 0 ? 0 : tag->toLong();
}

const char* tiffCompression(long tag) {
  switch (tag) {
    case 1:
      return "none";
    case 5:
      return "lzw";
    case 32773:
      return "packbits";
    case 50000:
      return "zstd";
    default:
      return "deflate";
  }
}

Coding ofTiff(const std::filesystem::path& path) try {
  Coding coding;
  const auto image = Exiv2::ImageFactory::open(path.string());
  image->readMetadata();
  const Exiv2::ExifData& exif = image->exifData();
  if (const long compression = tiffTag(exif, "Exif.Image.Compression"); compression != 0) {
    coding.tiffCompression = tiffCompression(compression);
    coding.tiffPredictor = tiffTag(exif, "Exif.Image.Predictor") == 2;
  }
  return coding;
} catch (const std::exception&) {
  return {};
}

// The chunk with the pixels is named by its coding.
Coding ofWebp(const std::filesystem::path& path) {
  Coding coding;
  std::ifstream file(path, std::ios::binary);
  file.seekg(12);
  unsigned char head[8];
  while (file.read(reinterpret_cast<char*>(head), sizeof head)) {
    const std::string name(head, head + 4);
    if (name == "VP8L" || name == "VP8 ") {
      coding.lossless = name == "VP8L";
      break;
    }
    const std::uint32_t size =
        head[4] | head[5] << 8 | head[6] << 16 | static_cast<std::uint32_t>(head[7]) << 24;
    file.seekg(static_cast<std::streamoff>(size) + (size & 1), std::ios::cur);
  }
  return coding;
}

}  // namespace

Coding codingOf(const std::filesystem::path& path, Format format) {
  switch (format) {
    case Format::kJpeg:
      return ofJpeg(path);
    case Format::kTiff:
      return ofTiff(path);
    case Format::kWebp:
      return ofWebp(path);
    case Format::kPng:
      break;
  }
  return {};
}

Coding chooseCoding(const Coding& source, const Coding& wanted) {
  Coding coding = source;
  if (wanted.quality) {
    coding.quality = wanted.quality;
    coding.lossless.reset();
  }
  if (wanted.subsampled) coding.subsampled = wanted.subsampled;
  if (wanted.lossless) coding.lossless = wanted.lossless;
  if (wanted.tiffCompression) {
    coding.tiffCompression = wanted.tiffCompression;
    coding.tiffPredictor = true;
  }
  return coding;
}

}  // namespace vx::cli
