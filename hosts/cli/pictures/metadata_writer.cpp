// Metadata::attach, by format.
#include <cmath>
#include <string_view>

#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/colour.h"
#include "hosts/cli/pictures/jxl_boxes.h"
#include "hosts/cli/pictures/metadata.h"
#include "hosts/cli/pictures/metadata_content.h"
#include "hosts/cli/pictures/parts/extended_xmp.h"
#include "hosts/cli/pictures/parts/motion_photo.h"

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;
using File = std::vector<std::uint8_t>;

constexpr const char* kComment = "Comment";

// What the format states itself goes before EXIF, but in a JPEG, where readers prefer EXIF.
std::optional<Resolution> resolutionFor(Format format, const MetadataContent& content) {
  if (content.ownIsStated && format == content.source) return content.own;
  const bool exifFirst = content.source == Format::kJpeg;
  const auto& first = exifFirst ? content.exifs : content.own;
  return first ? first : exifFirst ? content.own : content.exifs;
}

bool alike(const std::optional<Resolution>& a, const Resolution& b) {
  return a && a->shapeOnly == b.shapeOnly && std::abs(a->x / b.x - 1) < 1e-4 &&
         std::abs(a->y / b.y - 1) < 1e-4;
}

// `content` has the tags where the format has no other place, or where they would contradict.
void settleResolution(Format format, MetadataContent& content) {
  const auto resolution = resolutionFor(format, content);
  if (!resolution || format == content.source) return;
  // An EXIF block without resolution stands for 72 dpi, whatever the JPEG says itself.
  const bool byTags = format != Format::kPng && (format != Format::kJpeg || !content.exif.empty());
  const auto stated = resolutionOf(content.exif);
  if ((byTags || stated) && !alike(stated, *resolution)) setResolution(content.exif, resolution);
}

// Empty where there is nothing.
std::string xmpPacket(const Exiv2::XmpData& xmp) {
  std::string packet;
  if (!xmp.empty() && Exiv2::XmpParser::encode(packet, xmp) != 0)
    throw Exiv2::Error(Exiv2::kerXMPToolkitError);
  return packet;
}

std::string iptcBytes(const Exiv2::IptcData& iptc) {
  const Exiv2::DataBuf bytes = Exiv2::IptcParser::encode(iptc);
  return {bytes.pData_, bytes.pData_ + bytes.size_};
}

std::string inSegments(std::uint8_t marker, std::string_view head, std::string_view data) {
  std::string segments;
  const std::size_t room = kMaxSegment - head.size();
  for (; !data.empty(); data.remove_prefix(std::min(room, data.size())))
    segments += jpegSegment(marker, std::string(head).append(data.substr(0, room)));
  return segments;
}

void attachToJpeg(File& file, const MetadataContent& content) {
  std::string segments;
  if (!content.exif.empty())
    segments += inSegments(marker::kApp1, kExifMarker, encodeExif(content.exif, content.byteOrder));
  if (!content.xmp.empty()) segments += xmpSegments(content.xmp);
  if (!content.iptc.empty()) {
    const Exiv2::DataBuf resources = Exiv2::Photoshop::setIptcIrb(nullptr, 0, content.iptc);
    segments +=
        inSegments(marker::kApp13, "Photoshop 3.0\0"sv,
                   textOf(Bytes(resources.pData_, static_cast<std::size_t>(resources.size_))));
  }
  segments += inSegments(marker::kComment, "", content.comment);
  setJfifResolution(file, resolutionFor(Format::kJpeg, content));
  replaceMetadataSegments(file, segments);
  file.insert(file.end(), content.extras.video.begin(), content.extras.video.end());
}

void attachToPng(File& file, const MetadataContent& content, bool profile) {
  std::string chunks = colourChunks(content.png, profile);
  removePngChunks(file, "pHYs");
  if (const auto resolution = resolutionFor(Format::kPng, content))
    chunks += pngChunk("pHYs", content.png.phys.empty() ? physOf(*resolution) : content.png.phys);
  for (const std::string& text : content.png.texts) chunks += text;
  if (content.source != Format::kPng && !content.comment.empty())
    chunks += pngTextChunk(kComment, content.comment);
  if (!content.exif.empty())
    chunks += pngChunk("eXIf", encodeExif(content.exif, content.byteOrder));
  if (!content.xmp.empty()) chunks += pngXmpChunk(xmpPacket(content.xmp));
  if (!content.iptc.empty()) chunks += pngIptcChunk(iptcBytes(content.iptc));
  insertPngChunks(file, chunks);
}

void attachToJxl(File& file, const MetadataContent& content) {
  const std::string exif = content.exif.empty() ? "" : encodeExif(content.exif, content.byteOrder);
  insertJxlMetadata(file, exif, xmpPacket(content.xmp));
}

void attachByExiv2(File& file, Format format, const MetadataContent& content) {
  const auto image = openImage(file);
  image->readMetadata();
  if (format != Format::kTiff && !image->exifData().empty()) {
    // libvips writes a small EXIF block of its own, and Exiv2 would keep its byte order. A maker
    // note that Exiv2 cannot read is copied as it is and must keep the order it came in.
    image->clearExifData();
    image->writeMetadata();
    image->readMetadata();
  }
  // A TIFF keeps the tags that libvips wrote; WebP gets the source's and nothing else.
  Exiv2::ExifData exif;
  if (format == Format::kTiff) exif = image->exifData();
  for (const Exiv2::Exifdatum& datum : content.exif) {
    const auto old = exif.findKey(Exiv2::ExifKey(datum.key()));
    if (old != exif.end()) exif.erase(old);
    exif.add(datum);
  }
  image->setByteOrder(format == Format::kTiff ? image->byteOrder() : content.byteOrder);
  image->setExifData(exif);
  if (format != Format::kWebp) image->setIptcData(content.iptc);
  image->setXmpData(content.xmp);
  image->writeMetadata();

  Exiv2::BasicIo& io = image->io();
  if (io.open() != 0) throw FileError("cannot write its metadata");
  io.seek(0, Exiv2::BasicIo::beg);
  const Exiv2::DataBuf whole = io.read(static_cast<long>(io.size()));
  file.assign(whole.pData_, whole.pData_ + whole.size_);
  if (format == Format::kTiff) setTiffResolution(file, resolutionFor(format, content));
}

// Makes what the content claims true of a result of `format`.
void settle(Format format, MetadataContent& content, std::vector<std::string>& notes) {
  const bool toTiff = format == Format::kTiff;
  settleClaims(content.xmp, content.extras.video.size());
  settleResolution(format, content);
  const auto described = content.exif.findKey(Exiv2::ExifKey(kDescription)) != content.exif.end();
  if (!described && !content.comment.empty() && format != Format::kJpeg && format != Format::kPng)
    content.exif[kDescription] = content.comment;
  if (!content.iptc.empty() && !toTiff && format != Format::kJpeg && format != Format::kPng)
    notes.push_back("IPTC is left out: " + std::string(traits(format).name) +
                    " has no place for it");
}

std::vector<std::uint8_t> inVector(std::string_view text) { return {text.begin(), text.end()}; }

}  // namespace

void Metadata::handTo(Picture& picture, Format format) try {
  const bool tiff = format == Format::kTiff;
  settle(format, *content_, notes_);
  picture.exif.clear();
  if (!content_->exif.empty() && tiff)
    notes_.emplace_back("EXIF is left out: a TIFF above 4 GB has no place for it");
  else if (!content_->exif.empty())
    picture.exif =
        inVector(std::string(kExifMarker) + encodeExif(content_->exif, content_->byteOrder));
  picture.xmp = inVector(xmpPacket(content_->xmp));
  picture.iptc = inVector(tiff ? iptcBytes(content_->iptc) : std::string());
} catch (const Exiv2::AnyError& error) {
  throw FileError(std::string("cannot write its metadata: ") + error.what());
}

void Metadata::attach(File& file, Format format, bool profile, bool handed) try {
  if (handed) {
    if (format == Format::kTiff) setTiffResolution(file, resolutionFor(format, *content_));
    return;
  }
  settle(format, *content_, notes_);
  if (format == Format::kJpeg)
    attachToJpeg(file, *content_);
  else if (format == Format::kPng)
    attachToPng(file, *content_, profile);
  else if (format == Format::kJxl)
    attachToJxl(file, *content_);
  else
    attachByExiv2(file, format, *content_);
} catch (const Exiv2::AnyError& error) {
  throw FileError(std::string("cannot write its metadata: ") + error.what());
}

}  // namespace vx::cli
