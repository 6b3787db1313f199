// What Metadata holds, for the files that implement it.
#pragma once

#include <exiv2/exiv2.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "hosts/cli/pictures/formats.h"
#include "hosts/cli/pictures/parts/jpeg_extras.h"
#include "hosts/cli/pictures/parts/resolution.h"
#include "hosts/cli/pictures/png_chunks.h"

namespace vx::cli {

struct MetadataContent {
  Format source{};
  Exiv2::ExifData exif;
  Exiv2::IptcData iptc;
  Exiv2::XmpData xmp;
  std::string comment;  // of a JPEG, or the Description of a PNG
  Exiv2::ByteOrder byteOrder = Exiv2::littleEndian;
  bool splitExif = false;  // it came in several segments
  PngContent png;
  JpegExtras extras;
  std::vector<std::string> unreadable;  // in words
  bool bigTiff = false;
  bool layers = false;                   // of an image editor, that a TIFF held
  std::optional<Resolution> own, exifs;  // stated by the format itself, and by EXIF
  bool ownIsStated = false;              // even if it says nothing
};

// Exiv2 0.27 returns auto_ptr.
inline std::unique_ptr<Exiv2::Image> openImage(Bytes file) {
  return std::unique_ptr<Exiv2::Image>(
      Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size())).release());
}

inline std::unique_ptr<Exiv2::Image> openImage(const std::filesystem::path& path) {
  return std::unique_ptr<Exiv2::Image>(Exiv2::ImageFactory::open(path.string()).release());
}

/// Fills it with what a file tells; `source` is set. What cannot be read is told in `unreadable`.
/// HEIC, AVIF and JPEG XL tell nothing here: libvips reads them.
void readContent(const std::filesystem::path& path, MetadataContent& content);
void readContent(Bytes file, MetadataContent& content);

/// Adds what an EXIF block says, with or without the marker of JPEG in front. Throws Exiv2::Error.
void decodeExif(Bytes block, MetadataContent& content);
/// Takes out of EXIF what belongs to the file that it came from.
void finishExif(MetadataContent& content);

/// The block of a TIFF header and its directories, however large.
std::string encodeExif(const Exiv2::ExifData& exif, Exiv2::ByteOrder order);

/// Takes the largest tags out until the block has at most `limit` bytes; returns their keys.
std::vector<std::string> shrinkExif(Exiv2::ExifData& exif, Exiv2::ByteOrder order,
                                    std::size_t limit);

/// What EXIF blocks in JPEG segments hold at most; Exiv2 writes no more into a WebP either.
inline constexpr std::size_t kMaxExif = kMaxSegment - 6;

/// In front of an EXIF block in a JPEG.
inline constexpr std::string_view kExifMarker{"Exif\0\0", 6};

/// The tag that takes a comment where the format has no other place.
inline constexpr const char* kDescription = "Exif.Image.ImageDescription";

bool isMakerNote(const Exiv2::Exifdatum& datum);

/// In several lists of what a picture holds: "a, b and c".
std::string listed(const std::vector<std::string>& things);

}  // namespace vx::cli
