#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>
#include <vips/vips8>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/console/quiet_stderr.h"
#include "hosts/cli/pictures/decoder.h"
#include "hosts/cli/pictures/jxl_boxes.h"
#include "hosts/cli/pictures/picture.h"
#include "hosts/cli/pictures/png_header.h"
#include "hosts/cli/pictures/vips_error.h"

namespace vx::cli {
namespace {

using vips::VError;
using vips::VImage;

// What libvips could not decode, unlike what is refused here.
class Undecodable : public FileError {
 public:
  Undecodable() : FileError(vipsReason()) {}
};

int headerInt(const VImage& image, const char* name, int otherwise) {
  return image.get_typeof(name) == G_TYPE_INT ? image.get_int(name) : otherwise;
}

void refuseSeveralPictures(const VImage& image, std::uint32_t frames) {
  const auto pages =
      std::max(frames, static_cast<std::uint32_t>(headerInt(image, VIPS_META_N_PAGES, 1)));
  if (pages > 1) {
    throw FileError("holds " + std::to_string(pages) +
                    " pages or frames; only single pictures are handled");
  }
  if (headerInt(image, VIPS_META_N_SUBIFDS, 0) > 0) {
    throw FileError("holds further pictures inside (a raw file or a pyramid); not handled");
  }
}

// Colour channels without alpha; throws for what is not a plain 8 or 16-bit photograph.
int colourChannels(const VImage& image) {
  const VipsBandFormat samples = image.format();
  if (samples != VIPS_FORMAT_UCHAR && samples != VIPS_FORMAT_USHORT) {
    throw FileError(std::string("has ") + vips_enum_nick(VIPS_TYPE_BAND_FORMAT, samples) +
                    " samples; only unsigned 8 and 16-bit ones are handled");
  }
  int colours = 0;
  switch (image.interpretation()) {
    case VIPS_INTERPRETATION_B_W:
    case VIPS_INTERPRETATION_GREY16:
      colours = 1;
      break;
    case VIPS_INTERPRETATION_sRGB:
    case VIPS_INTERPRETATION_RGB:
    case VIPS_INTERPRETATION_RGB16:
      colours = 3;
      break;
    case VIPS_INTERPRETATION_CMYK:
      colours = 4;
      break;
    default:
      throw FileError(std::string("has colours in ") +
                      vips_enum_nick(VIPS_TYPE_INTERPRETATION, image.interpretation()) +
                      "; only grey, RGB and CMYK are handled");
  }
  const int extra = image.bands() - colours;
  if (extra < 0 || extra > (colours == 4 ? 0 : 1)) {
    throw FileError("has " + std::to_string(image.bands()) + " channels; not handled");
  }
  return colours;
}

// The part of an axis that is kept.
struct Span {
  int start, size;
};

// Placed as vxDenoiseEstNoise places the part that it looks at.
Span keptSpan(int size, int centre) {
  if (centre == 0 || size <= centre) return {0, size};
  return {(size - centre) / 4 * 2, centre};
}

// What the work will hold at once: the raster, its alpha, and the planes of the library.
void refuseTooLarge(int width, int height, int sampleBytes, const ReadOptions& options) {
  const double pixels = static_cast<double>(width) * height;
  const double kept = static_cast<double>(keptSpan(width, options.centre).size) *
                      keptSpan(height, options.centre).size;
  const double needed = kept * (4.0 * sampleBytes + options.libraryBytes);
  char text[160];
  if (pixels > options.maxMegapixels * 1e6) {
    std::snprintf(text, sizeof text,
                  "has %.1f megapixels and would need about %.1f GB of memory; --max-megapixels %g "
                  "is the limit",
                  pixels / 1e6, needed / 1e9, options.maxMegapixels);
    throw FileError(text);
  }
  const double memory =
      static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
  if (needed > memory) {
    std::snprintf(
        text, sizeof text,
        "has %.1f megapixels and would need about %.1f GB of memory; this machine has %.1f",
        pixels / 1e6, needed / 1e9, memory / 1e9);
    throw FileError(text);
  }
  const FormatTraits& output = traits(options.output);
  if (std::max(width, height) > output.maxAxis) {
    throw FileError("is " + std::to_string(width) + " x " + std::to_string(height) + " pixels; " +
                    std::string(output.name) + " output goes up to " +
                    std::to_string(output.maxAxis) + " on an axis");
  }
  if (options.claim) options.claim(needed);
}

// Where the rows of a file go; called by libvips in order, top to bottom.
struct Sink {
  Raster& raster;
  Progress& progress;
  int depth, colours;
  Span columns, rows;  // of the file, that the raster holds
  int height;          // of the file
};

int takeArea(VipsRegion* region, VipsRect* area, void* context) {
  auto& sink = *static_cast<Sink*>(context);
  if (cancelRequested()) return -1;
  const int bottom = area->top + area->height;
  const int left = std::max(area->left, sink.columns.start);
  const int right = std::min(area->left + area->width, sink.columns.start + sink.columns.size);
  for (int y = std::max(area->top, sink.rows.start);
       left < right && y < std::min(bottom, sink.rows.start + sink.rows.size); ++y) {
    sink.raster.takeRow(VIPS_REGION_ADDR(region, left, y), sink.depth, sink.colours,
                        left - sink.columns.start, y - sink.rows.start, right - left);
  }
  sink.progress.update(static_cast<int>(100LL * bottom / sink.height));
  return 0;
}

VImage cmykToSrgb(const VImage& image, std::vector<std::string>& notes) {
  const bool embedded = image.get_typeof(VIPS_META_ICC_NAME) == VIPS_TYPE_BLOB;
  notes.emplace_back(embedded ? "CMYK converted to sRGB by the profile in the file"
                              : "CMYK converted to sRGB by a generic profile (the file has none)");
  return image.icc_transform("srgb",
                             VImage::option()
                                 ->set("embedded", true)
                                 ->set("input_profile", "cmyk")
                                 ->set("intent", VIPS_INTENT_RELATIVE)
                                 ->set("depth", image.format() == VIPS_FORMAT_USHORT ? 16 : 8));
}

// What is kept in 8 bits though the file took fewer.
std::vector<std::string> notesOn(const PngHeader& header) {
  if (header.palette) return {"palette colours become full colours"};
  if (header.bitDepth < 8) return {std::to_string(header.bitDepth) + " bits per sample become 8"};
  return {};
}

Picture read(const std::filesystem::path& path, Format format, Strictness strictness,
             const ReadOptions& options, Progress& progress) {
  const int scale = options.previewScale;
  VImage image = openPicture(path, format, strictness, 1);
  // Reducing in the JPEG decoder is nearly free, but it drops incomplete blocks: use it only where
  // the result is exact.
  const bool inDecoder = format == Format::kJpeg && (scale == 2 || scale == 4 || scale == 8) &&
                         image.width() % scale == 0 && image.height() % scale == 0;
  if (inDecoder) image = openPicture(path, format, strictness, scale);
  const PngHeader png = format == Format::kPng ? pngHeader(path) : PngHeader();
  refuseSeveralPictures(image, png.frames);
  int colours = colourChannels(image);
  const int sampleBytes = image.format() == VIPS_FORMAT_USHORT ? 2 : 1;

  std::vector<std::string> notes = notesOn(png);
  if (colours == 4) {
    image = cmykToSrgb(image, notes);
    colours = 3;
  }
  if (scale > 1 && !inDecoder) {
    image = image.shrink(scale, scale, VImage::option()->set("ceil", true)).cast(image.format());
  }
  const bool alpha = image.bands() > colours;
  refuseTooLarge(image.width(), image.height(), sampleBytes, options);

  const int depth = 8 * sampleBytes;
  const Span columns = keptSpan(image.width(), options.centre);
  const Span rows = keptSpan(image.height(), options.centre);
  Picture picture{.format = format,
                  .sourceDepth = depth,
                  .colours = colours,
                  .raster = Raster(columns.size, rows.size,
                                   std::max(depth, outputDepth(options, depth)), alpha ? depth : 0),
                  .xResolution = image.xres(),
                  .yResolution = image.yres(),
                  .icc = headerBlob(image, VIPS_META_ICC_NAME),
                  .exif = headerBlob(image, VIPS_META_EXIF_NAME),
                  .xmp = xmpOf(image),
                  .iptc = headerBlob(image, VIPS_META_IPTC_NAME),
                  .orientation = 1,
                  .damaged = false,
                  .leastQuality = 0,
                  .notes = std::move(notes)};
  if (format == Format::kJxl) {
    std::ifstream file(path, std::ios::binary);
    JxlMetadata boxes = readJxlMetadata(file);
    picture.exif = std::move(boxes.exif);
    picture.xmp = std::move(boxes.xmp);
  }
  Sink sink{picture.raster, progress, depth, colours, columns, rows, image.height()};
  if (vips_sink_disc(image.get_image(), takeArea, &sink) != 0) {
    throwIfCancelled();
    throw Undecodable();
  }
  if (alpha && !traits(options.output).alpha && !picture.raster.opaque()) {
    if (options.background.empty())
      throw FileError("has transparency, which " + std::string(traits(options.output).name) +
                      " cannot hold; write PNG, TIFF or WebP, or give a --background");
    picture.raster.flatten(std::stoul(options.background, nullptr, 16));
    picture.notes.push_back("transparency put on the background " + options.background);
  }
  picture.raster.pad();
  return picture;
}

Picture readAs(const std::filesystem::path& path, Format format, Strictness strictness,
               const ReadOptions& options, Progress& progress) {
  const QuietStderr quiet(decoderPrints(format));
  try {
    return read(path, format, strictness, options, progress);
  } catch (const VError&) {
    throw Undecodable();
  } catch (const std::bad_alloc&) {
    throw FileError("not enough memory for a picture of this size");
  }
}

}  // namespace

int outputDepth(const ReadOptions& options, int sourceDepth) {
  return std::min(options.depth != 0 ? options.depth : sourceDepth,
                  traits(options.output).maxDepth);
}

Picture readPicture(const std::filesystem::path& path, const ReadOptions& options,
                    Progress& progress) {
  const Format format = formatByContent(path);
  std::string damage;
  try {
    return readAs(path, format, Strictness::kWhole, options, progress);
  } catch (const Undecodable& error) {
    damage = error.what();
    if (!options.acceptDamage)
      throw FileError("cannot read: " + damage + " (--accept-damage takes what can be read)");
  }
  ReadOptions again = options;
  again.claim = {};  // was granted
  Picture picture = readAs(path, format, Strictness::kLenient, again, progress);
  picture.damaged = true;
  picture.notes.push_back("damaged: " + damage);
  return picture;
}

}  // namespace vx::cli
