#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

class Metadata : public HostTest {
 protected:
  // A source in each format that can hold all of it.
  void makeSource(const std::string& name) const {
    vips::VImage image = pattern(61, 40, 3, 8);
    const auto profile = someProfile();
    vips_image_set_blob_copy(image.get_image(), VIPS_META_ICC_NAME, profile.data(), profile.size());
    image.write_to_file(path(name).c_str());
    addMetadata(path(name), 61, 40);
  }

  void expectKept(const std::string& name, bool iptc) const {
    SCOPED_TRACE(name);
    const auto image = metadataOf(path(name));
    const Exiv2::ExifData& exif = image->exifData();
    const auto text = [&exif](const char* key) {
      const auto datum = exif.findKey(Exiv2::ExifKey(key));
      return datum == exif.end() ? std::string("missing") : datum->toString();
    };
    EXPECT_EQ(text("Exif.Image.Model"), "NIKON D70");
    EXPECT_EQ(text("Exif.Photo.DateTimeOriginal"), "2024:05:06 07:08:09");
    EXPECT_EQ(text("Exif.GPSInfo.GPSLatitude"), "51/1 3/1 4/1");
    EXPECT_EQ(text("Exif.Nikon3.SerialNumber"), "NO= 12345678");
    EXPECT_EQ(text("Exif.Nikon3.ShutterCount"), "4711");
    EXPECT_EQ(text("Exif.Image.Orientation"), "6");
    EXPECT_EQ(image->xmpData()["Xmp.xmp.Rating"].toString(), "4");
    EXPECT_EQ(image->xmpData()["Xmp.dc.title"].toString(), "lang=\"x-default\" A title");
    if (iptc) {
      EXPECT_EQ(image->iptcData()["Iptc.Application2.Caption"].toString(), "A caption");
    }

    const vips::VImage pixels = open(path(name));
    EXPECT_EQ(profileOf(pixels), someProfile());
    EXPECT_EQ(pixels.width(), 61) << "pixels must not be turned";
    EXPECT_EQ(pixels.height(), 40);
  }
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
  runWell({"adjust", "in.jpg", "-o", "out.jpg"});
  runWell({"adjust", "in.jpg", "-o", "out.webp"});
  runWell({"adjust", "in.jpg", "-o", "out.png"});
  for (const std::string name : {"out.jpg", "out.webp", "out.png"}) {
    SCOPED_TRACE(name);
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
