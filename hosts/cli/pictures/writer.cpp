#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vips/vips8>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/picture.h"
#include "hosts/cli/pictures/vips_error.h"

namespace vx::cli {
namespace {

using vips::VImage;

struct Source {
  const Picture& picture;
  Progress& progress;
  int depth;
  bool alpha;
};

int giveArea(VipsRegion* region, void*, void* context, void*, gboolean*) {
  const auto& source = *static_cast<const Source*>(context);
  if (cancelRequested()) {
    vips_error("vxicore", "cancelled");
    return -1;
  }
  const VipsRect& area = region->valid;
  for (int y = area.top; y < area.top + area.height; ++y) {
    source.picture.raster.giveRow(VIPS_REGION_ADDR(region, area.left, y), source.depth,
                                  source.picture.colours, source.alpha, area.left, y, area.width);
  }
  return 0;
}

void showPercent(VipsImage*, VipsProgress* state, Progress* progress) {
  progress->update(state->percent);
}

// An image that converts rows of the raster on demand, so that no second copy in the depth of the
// file is held.
VImage describe(Source& source, bool withMetadata) {
  const Picture& picture = source.picture;
  const bool deep = source.depth == 16;
  VipsImage* raw = vips_image_new();
  VImage image(raw);
  VipsInterpretation colours = deep ? VIPS_INTERPRETATION_RGB16 : VIPS_INTERPRETATION_sRGB;
  if (picture.colours == 1) {
    colours = deep ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W;
  }
  vips_image_init_fields(raw, picture.raster.width(), picture.raster.height(),
                         picture.colours + (source.alpha ? 1 : 0),
                         deep ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR, VIPS_CODING_NONE, colours,
                         picture.xResolution, picture.yResolution);
  if (vips_image_pipelinev(raw, VIPS_DEMAND_STYLE_THINSTRIP, nullptr) != 0 ||
      vips_image_generate(raw, nullptr, giveArea, nullptr, &source, nullptr) != 0) {
    throw vipsError("cannot write");
  }
  if (!picture.icc.empty()) {
    vips_image_set_blob_copy(raw, VIPS_META_ICC_NAME, picture.icc.data(), picture.icc.size());
  }
  const auto setBlob = [raw](const char* name, const std::vector<std::uint8_t>& bytes) {
    if (!bytes.empty()) vips_image_set_blob_copy(raw, name, bytes.data(), bytes.size());
  };
  if (withMetadata) {
    setBlob(VIPS_META_EXIF_NAME, picture.exif);
    setBlob(VIPS_META_XMP_NAME, picture.xmp);
    setBlob(VIPS_META_IPTC_NAME, picture.iptc);
  }
  vips_image_set_progress(raw, TRUE);
  g_signal_connect(raw, "eval", G_CALLBACK(showPercent), &source.progress);
  return image;
}

constexpr int kUsualQuality = 92, kUsualHeifQuality = 80;

VipsBlob* saveJpeg(const VImage& image, const Coding& coding) {
  VipsForeignSubsample subsampling = VIPS_FOREIGN_SUBSAMPLE_AUTO;
  if (coding.subsampled)
    subsampling = *coding.subsampled ? VIPS_FOREIGN_SUBSAMPLE_ON : VIPS_FOREIGN_SUBSAMPLE_OFF;
  return image.jpegsave_buffer(VImage::option()
                                   ->set("Q", coding.quality.value_or(kUsualQuality))
                                   ->set("optimize_coding", true)
                                   ->set("interlace", coding.progressive)
                                   ->set("subsample_mode", subsampling));
}

VipsBlob* saveTiff(const VImage& image, const Coding& coding) {
  const std::string name = coding.tiffCompression.value_or("none");
  const int compression =
      vips_enum_from_nick("vxicore", VIPS_TYPE_FOREIGN_TIFF_COMPRESSION, name.c_str());
  return image.tiffsave_buffer(VImage::option()
                                   ->set("bigtiff", coding.bigTiff)
                                   ->set("compression", compression)
                                   ->set("predictor", coding.tiffPredictor
                                                          ? VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL
                                                          : VIPS_FOREIGN_TIFF_PREDICTOR_NONE));
}

// Deeper samples are cut to what the format holds.
VipsBlob* saveHeif(const VImage& image, Format format, int depth, const Coding& coding) {
  return image.heifsave_buffer(VImage::option()
                                   ->set("Q", coding.quality.value_or(kUsualHeifQuality))
                                   ->set("bitdepth", std::min(depth, traits(format).fileDepth))
                                   ->set("compression", format == Format::kAvif
                                                            ? VIPS_FOREIGN_HEIF_COMPRESSION_AV1
                                                            : VIPS_FOREIGN_HEIF_COMPRESSION_HEVC));
}

VipsBlob* saveJxl(const VImage& image, const Coding& coding) {
  return image.jxlsave_buffer(VImage::option()
                                  ->set("Q", coding.quality.value_or(kUsualQuality))
                                  ->set("lossless", coding.lossless.value_or(false)));
}

VipsBlob* save(const VImage& image, Format format, int depth, const Coding& coding) {
  switch (format) {
    case Format::kJpeg:
      return saveJpeg(image, coding);
    case Format::kPng:
      return image.pngsave_buffer(VImage::option()->set("bitdepth", depth));
    case Format::kTiff:
      return saveTiff(image, coding);
    case Format::kWebp:
      return image.webpsave_buffer(VImage::option()
                                       ->set("Q", coding.quality.value_or(kUsualQuality))
                                       ->set("lossless", coding.lossless.value_or(false)));
    case Format::kHeic:
    case Format::kAvif:
      return saveHeif(image, format, depth, coding);
    case Format::kJxl:
      return saveJxl(image, coding);
  }
  throw FileError("unknown format");
}

}  // namespace

std::vector<std::uint8_t> encodePicture(const Picture& picture, Format format, int depth,
                                        const Coding& coding, Progress& progress) {
  Source source{picture, progress, depth, picture.raster.alphaDepth() > 0 && traits(format).alpha};
  try {
    VImage image = describe(source, traits(format).metadataByEncoder || coding.bigTiff);
    if (picture.orientation != 1) {
      image.set("orientation", picture.orientation);
      image = image.autorot();
    }
    VipsBlob* blob = save(image, format, depth, coding);
    std::size_t size = 0;
    const auto* bytes = static_cast<const std::uint8_t*>(vips_blob_get(blob, &size));
    std::vector<std::uint8_t> result(bytes, bytes + size);
    vips_area_unref(VIPS_AREA(blob));
    throwIfCancelled();
    return result;
  } catch (const vips::VError&) {
    throwIfCancelled();
    throw vipsError("cannot write");
  } catch (const std::bad_alloc&) {
    throw FileError("not enough memory to write a picture of this size");
  }
}

}  // namespace vx::cli
