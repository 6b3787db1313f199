#include "hosts/cli/pictures/metadata.h"

#include <algorithm>
#include <array>
#include <exiv2/exiv2.hpp>
#include <fstream>
#include <set>
#include <sstream>
#include <string_view>

#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/coding.h"
#include "hosts/cli/pictures/decoder.h"
#include "hosts/cli/pictures/jxl_boxes.h"
#include "hosts/cli/pictures/png_chunks.h"
#include "hosts/cli/pictures/vips_error.h"

namespace vx::cli {

struct Metadata::Content {
  Exiv2::ExifData exif;
  Exiv2::IptcData iptc;
  Exiv2::XmpData xmp;
  std::string comment;
  Exiv2::ByteOrder byteOrder = Exiv2::littleEndian;

  // Empty where there is nothing.
  std::string exifBytes() const {
    if (exif.empty()) return "";
    Exiv2::Blob bytes;
    Exiv2::ExifParser::encode(bytes, byteOrder, exif);
    return {bytes.begin(), bytes.end()};
  }
  std::string xmpPacket() const {
    std::string packet;
    if (!xmp.empty()) Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::useCompactFormat);
    return packet;
  }
  std::string iptcBytes() const {
    const Exiv2::DataBuf bytes = Exiv2::IptcParser::encode(iptc);
    return {bytes.pData_, bytes.pData_ + bytes.size_};
  }
};

namespace {

// Exiv2 0.27 returns auto_ptr.
std::unique_ptr<Exiv2::Image> openImage(const std::string& path) {
  return std::unique_ptr<Exiv2::Image>(Exiv2::ImageFactory::open(path).release());
}

std::unique_ptr<Exiv2::Image> openImage(const std::vector<std::uint8_t>& file) {
  return std::unique_ptr<Exiv2::Image>(
      Exiv2::ImageFactory::open(file.data(), static_cast<long>(file.size())).release());
}

bool readByExiv2(Format format) {
  return !traits(format).metadataByEncoder && format != Format::kJxl;
}

// Tags of the first directory that describe how a TIFF file stores its pixels, or hold what travels
// in another way (XMP 700, IPTC 33723, Photoshop 34377, ICC 34675): each file has its own.
bool isStructure(const Exiv2::Exifdatum& datum) {
  static constexpr std::array<int, 38> kTags{254, 255, 256, 257, 258, 259,   262,   263,  264, 265,
                                             266, 273, 277, 278, 279, 284,   288,   289,  317, 320,
                                             321, 322, 323, 324, 325, 330,   338,   339,  340, 341,
                                             347, 512, 513, 514, 700, 33723, 34377, 34675};
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

constexpr std::string_view kExifMarker("Exif\0\0", 6);

void decodeExif(const std::vector<std::uint8_t>& blob, Exiv2::ExifData& exif,
                Exiv2::ByteOrder& order) {
  std::string_view bytes(reinterpret_cast<const char*>(blob.data()), blob.size());
  if (bytes.starts_with(kExifMarker)) bytes.remove_prefix(kExifMarker.size());
  if (bytes.empty()) return;
  order = Exiv2::ExifParser::decode(exif, reinterpret_cast<const Exiv2::byte*>(bytes.data()),
                                    static_cast<std::uint32_t>(bytes.size()));
}

bool holds(const Exiv2::ExifData& exif, const char* key) {
  return exif.findKey(Exiv2::ExifKey(key)) != exif.end();
}

void replaceInt(Exiv2::ExifData& exif, const char* key, int value) {
  if (holds(exif, key)) exif[key] = static_cast<std::uint32_t>(value);
}

void replaceInt(Exiv2::XmpData& xmp, const char* key, int value) {
  if (xmp.findKey(Exiv2::XmpKey(key)) != xmp.end()) xmp[key] = std::to_string(value);
}

bool isMakerNote(const Exiv2::Exifdatum& datum) {
  // Every group outside the standard belongs to a maker note.
  static constexpr std::array<std::string_view, 6> kStandard{"Image", "Photo",     "GPSInfo",
                                                             "Iop",   "Thumbnail", "MakerNote"};
  return std::find(kStandard.begin(), kStandard.end(), datum.groupName()) == kStandard.end();
}

template <typename Data, typename Condition>
void eraseIf(Data& data, const Condition& condition) {
  for (auto datum = data.begin(); datum != data.end();)
    datum = condition(*datum) ? data.erase(datum) : std::next(datum);
}

std::string summaryOf(Exiv2::ExifData exif, std::size_t icc, long xmp, long iptc) {
  std::string text;
  const auto add = [&text](const char* what, std::size_t count, const char* unit) {
    if (count == 0) return;
    if (!text.empty()) text += ", ";
    text += std::string(what) + ' ' + std::to_string(count) + ' ' + unit;
  };
  dropStructure(exif);
  const auto makers =
      static_cast<std::size_t>(std::count_if(exif.begin(), exif.end(), isMakerNote));
  add("ICC", icc, "bytes");
  add("EXIF", static_cast<std::size_t>(exif.count()) - makers, "tags");
  add("maker note", makers, "tags");
  add("XMP", static_cast<std::size_t>(xmp), "properties");
  add("IPTC", static_cast<std::size_t>(iptc), "fields");
  return text.empty() ? "none" : text;
}

std::string summaryOf(Exiv2::Image& image) {
  image.readMetadata();
  const Exiv2::DataBuf* icc = image.iccProfile();
  return summaryOf(image.exifData(), icc ? static_cast<std::size_t>(icc->size_) : 0,
                   image.xmpData().count(), image.iptcData().count());
}

// For formats that Exiv2 does not read.
std::string summaryOf(const vips::VImage& image, std::istream& file, Format format) {
  JxlMetadata bytes;
  if (format == Format::kJxl)
    bytes = readJxlMetadata(file);
  else
    bytes = {headerBlob(image, VIPS_META_EXIF_NAME), xmpOf(image)};
  Exiv2::ExifData exif;
  Exiv2::XmpData xmp;
  Exiv2::ByteOrder order{};
  decodeExif(bytes.exif, exif, order);
  Exiv2::XmpParser::decode(xmp, std::string(bytes.xmp.begin(), bytes.xmp.end()));
  return summaryOf(exif, headerBlob(image, VIPS_META_ICC_NAME).size(), xmp.count(), 0);
}

template <typename Summary>
std::string orReason(const Summary& summary) try {
  return summary();
} catch (const Exiv2::AnyError& error) {
  return std::string("not readable: ") + error.what();
} catch (const vips::VError&) {
  return "not readable: " + vipsReason();
}

}  // namespace

void initialiseMetadata() {
  Exiv2::XmpParser::initialize();
  Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
}

Metadata::Metadata(const std::filesystem::path& path, const Picture& picture)
    : content_(std::make_unique<Content>()) {
  if (readByExiv2(picture.format)) try {
      const auto image = openImage(path.string());
      image->readMetadata();
      content_->exif = image->exifData();
      content_->iptc = image->iptcData();
      content_->xmp = image->xmpData();
      content_->comment = image->comment();
      if (image->byteOrder() != Exiv2::invalidByteOrder) content_->byteOrder = image->byteOrder();
    } catch (const Exiv2::AnyError& error) {
      notes_.push_back(picture.format == Format::kTiff && codingOf(path, Format::kTiff).bigTiff
                           ? "EXIF of a BigTIFF, if there is any, is not kept"
                           : std::string("some metadata could not be read: ") + error.what());
    }
  try {
    if (content_->iptc.empty() && !picture.iptc.empty())
      Exiv2::IptcParser::decode(content_->iptc, picture.iptc.data(),
                                static_cast<std::uint32_t>(picture.iptc.size()));
    if (content_->exif.empty()) decodeExif(picture.exif, content_->exif, content_->byteOrder);
    if (content_->xmp.empty() && !picture.xmp.empty()) {
      Exiv2::XmpParser::decode(content_->xmp, std::string(picture.xmp.begin(), picture.xmp.end()));
    }
  } catch (const Exiv2::AnyError& error) {
    notes_.push_back(std::string("some metadata could not be read: ") + error.what());
  }
  dropStructure(content_->exif);
  if (traits(picture.format).upright) takeOrientation();
}

Metadata::~Metadata() = default;

void Metadata::strip() {
  auto bare = std::make_unique<Content>();
  bare->byteOrder = content_->byteOrder;
  const auto orientation = content_->exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
  if (orientation != content_->exif.end()) bare->exif.add(*orientation);
  content_ = std::move(bare);
}

void Metadata::stripLocation() {
  eraseIf(content_->exif, [](const Exiv2::Exifdatum& datum) {
    return datum.groupName() == "GPSInfo" || datum.key() == "Exif.Image.GPSTag";
  });
  // What a maker note tells is known to its maker; several have places in it.
  eraseIf(content_->exif, [](const Exiv2::Exifdatum& datum) {
    return isMakerNote(datum) || datum.key() == "Exif.Photo.MakerNote";
  });
  eraseIf(content_->xmp, [](const Exiv2::Xmpdatum& datum) {
    static constexpr std::array<std::string_view, 8> kPlaces{
        "Xmp.exif.GPS",          "Xmp.iptc.Location",  "Xmp.iptc.CountryCode",
        "Xmp.iptcExt.Location",  "Xmp.photoshop.City", "Xmp.photoshop.State",
        "Xmp.photoshop.Country", "Xmp.mwg-rs.Location"};
    const std::string key = datum.key();
    return std::any_of(kPlaces.begin(), kPlaces.end(),
                       [&](std::string_view place) { return key.starts_with(place); });
  });
  eraseIf(content_->iptc, [](const Exiv2::Iptcdatum& datum) {
    static constexpr std::array<int, 7> kPlaces{26, 27, 90, 92, 95, 100, 101};
    return datum.record() == 2 &&
           std::find(kPlaces.begin(), kPlaces.end(), datum.tag()) != kPlaces.end();
  });
}

int Metadata::orientation() const {
  const auto tag = content_->exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
  const long value = tag == content_->exif.end() || tag->count() == 0 ? 1 : tag->toLong();
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

int Metadata::takeOrientation() {
  const int taken = orientation();
  replaceInt(content_->exif, "Exif.Image.Orientation", 1);
  replaceInt(content_->xmp, "Xmp.tiff.Orientation", 1);
  return taken;
}

void Metadata::setSize(int width, int height) {
  for (const char* key : {"Exif.Photo.PixelXDimension", "Exif.Iop.RelatedImageWidth"}) {
    replaceInt(content_->exif, key, width);
  }
  for (const char* key : {"Exif.Photo.PixelYDimension", "Exif.Iop.RelatedImageLength"}) {
    replaceInt(content_->exif, key, height);
  }
  for (const char* key : {"Xmp.exif.PixelXDimension", "Xmp.tiff.ImageWidth"}) {
    replaceInt(content_->xmp, key, width);
  }
  for (const char* key : {"Xmp.exif.PixelYDimension", "Xmp.tiff.ImageLength"}) {
    replaceInt(content_->xmp, key, height);
  }
}

void Metadata::attach(std::vector<std::uint8_t>& file, Format format) {
  if ((format == Format::kWebp || format == Format::kJxl) && !content_->iptc.empty())
    notes_.push_back("IPTC is left out: " + std::string(traits(format).name) +
                     " has no place for it");
  if (format == Format::kPng || format == Format::kJxl) return attachByChunks(file, format);
  try {
    attachByExiv2(file, format, *content_);
  } catch (const Exiv2::AnyError& first) {
    // XMP is what outgrows the 64 kB segments of JPEG in practice.
    Content reduced = *content_;
    reduced.xmp.clear();
    try {
      attachByExiv2(file, format, reduced);
    } catch (const Exiv2::AnyError& error) {
      throw FileError(std::string("cannot write its metadata: ") + error.what());
    }
    notes_.push_back(std::string("XMP is left out: ") + first.what());
  }
}

void Metadata::handTo(Picture& picture, Format format) try {
  const bool tiff = format == Format::kTiff;
  const std::string name = tiff ? "a TIFF above 4 GB" : std::string(traits(format).name);
  const std::string exif = tiff ? "" : content_->exifBytes();
  if (tiff && !content_->exif.empty())
    notes_.push_back("EXIF is left out: " + name + " has no place for it");
  if (!tiff && !content_->iptc.empty())
    notes_.push_back("IPTC is left out: " + name + " has no place for it");
  picture.exif.clear();
  if (!exif.empty()) {
    picture.exif.assign(kExifMarker.begin(), kExifMarker.end());
    picture.exif.insert(picture.exif.end(), exif.begin(), exif.end());
  }
  const std::string xmp = content_->xmpPacket(), iptc = tiff ? content_->iptcBytes() : "";
  picture.xmp.assign(xmp.begin(), xmp.end());
  picture.iptc.assign(iptc.begin(), iptc.end());
} catch (const Exiv2::AnyError& error) {
  throw FileError(std::string("cannot write its metadata: ") + error.what());
}

void Metadata::attachByExiv2(std::vector<std::uint8_t>& file, Format format,
                             const Content& content) {
  const auto image = openImage(file);
  image->readMetadata();
  if (format != Format::kTiff && !image->exifData().empty()) {
    // libvips writes a small EXIF block of its own, and Exiv2 would keep its byte order. A maker
    // note that Exiv2 cannot read is copied as it is and must keep the order it came in.
    image->clearExifData();
    image->writeMetadata();
    image->readMetadata();
  }
  // A TIFF keeps the tags that libvips wrote; JPEG and WebP get the source's and nothing else.
  Exiv2::ExifData exif = format == Format::kTiff ? image->exifData() : Exiv2::ExifData();
  for (const Exiv2::Exifdatum& datum : content.exif) {
    const auto old = exif.findKey(Exiv2::ExifKey(datum.key()));
    if (old != exif.end()) exif.erase(old);
    exif.add(datum);
  }
  image->setByteOrder(format == Format::kTiff ? image->byteOrder() : content.byteOrder);
  image->setExifData(exif);
  if (format != Format::kWebp) image->setIptcData(content.iptc);
  image->setXmpData(content.xmp);
  if (format == Format::kJpeg && !content.comment.empty()) image->setComment(content.comment);
  image->writeMetadata();

  Exiv2::BasicIo& io = image->io();
  if (io.open() != 0) throw FileError("cannot write its metadata");
  io.seek(0, Exiv2::BasicIo::beg);
  const Exiv2::DataBuf whole = io.read(static_cast<long>(io.size()));
  file.assign(whole.pData_, whole.pData_ + whole.size_);
}

void Metadata::attachByChunks(std::vector<std::uint8_t>& file, Format format) try {
  const std::string exif = content_->exifBytes(), xmp = content_->xmpPacket();
  if (format == Format::kJxl) return insertJxlMetadata(file, exif, xmp);
  if (!exif.empty()) insertPngExif(file, exif);
  if (!xmp.empty()) insertPngXmp(file, xmp);
  if (!content_->iptc.empty()) insertPngIptc(file, content_->iptcBytes());
} catch (const Exiv2::AnyError& error) {
  throw FileError(std::string("cannot write its metadata: ") + error.what());
}

std::string Metadata::summary(const std::filesystem::path& path, Format format) {
  return orReason([&] {
    if (readByExiv2(format)) return summaryOf(*openImage(path.string()));
    std::ifstream file(path, std::ios::binary);
    return summaryOf(openPicture(path, format, Strictness::kLenient, 1), file, format);
  });
}

std::string Metadata::summary(const std::vector<std::uint8_t>& file, Format format) {
  return orReason([&] {
    if (readByExiv2(format)) return summaryOf(*openImage(file));
    std::istringstream bytes({file.begin(), file.end()});
    return summaryOf(vips::VImage::new_from_buffer(file.data(), file.size(), ""), bytes, format);
  });
}

}  // namespace vx::cli
