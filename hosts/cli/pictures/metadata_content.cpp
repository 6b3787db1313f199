#include "hosts/cli/pictures/metadata_content.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <set>
#include <string_view>

#include "hosts/cli/pictures/coding.h"
#include "hosts/cli/pictures/parts/extended_xmp.h"

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;

// Tags of the first directory that describe how a TIFF file stores its pixels, or hold what travels
// in another way (XMP 700, IPTC 33723, Photoshop 34377, ICC 34675): each file has its own.
bool isStructure(const Exiv2::Exifdatum& datum) {
  static constexpr std::array<int, 39> kTags{
      254, 255, 256, 257, 258, 259, 262, 263, 264, 265,   266,   273,   277,
      278, 279, 284, 288, 289, 317, 320, 321, 322, 323,   324,   325,   330,
      338, 339, 340, 341, 347, 512, 513, 514, 700, 33723, 34377, 34675, 37724};
  return datum.groupName() == "Image" &&
         std::find(kTags.begin(), kTags.end(), datum.tag()) != kTags.end();
}

// Also drops duplicates: PNG files of some programs carry EXIF in two chunks.
void dropStructure(Exiv2::ExifData& exif) {
  std::set<std::string> seen;
  for (auto datum = exif.begin(); datum != exif.end();) {
    const std::string group = datum->groupName();
    // The thumbnail shows the picture as it was, and in a TIFF its directory would be a broken
    // second page; so would the further pictures of a raw file.
    const bool further = group.starts_with("SubImage") || group.starts_with("SubThumb") ||
                         group == "Image2" || group == "Image3" || group == "Thumbnail";
    const bool known = !seen.insert(datum->key()).second;
    datum = further || known || isStructure(*datum) ? exif.erase(datum) : std::next(datum);
  }
}

void readByExiv2(Exiv2::Image& opened, MetadataContent& content) {
  Exiv2::Image* const image = &opened;
  image->readMetadata();
  content.exif = image->exifData();
  content.iptc = image->iptcData();
  content.xmp = image->xmpData();
  content.comment = image->comment();
  if (image->byteOrder() != Exiv2::invalidByteOrder) content.byteOrder = image->byteOrder();
  Exiv2::XmpData again;
  if (content.xmp.empty() && !image->xmpPacket().empty() &&
      Exiv2::XmpParser::decode(again, image->xmpPacket()) != 0)
    content.unreadable.emplace_back("unreadable XMP");
}

void readJpeg(Bytes file, MetadataContent& content) {
  const JpegLayout layout = jpegLayout(file);
  content.own = resolutionOf(layout);
  content.ownIsStated =
      !layout.segments.empty() && layout.segments.front().is(marker::kApp0, "JFIF\0"sv);
  if (const std::string joined = joinedExif(layout); !joined.empty()) {
    content.splitExif = true;
    decodeExif(bytesOf(joined), content);
  }
  const bool holdsExif =
      std::any_of(layout.segments.begin(), layout.segments.end(), [](const JpegSegment& segment) {
        return segment.is(marker::kApp1, "Exif\0\0"sv) && segment.payload.size() > 20;
      });
  if (holdsExif && content.exif.empty()) content.unreadable.emplace_back("unreadable EXIF");
  if (!mergeExtendedXmp(layout, content.xmp))
    content.unreadable.emplace_back("damaged extended XMP");
  content.extras = jpegExtras(file, layout, content.xmp);
}

void readPng(Bytes file, MetadataContent& content) {
  content.png = pngContent(file);
  content.own = resolutionOfPhys(content.png.phys);
  content.ownIsStated = true;
  if (content.png.damagedText) content.unreadable.emplace_back("a damaged text");
}

// Exiv2 and the files here read it.
bool hasParts(Format format) { return !traits(format).metadataByEncoder && format != Format::kJxl; }

template <typename Read>
void attempt(MetadataContent& content, const Read& read) {
  try {
    read();
  } catch (const std::exception& error) {
    content.unreadable.push_back(std::string("metadata that is damaged: ") + error.what());
  }
}

}  // namespace

void readContent(const std::filesystem::path& path, MetadataContent& content) {
  if (content.source == Format::kTiff) {
    // It may be larger than memory.
    attempt(content, [&] { readByExiv2(*openImage(path), content); });
    content.bigTiff = codingOf(path, Format::kTiff).bigTiff;
    if (content.bigTiff) content.unreadable.clear();  // Exiv2 knows nothing of them
    finishExif(content);
    return;
  }
  if (!hasParts(content.source)) return;
  std::ifstream file(path, std::ios::binary);
  readContent(std::vector<std::uint8_t>(std::istreambuf_iterator<char>(file), {}), content);
}

void readContent(Bytes file, MetadataContent& content) {
  if (!hasParts(content.source)) return;
  attempt(content, [&] { readByExiv2(*openImage(file), content); });
  attempt(content, [&] {
    if (content.source == Format::kJpeg) readJpeg(file, content);
    if (content.source == Format::kPng) readPng(file, content);
  });
  finishExif(content);
}

void decodeExif(Bytes block, MetadataContent& content) {
  content.exif.clear();
  if (textOf(block).starts_with(kExifMarker)) block = block.subspan(kExifMarker.size());
  if (block.empty()) return;
  content.byteOrder = Exiv2::ExifParser::decode(content.exif, block.data(),
                                                static_cast<std::uint32_t>(block.size()));
}

void finishExif(MetadataContent& content) {
  content.layers = content.exif.findKey(Exiv2::ExifKey(0x935c, "Image")) != content.exif.end();
  dropStructure(content.exif);
  content.exifs = resolutionOf(content.exif);
}

bool isMakerNote(const Exiv2::Exifdatum& datum) {
  // Every group outside the standard belongs to a maker note.
  static constexpr std::array<std::string_view, 6> kStandard{"Image", "Photo",     "GPSInfo",
                                                             "Iop",   "Thumbnail", "MakerNote"};
  return std::find(kStandard.begin(), kStandard.end(), datum.groupName()) == kStandard.end();
}

std::string encodeExif(const Exiv2::ExifData& exif, Exiv2::ByteOrder order) {
  // The encoder for EXIF blocks would silently leave out what goes beyond 64 kB.
  Exiv2::MemIo io;
  Exiv2::TiffParser::encode(io, nullptr, 0, order, exif, {}, {});
  io.open();
  const Exiv2::DataBuf block = io.read(static_cast<long>(io.size()));
  return {block.pData_, block.pData_ + block.size_};
}

std::vector<std::string> shrinkExif(Exiv2::ExifData& exif, Exiv2::ByteOrder order,
                                    std::size_t limit) {
  std::vector<Exiv2::ExifData::iterator> largest;
  for (auto datum = exif.begin(); datum != exif.end(); ++datum) largest.push_back(datum);
  std::stable_sort(largest.begin(), largest.end(),
                   [](const auto& a, const auto& b) { return a->size() > b->size(); });
  std::vector<std::string> gone;
  auto next = largest.begin();
  for (std::size_t size;
       (size = encodeExif(exif, order).size()) > limit && next != largest.end();) {
    // Each entry of a directory takes 12 bytes itself.
    for (std::size_t freed = 0; freed < size - limit && next != largest.end(); ++next) {
      freed += static_cast<std::size_t>((*next)->size()) + 12;
      gone.push_back((*next)->key());
      exif.erase(*next);
    }
  }
  return gone;
}

std::string listed(const std::vector<std::string>& things) {
  std::string text;
  for (std::size_t i = 0; i < things.size(); ++i)
    text += (i == 0 ? "" : i + 1 == things.size() ? " and " : ", ") + things[i];
  return text;
}

}  // namespace vx::cli
