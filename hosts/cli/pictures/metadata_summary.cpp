// Metadata::summary: what is really in a file.
#include <algorithm>
#include <fstream>
#include <sstream>

#include "hosts/cli/console/error.h"
#include "hosts/cli/console/quiet_stderr.h"
#include "hosts/cli/pictures/decoder.h"
#include "hosts/cli/pictures/jxl_boxes.h"
#include "hosts/cli/pictures/metadata.h"
#include "hosts/cli/pictures/metadata_content.h"
#include "hosts/cli/pictures/vips_error.h"

namespace vx::cli {
namespace {

// What libvips alone reads, and the profile of all.
void readByVips(const vips::VImage& image, std::istream& file, MetadataContent& content) {
  JxlMetadata bytes;
  if (content.source == Format::kJxl)
    bytes = readJxlMetadata(file);
  else
    bytes = {headerBlob(image, VIPS_META_EXIF_NAME), xmpOf(image)};
  decodeExif(bytes.exif, content);
  Exiv2::XmpParser::decode(content.xmp, std::string(bytes.xmp.begin(), bytes.xmp.end()));
  finishExif(content);
}

std::string inWords(const MetadataContent& content, std::size_t profile) {
  std::vector<std::string> parts;
  const auto add = [&parts](const char* what, std::size_t count, const char* unit) {
    if (count > 0) parts.push_back(std::string(what) + std::to_string(count) + ' ' + unit);
  };
  const auto makers = static_cast<std::size_t>(
      std::count_if(content.exif.begin(), content.exif.end(), isMakerNote));
  add("ICC ", profile, "bytes");
  add("EXIF ", static_cast<std::size_t>(content.exif.count()) - makers, "tags");
  add("maker note ", makers, "tags");
  add("XMP ", static_cast<std::size_t>(content.xmp.count()), "properties");
  add("IPTC ", static_cast<std::size_t>(content.iptc.count()), "fields");
  add("", content.png.texts.size(), "texts");
  if (content.source == Format::kJpeg) add("comment ", content.comment.size(), "bytes");
  if (const auto resolution = content.own ? content.own : content.exifs)
    parts.push_back(inWords(*resolution));
  const JpegExtras& extras = content.extras;
  add("video ", extras.video.size(), "bytes");
  if (extras.gainMap) parts.emplace_back("gain map");
  add("", static_cast<std::size_t>(extras.pictures), "further pictures");
  add("", static_cast<std::size_t>(extras.previews), "previews");
  add("", extras.unknownBytes, "bytes behind the picture");
  if (content.layers) parts.emplace_back("layers");
  parts.insert(parts.end(), content.unreadable.begin(), content.unreadable.end());
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : ", ") + part;
  return text.empty() ? "none" : text;
}

template <typename Open>
std::string summaryOf(MetadataContent& content, std::istream& file, const Open& open) try {
  const QuietStderr quiet(decoderPrints(content.source));
  const vips::VImage image = open();
  if (traits(content.source).metadataByEncoder || content.source == Format::kJxl)
    readByVips(image, file, content);
  return inWords(content, headerBlob(image, VIPS_META_ICC_NAME).size());
} catch (const Exiv2::AnyError& error) {
  return std::string("not readable: ") + error.what();
} catch (const FileError& error) {
  return std::string("not readable: ") + error.what();
} catch (const vips::VError&) {
  return "not readable: " + vipsReason();
}

}  // namespace

std::string Metadata::summary(const std::filesystem::path& path, Format format) {
  MetadataContent content;
  content.source = format;
  readContent(path, content);
  std::ifstream file(path, std::ios::binary);
  return summaryOf(content, file,
                   [&] { return openPicture(path, format, Strictness::kLenient, 1); });
}

std::string Metadata::summary(Bytes file, Format format) {
  MetadataContent content;
  content.source = format;
  readContent(file, content);
  std::istringstream stream(format == Format::kJxl ? std::string(textOf(file)) : std::string());
  return summaryOf(content, stream,
                   [&] { return vips::VImage::new_from_buffer(file.data(), file.size(), ""); });
}

}  // namespace vx::cli
