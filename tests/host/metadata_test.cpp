#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

std::string profileOf(const VImage& image) {
  if (image.get_typeof(VIPS_META_ICC_NAME) != VIPS_TYPE_BLOB) return {};
  std::size_t size = 0;
  const auto* const data = static_cast<const char*>(image.get_blob(VIPS_META_ICC_NAME, &size));
  return {data, size};
}

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
