#include "hosts/cli/pictures/metadata.h"

#include <algorithm>
#include <array>
#include <exiv2/exiv2.hpp>
#include <set>
#include <string_view>

#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/png_chunks.h"

namespace vx::cli {

struct Metadata::Content {
  Exiv2::ExifData exif;
  Exiv2::IptcData iptc;
  Exiv2::XmpData xmp;
  std::string comment;
  Exiv2::ByteOrder byteOrder = Exiv2::littleEndian;
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

void decodeExif(const std::vector<std::uint8_t>& blob, Exiv2::ExifData& exif,
                Exiv2::ByteOrder& order) {
  std::string_view bytes(reinterpret_cast<const char*>(blob.data()), blob.size());
  constexpr std::string_view kMarker("Exif\0\0", 6);
  if (bytes.starts_with(kMarker)) bytes.remove_prefix(kMarker.size());
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

std::string summaryOf(Exiv2::Image& image) {
  std::string text;
  const auto add = [&text](const char* what, std::size_t count, const char* unit) {
    if (count == 0) return;
    if (!text.empty()) text += ", ";
    text += std::string(what) + ' ' + std::to_string(count) + ' ' + unit;
  };
  image.readMetadata();
  Exiv2::ExifData exif = image.exifData();
  dropStructure(exif);
  const auto makers =
      static_cast<std::size_t>(std::count_if(exif.begin(), exif.end(), isMakerNote));
  const Exiv2::DataBuf* icc = image.iccProfile();
  add("ICC", icc ? static_cast<std::size_t>(icc->size_) : 0, "bytes");
  add("EXIF", static_cast<std::size_t>(exif.count()) - makers, "tags");
  add("maker note", makers, "tags");
  add("XMP", static_cast<std::size_t>(image.xmpData().count()), "properties");
  add("IPTC", static_cast<std::size_t>(image.iptcData().count()), "fields");
  return text.empty() ? "none" : text;
}

template <typename Place>
std::string summaryAt(const Place& place) {
  try {
    return summaryOf(*openImage(place));
  } catch (const Exiv2::AnyError& error) {
    return std::string("not readable: ") + error.what();
  }
}

std::string_view view(const Exiv2::byte* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace

void initialiseMetadata() {
  Exiv2::XmpParser::initialize();
  Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
}

Metadata::Metadata(const std::filesystem::path& path, const Picture& picture)
    : content_(std::make_unique<Content>()) {
  try {
    const auto image = openImage(path.string());
    image->readMetadata();
    content_->exif = image->exifData();
    content_->iptc = image->iptcData();
    content_->xmp = image->xmpData();
    content_->comment = image->comment();
    if (image->byteOrder() != Exiv2::invalidByteOrder) content_->byteOrder = image->byteOrder();
  } catch (const Exiv2::AnyError& error) {
    notes_.push_back(std::string("some metadata could not be read: ") + error.what());
  }
  try {
    if (content_->exif.empty()) decodeExif(picture.exif, content_->exif, content_->byteOrder);
    if (content_->xmp.empty() && !picture.xmp.empty()) {
      Exiv2::XmpParser::decode(content_->xmp, std::string(picture.xmp.begin(), picture.xmp.end()));
    }
  } catch (const Exiv2::AnyError& error) {
    notes_.push_back(std::string("some metadata could not be read: ") + error.what());
  }
  dropStructure(content_->exif);
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
  if (format == Format::kPng) return attachToPng(file);
  if (format == Format::kWebp && !content_->iptc.empty()) {
    notes_.emplace_back("IPTC is left out: webp has no place for it");
  }
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

void Metadata::attachToPng(std::vector<std::uint8_t>& file) {
  try {
    if (!content_->exif.empty()) {
      Exiv2::Blob exif;
      Exiv2::ExifParser::encode(exif, content_->byteOrder, content_->exif);
      if (!exif.empty()) insertPngExif(file, view(exif.data(), exif.size()));
    }
    if (!content_->xmp.empty()) {
      std::string packet;
      Exiv2::XmpParser::encode(packet, content_->xmp, Exiv2::XmpParser::useCompactFormat);
      insertPngXmp(file, packet);
    }
    if (!content_->iptc.empty()) {
      const Exiv2::DataBuf iptc = Exiv2::IptcParser::encode(content_->iptc);
      insertPngIptc(file, view(iptc.pData_, static_cast<std::size_t>(iptc.size_)));
    }
  } catch (const Exiv2::AnyError& error) {
    throw FileError(std::string("cannot write its metadata: ") + error.what());
  }
}

std::string Metadata::summary(const std::filesystem::path& path) {
  return summaryAt(path.string());
}

std::string Metadata::summary(const std::vector<std::uint8_t>& file) { return summaryAt(file); }

}  // namespace vx::cli
