#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

class Metadata : public HostTest {
 protected:
  // A source in each format that can hold all of it.
  void makeSource(const std::string& name) {
    const VImage picture =
        pattern(61, 40, 3, 8).icc_transform("srgb", VImage::option()->set("input_profile", "srgb"));
    profile_ = profileOf(picture);
    EXPECT_GT(profile_.size(), 100U);
    save(picture, name);
    addMetadata(name);
  }

  void expectKept(const std::string& name, bool iptc = true) const {
    SCOPED_TRACE(name);
    const auto image = metadataOf(name);
    for (const auto& [key, value] : kExif) EXPECT_EQ(image->exifData()[key].toString(), value);
    EXPECT_EQ(image->xmpData()["Xmp.dc.title"].toString(), "lang=\"x-default\" A title");
    if (iptc) {
      EXPECT_EQ(image->iptcData()["Iptc.Application2.Caption"].toString(), "A caption");
    }
    EXPECT_TRUE(profileOf(open(name)) == profile_);
    EXPECT_EQ(open(name).width(), 61) << "pixels must not be turned";
  }

  std::string profile_;
};

TEST_F(Metadata, IsKeptFromEveryFormatInEveryOther) {
  for (const std::string in : {"in.jpg", "in.tif", "in.webp"}) makeSource(in);
  const struct {
    std::string in, out;
    bool iptc = true;
  } cases[] = {{"in.jpg", "out.jpg"},      {"in.jpg", "out.png"}, {"in.jpg", "out.tif"},
               {"in.tif", "a.tif"},        {"in.tif", "a.jpg"},   {"in.tif", "a.png"},
               {"a.png", "b.jpg"},         {"a.png", "b.png"},    {"in.webp", "c.webp", false},
               {"in.webp", "c.jpg", false}};
  for (const auto& c : cases) {
    runWell("adjust --hue-shift 0 " + c.in + " -o " + c.out);
    expectKept(c.out, c.iptc);
  }
  runTelling("IPTC is left out", "adjust in.jpg -o out.webp");
  expectKept("out.webp", false);
}

// Modules of libvips that may be missing.
TEST_F(Metadata, GoesThroughTheFormatsOfPhones) {
  makeSource("in.jpg");
  const VImage deep = pattern(61, 40, 3, 16);
  save(deep, "deep.png");
  for (const auto& [extension, bits] :
       {std::pair<std::string, int>{"heic", 10}, {"avif", 12}, {"jxl", 16}}) {
    SCOPED_TRACE(extension);
    const char* loader = extension == "jxl" ? "jxlload" : "heifload";
    if (vips_type_find("VipsOperation", loader) == 0) GTEST_SKIP() << "libvips without " << loader;
    runTelling("IPTC is left out", "adjust in.jpg -o out." + extension);
    runWell("adjust --hue-shift 0 out." + extension + " -o back.jpg --force");
    const auto image = metadataOf("back.jpg");
    for (const auto& [key, value] : kExif) {
      const bool turned = std::string_view(key) == "Exif.Image.Orientation";
      EXPECT_EQ(image->exifData()[key].toString(), turned ? "1" : value);
    }
    EXPECT_EQ(image->xmpData()["Xmp.dc.title"].toString(), "lang=\"x-default\" A title");
    // The decoder of JPEG XL says what a profile means in one of its own.
    EXPECT_TRUE(profileOf(open("back.jpg")) == profile_ || bits == 16);
    // The readers of these formats show pixels as they lie, whatever EXIF says.
    EXPECT_GT(psnr(open("in.jpg").autorot(), open("back.jpg")), 30);
    const std::string line = "adjust --hue-shift 0 deep.png -o deep." + extension;
    if (bits < 16)
      runTelling("16 bits per sample become " + std::to_string(bits), line + " --quality 100");
    else
      runWell(line + " --lossless");
    runWell("adjust --hue-shift 0 deep." + extension + " -o deep.tif --force");
    EXPECT_GT(psnr(deep, open("deep.tif"), 65535), 40);
    if (bits < 16) {
      EXPECT_EQ(open("deep." + extension).get_int("heif-bitdepth"), bits);
    }
  }
}

TEST_F(Metadata, SizesFollowThePreview) {
  makeSource("in.jpg");
  for (const std::string out : {"out.jpg", "out.tif", "out.png"}) {
    SCOPED_TRACE(out);
    runWell("adjust in.jpg --preview-scale 4 -o " + out);
    const auto image = metadataOf(out);
    EXPECT_EQ(image->exifData()["Exif.Photo.PixelXDimension"].toLong(), 16);
    EXPECT_EQ(image->exifData()["Exif.Photo.PixelYDimension"].toLong(), 10);
    EXPECT_EQ(open(out).width(), 16);
    EXPECT_EQ(open(out).height(), 10);
  }
}

TEST_F(Metadata, NoneGivesNone) {
  save(pattern(20, 20, 3, 8), "in.jpg[strip]");
  for (const std::string out : {"out.jpg", "out.webp", "out.png"}) {
    runWell("adjust --hue-shift 0 in.jpg -o " + out);
    EXPECT_TRUE(metadataOf(out)->exifData().empty());
    EXPECT_TRUE(metadataOf(out)->xmpData().empty());
    EXPECT_TRUE(profileOf(open(out)).empty());
  }
}

// The thumbnail shows the picture before the work; in a TIFF it would be a second page.
TEST_F(Metadata, DropsTheStaleThumbnail) {
  makeSource("in.jpg");
  save(pattern(16, 16, 3, 8), "thumb.jpg");
  const auto image = metadataOf("in.jpg");
  Exiv2::ExifThumb(image->exifData()).setJpegThumbnail(path("thumb.jpg"));
  image->writeMetadata();
  for (const std::string out : {"out.jpg", "out.tif"}) {
    runWell("adjust --hue-shift 0 in.jpg -o " + out);
    Exiv2::ExifData exif = metadataOf(out)->exifData();
    EXPECT_EQ(Exiv2::ExifThumb(exif).copy().size_, 0) << out;
  }
  EXPECT_EQ(vips_image_get_n_pages(open("out.tif").get_image()), 1);
}

}  // namespace
}  // namespace vx::host_test
