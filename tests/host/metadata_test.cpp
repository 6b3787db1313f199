#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

std::string bytesOf(const void* data, std::size_t size) {
  return {static_cast<const char*>(data), size};
}

std::string profileOf(const vips::VImage& image) {
  if (image.get_typeof(VIPS_META_ICC_NAME) != VIPS_TYPE_BLOB) return {};
  std::size_t size = 0;
  const void* data = image.get_blob(VIPS_META_ICC_NAME, &size);
  return bytesOf(data, size);
}

class Metadata : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    VipsBlob* blob = nullptr;
    ASSERT_EQ(vips_profile_load("srgb", &blob, nullptr), 0);
    std::size_t size = 0;
    const void* data = vips_blob_get(blob, &size);
    profile_ = bytesOf(data, size);
    vips_area_unref(VIPS_AREA(blob));
  }

  // A source in each format that can hold all of it.
  void makeSource(const std::string& name) const {
    vips::VImage picture = pattern(61, 40, 3, 8);
    vips_image_set_blob_copy(picture.get_image(), VIPS_META_ICC_NAME, profile_.data(),
                             profile_.size());
    picture.write_to_file(path(name).c_str());
    addMetadata(path(name), 61, 40);
  }

  void expectKept(const std::string& name, bool iptc) const {
    SCOPED_TRACE(name);
    const auto image = metadataOf(path(name));
    for (const auto& [key, value] : kExif) EXPECT_EQ(image->exifData()[key].toString(), value);
    EXPECT_EQ(image->xmpData()["Xmp.dc.title"].toString(), "lang=\"x-default\" A title");
    if (iptc) {
      EXPECT_EQ(image->iptcData()["Iptc.Application2.Caption"].toString(), "A caption");
    }
    const vips::VImage pixels = open(path(name));
    EXPECT_EQ(profileOf(pixels), profile_);
    EXPECT_EQ(pixels.width(), 61) << "pixels must not be turned";
  }

  std::string profile_;
};

TEST_F(Metadata, IsKeptFromJpegInEveryFormat) {
  makeSource("in.jpg");
  for (const std::string out : {"out.jpg", "out.png", "out.tif"}) {
    runWell({"adjust", "in.jpg", "-o", out});
    expectKept(out, true);
  }
  const Outcome webp = run({"adjust", "in.jpg", "-o", "out.webp"});
  EXPECT_EQ(webp.code, 0);
  EXPECT_NE(webp.err.find("IPTC is left out"), std::string::npos) << webp.err;
  expectKept("out.webp", false);
}

TEST_F(Metadata, IsKeptFromTiffAndWebpAndOwnPng) {
  makeSource("in.tif");
  makeSource("in.webp");
  const struct {
    const char *in, *out;
    bool iptc;
  } cases[] = {{"in.tif", "a.tif", true},  {"in.tif", "a.jpg", true}, {"in.tif", "a.png", true},
               {"a.png", "b.jpg", true},   {"a.png", "b.png", true},  {"in.webp", "c.webp", false},
               {"in.webp", "c.jpg", false}};
  for (const auto& c : cases) {
    runWell({"adjust", c.in, "-o", c.out});
    expectKept(c.out, c.iptc);
  }
}

TEST_F(Metadata, SizesFollowThePreview) {
  makeSource("in.jpg");
  for (const std::string out : {"out.jpg", "out.tif", "out.png"}) {
    SCOPED_TRACE(out);
    runWell({"adjust", "in.jpg", "-o", out, "--preview-scale", "4"});
    const auto image = metadataOf(path(out));
    EXPECT_EQ(image->exifData()["Exif.Photo.PixelXDimension"].toLong(), 16);
    EXPECT_EQ(image->exifData()["Exif.Photo.PixelYDimension"].toLong(), 10);
    EXPECT_EQ(open(path(out)).width(), 16);
    EXPECT_EQ(open(path(out)).height(), 10);
  }
}

TEST_F(Metadata, NoneGivesNone) {
  pattern(20, 20, 3, 8)
      .jpegsave(path("in.jpg").c_str(), vips::VImage::option()->set("strip", true));
  for (const std::string name : {"out.jpg", "out.webp", "out.png"}) {
    runWell({"adjust", "in.jpg", "-o", name});
    EXPECT_TRUE(metadataOf(path(name))->exifData().empty());
    EXPECT_TRUE(metadataOf(path(name))->xmpData().empty());
    EXPECT_TRUE(profileOf(open(path(name))).empty());
  }
}

// The thumbnail shows the picture before the work; in a TIFF it would be a second page.
TEST_F(Metadata, DropsTheStaleThumbnail) {
  makeSource("in.jpg");
  {
    const auto image = metadataOf(path("in.jpg"));
    pattern(16, 16, 3, 8).jpegsave(path("thumb.jpg").c_str());
    Exiv2::ExifThumb(image->exifData()).setJpegThumbnail(path("thumb.jpg"));
    image->writeMetadata();
  }
  runWell({"adjust", "in.jpg", "-o", "out.jpg"});
  runWell({"adjust", "in.jpg", "-o", "out.tif"});
  for (const std::string name : {"out.jpg", "out.tif"}) {
    Exiv2::ExifData exif = metadataOf(path(name))->exifData();
    EXPECT_EQ(Exiv2::ExifThumb(exif).copy().size_, 0) << name;
  }
  EXPECT_EQ(vips_image_get_n_pages(open(path("out.tif")).get_image()), 1);
}

}  // namespace
}  // namespace vx::host_test
