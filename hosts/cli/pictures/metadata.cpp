#include "hosts/cli/pictures/metadata.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/metadata_content.h"

namespace vx::cli {
namespace {

void replaceInt(Exiv2::ExifData& exif, const char* key, int value) {
  if (exif.findKey(Exiv2::ExifKey(key)) != exif.end())
    exif[key] = static_cast<std::uint32_t>(value);
}

void replaceInt(Exiv2::XmpData& xmp, const char* key, int value) {
  if (xmp.findKey(Exiv2::XmpKey(key)) != xmp.end()) xmp[key] = std::to_string(value);
}

template <typename Data, typename Condition>
void eraseIf(Data& data, const Condition& condition) {
  for (auto datum = data.begin(); datum != data.end();)
    datum = condition(*datum) ? data.erase(datum) : std::next(datum);
}

std::string counted(std::size_t number, const std::string& thing) {
  return std::to_string(number) + ' ' + thing + (number == 1 ? "" : "s");
}

void dropAll(MetadataContent& content) {
  Exiv2::ExifData bare;
  const auto orientation = content.exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
  if (orientation != content.exif.end()) bare.add(*orientation);
  content.exif = bare;
  content.xmp.clear();
  content.iptc.clear();
  content.comment.clear();
  content.png.texts.clear();
}

void dropLocation(MetadataContent& content) {
  // What a maker note tells is known to its maker; several have places in it.
  eraseIf(content.exif, [](const Exiv2::Exifdatum& datum) {
    return datum.groupName() == "GPSInfo" || datum.key() == "Exif.Image.GPSTag" ||
           isMakerNote(datum) || datum.key() == "Exif.Photo.MakerNote";
  });
  eraseIf(content.xmp, [](const Exiv2::Xmpdatum& datum) {
    static constexpr std::array<std::string_view, 8> kPlaces{
        "Xmp.exif.GPS",          "Xmp.iptc.Location",  "Xmp.iptc.CountryCode",
        "Xmp.iptcExt.Location",  "Xmp.photoshop.City", "Xmp.photoshop.State",
        "Xmp.photoshop.Country", "Xmp.mwg-rs.Location"};
    const std::string key = datum.key();
    return std::any_of(kPlaces.begin(), kPlaces.end(),
                       [&](std::string_view place) { return key.starts_with(place); });
  });
  eraseIf(content.iptc, [](const Exiv2::Iptcdatum& datum) {
    static constexpr std::array<int, 7> kPlaces{26, 27, 90, 92, 95, 100, 101};
    return datum.record() == 2 &&
           std::find(kPlaces.begin(), kPlaces.end(), datum.tag()) != kPlaces.end();
  });
}

}  // namespace

void initialiseMetadata() {
  Exiv2::XmpParser::initialize();
  Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
  Exiv2::XmpProperties::registerNs("http://ns.adobe.com/xmp/note/", "xmpNote");
}

Metadata::Metadata(const std::filesystem::path& path)
    : content_(std::make_unique<MetadataContent>()) {
  content_->source = formatByContent(path);
  readContent(path, *content_);
  if (content_->bigTiff) notes_.emplace_back("EXIF of a BigTIFF, if there is any, is not kept");
}

Metadata::~Metadata() = default;

const PngContent& Metadata::png() const { return content_->png; }

std::string Metadata::leaveOut(Format format, const Dropped& dropped) {
  JpegExtras& extras = content_->extras;
  std::vector<std::string> lost;
  if (extras.gainMap) lost.emplace_back("a gain map");
  // A video knows its place too.
  const bool keepsVideo = format == Format::kJpeg && !dropped.all && !dropped.location;
  if (!extras.video.empty() && !keepsVideo) {
    lost.emplace_back("the video of a motion photo");
    extras.video.clear();
  }
  if (extras.pictures > 0)
    lost.push_back(counted(static_cast<std::size_t>(extras.pictures), "further picture"));
  if (extras.unknownBytes > 0)
    lost.push_back(counted(extras.unknownBytes, "byte") + " behind the picture");
  if (content_->layers) lost.emplace_back("the layers of an image editor");
  if (!dropped.all) {
    lost.insert(lost.end(), content_->unreadable.begin(), content_->unreadable.end());
    const bool jpeg = format == Format::kJpeg;
    if ((jpeg && !content_->splitExif) || format == Format::kWebp) {
      const auto gone = shrinkExif(content_->exif, content_->byteOrder, kMaxExif);
      if (!gone.empty())
        lost.push_back("EXIF beyond 64 kB (" + gone[0] + (gone.size() > 1 ? " and others)" : ")"));
    }
    // Of the texts of a PNG, one is its comment.
    const bool comment = !content_->comment.empty(), fromPng = content_->source == Format::kPng;
    const bool room =
        jpeg || content_->exif.findKey(Exiv2::ExifKey(kDescription)) == content_->exif.end();
    const std::size_t texts = fromPng ? content_->png.texts.size() : comment ? 1 : 0;
    const std::size_t kept = std::min<std::size_t>(texts, comment && room ? 1 : 0);
    if (format != Format::kPng && texts > kept) lost.push_back(counted(texts - kept, "text"));
  }
  std::vector<std::string> told = lost;
  if (extras.previews > 0)
    told.push_back(counted(static_cast<std::size_t>(extras.previews), "preview"));
  if (!told.empty()) notes_.push_back("left out: " + listed(told));
  if (extras.emptyClaims && !dropped.all)
    notes_.emplace_back("XMP claims a video or gain map that is not there; it no longer does");
  return listed(lost);
}

void Metadata::add(const Picture& picture) {
  try {
    if (content_->iptc.empty() && !picture.iptc.empty())
      Exiv2::IptcParser::decode(content_->iptc, picture.iptc.data(),
                                static_cast<std::uint32_t>(picture.iptc.size()));
    if (content_->exif.empty()) decodeExif(picture.exif, *content_);
    if (content_->xmp.empty() && !picture.xmp.empty()) {
      const std::string packet(picture.xmp.begin(), picture.xmp.end());
      // Of the other formats Exiv2 told so before.
      if (Exiv2::XmpParser::decode(content_->xmp, packet) != 0 && traits(picture.format).upright)
        notes_.emplace_back("left out: unreadable XMP");
    }
  } catch (const std::exception& error) {
    notes_.push_back(std::string("left out: metadata that is damaged: ") + error.what());
  }
  finishExif(*content_);
  if (traits(picture.format).upright) takeOrientation();
  // Exiv2 reads no BigTIFF. What libvips takes for unknown is one pixel per millimetre.
  if (content_->bigTiff && picture.xResolution != 1)
    content_->own = {1000 * picture.xResolution, 1000 * picture.yResolution, false};
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

void Metadata::drop(const Dropped& dropped) {
  if (dropped.all) dropAll(*content_);
  if (dropped.location) dropLocation(*content_);
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

}  // namespace vx::cli
