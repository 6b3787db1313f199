// That pixels mean the same before and after, and that PNG's own chunks survive.
#include "hosts/cli/pictures/png_chunks.h"
#include "tests/host/host_test.h"
#include "tests/host/picture_files.h"

namespace vx::host_test {
namespace {

using cli::pngChunk;
using std::string_literals::operator""s;

// Samples 128, or red without the others.
constexpr double kMiddle = 128;

class Colour : public HostTest {
 protected:
  void savePng(const std::vector<double>& pixel, const std::string& chunks) const {
    const VImage image = picture(
        VImage::black(40, 30, VImage::option()->set("bands", int(pixel.size()))) + pixel, 8);
    save(image, "in.png");
    write("in.png", withChunks(bytesOf("in.png"), chunks));
  }
  /// What the colours of a picture are, as a colour-managed program sees them: 0 to 100.
  std::vector<double> xyz(const std::string& name) const {
    const VImage image = open(name);
    EXPECT_FALSE(profileOf(image).empty()) << name;
    return image.icc_import(VImage::option()->set("embedded", true)->set("pcs", VIPS_PCS_XYZ))
        .getpoint(5, 5);
  }
  void expectLight(const std::string& name, double luminance) const {
    EXPECT_NEAR(xyz(name)[1], luminance, 0.6) << name;
  }
  /// The red primary of Display P3, adapted to D50: 0.515, 0.241. libvips scales its X to D65.
  void expectRedOfP3(const std::string& name) const {
    const auto colour = xyz(name);
    EXPECT_NEAR(colour[0], 51.5 * 95.05 / 96.42, 0.2) << name;
    EXPECT_NEAR(colour[1], 24.1, 0.5) << name;
  }
};

const std::string kChrmOfP3 = big32(31270) + big32(32900) + big32(68000) + big32(32000) +
                              big32(26500) + big32(69000) + big32(15000) + big32(6000);

TEST_F(Colour, GammaAndPrimariesBecomeAProfile) {
  const double linear = 100 * kMiddle / 255;
  for (const std::vector<double>& pixel :
       {std::vector<double>{kMiddle}, {kMiddle, kMiddle, kMiddle}}) {
    savePng(pixel, pngChunk("gAMA", big32(100000)));
    for (const std::string out : {"out.tif", "out.webp --lossless", "out.jpg --quality 100"}) {
      const std::string name = out.substr(0, out.find(' '));
      runWell("adjust in.png --force --hue-shift 0 -o " + out);
      EXPECT_NEAR(open(name).getpoint(5, 5)[0], kMiddle, 1) << "pixels are not converted";
      expectLight(name, linear);
    }
    // A grey profile must not stay where grey becomes RGB, nor the other way round.
    runWell("adjust out.tif -o back.webp --lossless --force --hue-shift 0");
    expectLight("back.webp", linear);
  }
  savePng({255, 0, 0}, pngChunk("cHRM", kChrmOfP3) + pngChunk("gAMA", big32(45455)));
  runWell("adjust in.png -o red.tif --hue-shift 0");
  expectRedOfP3("red.tif");
  runWell("adjust in.png -o again.tif --hue-shift 0");
  EXPECT_TRUE(bytesOf("red.tif") == bytesOf("again.tif")) << "same input, same output";
  // Nonsense states nothing, and is told.
  savePng({255, 0, 0}, pngChunk("gAMA", big32(1)));
  runTelling("gAMA", "adjust in.png -o odd.tif --hue-shift 0");
}

TEST_F(Colour, CodePointsAreCarriedOrRefused) {
  savePng({255, 0, 0}, pngChunk("cICP", "\x0c\x0d\0\1"s));
  runWell("adjust in.png -o p3.tif --hue-shift 0");
  expectRedOfP3("p3.tif");
  for (const auto& [code, name] :
       {std::pair{"\x09\x10\0\1"s, "PQ"}, {"\x09\x12\0\1"s, "HLG"}, {"\x01\x0d\0\0"s, "cICP"}}) {
    savePng({255, 0, 0}, pngChunk("cICP", code));
    runBadly(1, name, "adjust in.png -o hdr.jpg --hue-shift 0");
    runWell("adjust in.png -o hdr.png --hue-shift 0 --force");
    EXPECT_EQ(chunkOf(bytesOf("hdr.png"), "cICP"), code);
  }
}

TEST_F(Colour, SrgbNeedsNothingButItsChunk) {
  savePng({255, 0, 0}, pngChunk("sRGB", "\0"s) + pngChunk("gAMA", big32(45455)));
  runWell("adjust in.png -o out.jpg --hue-shift 0");
  EXPECT_EQ(profileOf(open("out.jpg")), "");
  runWell("adjust in.png -o out.png --hue-shift 0");
  EXPECT_EQ(chunkOf(bytesOf("out.png"), "sRGB"), "\0"s);
  EXPECT_EQ(chunkOf(bytesOf("out.png"), "gAMA"), big32(45455));
}

TEST_F(Colour, ProfilesOfTheOtherKindDoNotStay) {
  const VImage grey = picture(VImage::black(40, 30) + kMiddle, 8);
  const std::string srgb = profileOf(
      pattern(8, 8, 3, 8).icc_transform("srgb", VImage::option()->set("input_profile", "srgb")));
  save(grey, "in.jpg[Q=100]");
  write("in.jpg", withSegments(bytesOf("in.jpg"), segment(0xe2, "ICC_PROFILE\0\1\1"s + srgb)));
  for (const std::string out : {"out.jpg", "out.png", "out.tif"}) {
    runWell("adjust in.jpg --hue-shift 0 -o " + out);
    EXPECT_EQ(profileOf(open(out)).substr(16, 4), "GRAY") << out;
    EXPECT_EQ(open(out).bands(), 1);
    expectLight(out, 21.6);  // 128 of sRGB
  }
}

TEST_F(Colour, TextsOfPngStayAsTheyAre) {
  const std::string latin = "Title\0Caf\xe9"s;
  const std::string utf8 = "Author\0\0\0de\0Urheber\0J\xc3\xbcrgen \xe6\x97\xa5\xe6\x9c\xac"s;
  const std::string packed =
      "Note\0\0\170\234\163\124\050\110\114\316\116\115\121\310\313\057\111\005\000\036\124\004\240"s;
  savePng({1, 2, 3}, pngChunk("tEXt", latin) + pngChunk("iTXt", utf8) + pngChunk("zTXt", packed));
  runWell("adjust in.png -o in.png --force --hue-shift 0");
  const std::string bytes = bytesOf("in.png");
  EXPECT_EQ(chunkOf(bytes, "tEXt"), latin);
  EXPECT_EQ(chunkOf(bytes, "iTXt"), utf8);
  EXPECT_EQ(chunkOf(bytes, "zTXt"), packed);
  runTelling("left out: 3 texts", "adjust in.png -o out.webp --hue-shift 0");
  runWell("adjust in.png -o in.png --force --strip");
  EXPECT_EQ(chunkOf(bytesOf("in.png"), "tEXt"), "none");
  // The pictures of an animation behind the first would be lost.
  savePng({1, 2, 3}, pngChunk("acTL", big32(2) + big32(0)));
  runBadly(1, "2 pages or frames", "adjust in.png -o in.png --force --strip");
}

TEST_F(Colour, UnknownResolutionStaysUnknown) {
  savePng({1, 2, 3}, "");
  write("in.png", bytesOf("in.png").replace(bytesOf("in.png").find("pHYs") - 4, 21, ""));
  for (const std::string out : {"out.png", "out.jpg", "out.tif", "out.webp"})
    runWell("adjust in.png --hue-shift 0 -o " + out);
  EXPECT_EQ(chunkOf(bytesOf("out.png"), "pHYs"), "none");
  EXPECT_EQ(bytesOf("out.jpg").substr(13, 5), "\0\0\1\0\1"s);
  EXPECT_EQ(metadataOf("out.tif")->exifData()["Exif.Image.ResolutionUnit"].toLong(), 1);
  EXPECT_TRUE(metadataOf("out.webp")->exifData().empty());
  // Pixels that are not square.
  savePng({1, 2, 3}, "");
  write("in.png", withChunks(bytesOf("in.png").replace(bytesOf("in.png").find("pHYs") - 4, 21, ""),
                             pngChunk("pHYs", big32(2) + big32(1) + "\0"s)));
  runWell("adjust in.png --hue-shift 0 -o wide.jpg");
  EXPECT_EQ(bytesOf("wide.jpg").substr(13, 5), "\0\0\2\0\1"s);
}

}  // namespace
}  // namespace vx::host_test
