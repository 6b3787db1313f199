#include "hosts/cli/pictures/decoder.h"

#include <string>
#include <string_view>

#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

const char* loaderOf(Format format) {
  switch (format) {
    case Format::kJpeg:
      return "jpegload";
    case Format::kPng:
      return "pngload";
    case Format::kTiff:
      return "tiffload";
    case Format::kWebp:
      return "webpload";
    case Format::kHeic:
    case Format::kAvif:
      return "heifload";
    case Format::kJxl:
      return "jxlload";
  }
  return "";
}

}  // namespace

vips::VImage openPicture(const std::filesystem::path& path, Format format, Strictness strictness,
                         int jpegShrink) {
  const char* loader = loaderOf(format);
  // HEIC, AVIF and JPEG XL are modules of libvips, which may be missing.
  if (vips_type_find("VipsOperation", loader) == 0)
    throw FileError("is a " + std::string(traits(format).name) +
                    " picture, which libvips as it is installed here cannot read");
  // The decoder of JPEG calls a warning what left it guessing at pixels; those of other formats
  // warn of less.
  const VipsFailOn failOn = strictness == Strictness::kLenient ? VIPS_FAIL_ON_NONE
                            : format == Format::kJpeg          ? VIPS_FAIL_ON_WARNING
                                                               : VIPS_FAIL_ON_ERROR;
  vips::VImage image;
  vips::VOption* options = vips::VImage::option()
                               ->set("filename", path.c_str())
                               ->set("out", &image)
                               ->set("access", VIPS_ACCESS_SEQUENTIAL)
                               ->set("fail_on", failOn);
  if (format == Format::kJpeg) options->set("shrink", jpegShrink);
  vips::VImage::call(loader, options);
  return image;
}

bool decoderPrints(Format format) {
  return format == Format::kJxl || format == Format::kHeic || format == Format::kAvif;
}

std::vector<std::uint8_t> headerBlob(const vips::VImage& image, const char* name) {
  if (image.get_typeof(name) != VIPS_TYPE_BLOB) return {};
  std::size_t size = 0;
  const auto* bytes = static_cast<const std::uint8_t*>(image.get_blob(name, &size));
  return {bytes, bytes + size};
}

std::vector<std::uint8_t> xmpOf(const vips::VImage& image) {
  std::vector<std::uint8_t> packet = headerBlob(image, VIPS_META_XMP_NAME);
  for (int i = 0; packet.empty() && i < 16; ++i) {
    packet = headerBlob(image, ("heif-mime-" + std::to_string(i)).c_str());
    if (std::string_view(reinterpret_cast<char*>(packet.data()), packet.size()).find("rdf:RDF") ==
        std::string_view::npos)
      packet.clear();
  }
  return packet;
}

}  // namespace vx::cli
