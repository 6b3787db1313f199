#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

// Strong settings that reach every step of the tone stage.
constexpr const char* kStrong =
    " --force --luma-gamma 0.6 --luma-eq-amount 0.2 --luma-eq-radius 20 --luma-detail-range 0.1"
    " --luma-detail-gain 1.5 --sharpen-amount 1.5 --sat-contrast 1.3";

class Pixels : public HostTest {
 protected:
  VImage strongly(const std::string& in, const std::string& out) const {
    runWell("adjust " + in + " -o " + out + kStrong);
    return open(out);
  }
};

TEST_F(Pixels, NeutralSettingsChangeNothing) {
  for (const int bands : {1, 2, 3, 4}) {
    SCOPED_TRACE(bands);
    const VImage shallow = pattern(70, 50, bands, 8), deep = pattern(70, 50, bands, 16);
    save(shallow, "in8.png");
    save(deep, "in16.tif");
    runWell("adjust in8.png -o out8.png --force --hue-shift 0");
    runWell("adjust in16.tif -o out16.tif --force --hue-shift 0");
    EXPECT_EQ(largestDifference(shallow, open("out8.png")), 0);
    // The library counts to 32768: one bit is lost, rounded; 65533 and 65534 join white.
    EXPECT_LE(largestDifference(deep, open("out16.tif")), 2);
    EXPECT_EQ(open("out16.tif").getpoint(0, 0), deep.getpoint(0, 0));
  }
}

TEST_F(Pixels, AlphaIsKeptByteForByte) {
  const struct {
    std::string in, out;
    int depth;
  } cases[] = {{"in.png", "out.png", 8},
               {"in.png", "out16.png", 16},
               {"in.tif", "out.tif", 8},
               {"in.tif", "out16.tif", 16},
               {"in.png", "out.webp", 8}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.out);
    const VImage image = pattern(71, 51, 4, c.depth);
    save(image, c.in);
    const VImage result = strongly(c.in, c.out);
    ASSERT_EQ(result.bands(), 4);
    EXPECT_EQ(largestDifference(image.extract_band(3), result.extract_band(3)), 0);
    EXPECT_GT((image.extract_band(0) - result.extract_band(0)).abs().max(), 4)
        << "nothing was done";
  }
}

TEST_F(Pixels, DepthStaysUnlessAskedOtherwise) {
  const VImage deep = pattern(40, 30, 3, 16), shallow = pattern(40, 30, 4, 8);
  save(deep, "deep.tif");
  save(shallow, "shallow.png");
  const auto adjusted = [this](const std::string& arguments, const std::string& out) {
    runWell("adjust --hue-shift 0 " + arguments + " -o " + out);
    return open(out);
  };
  EXPECT_EQ(adjusted("deep.tif", "a.png").format(), VIPS_FORMAT_USHORT);
  runTelling("16 bits per sample become 8", "adjust --hue-shift 0 deep.tif -o c.jpg");
  EXPECT_EQ(open("c.jpg").format(), VIPS_FORMAT_UCHAR);
  EXPECT_EQ(adjusted("shallow.png", "d.tif").format(), VIPS_FORMAT_UCHAR);
  EXPECT_LE(largestDifference(picture(deep / 257, 8), adjusted("deep.tif --depth 8", "b.tif")), 1);
  // 8 bits told in 16: each sample times 257, to the library's scale of 32768 and back.
  const VImage widened = picture(shallow * 257, 16),
               e = adjusted("shallow.png --depth 16", "e.png");
  EXPECT_LE(largestDifference(widened, e), 2);
  EXPECT_EQ(largestDifference(widened.extract_band(3), e.extract_band(3)), 0);
}

TEST_F(Pixels, GreyStaysGrey) {
  for (const int depth : {8, 16}) {
    const VImage grey = pattern(64, 48, 1, depth);
    save(grey, "grey.png");
    save(picture(VImage::bandjoin({grey, grey, grey}), depth), "rgb.png");
    const VImage result = strongly("grey.png", "out.png");
    EXPECT_EQ(result.bands(), 1);
    EXPECT_EQ(largestDifference(result, strongly("rgb.png", "rgb_out.png").extract_band(1)), 0);
  }
}

TEST_F(Pixels, CmykBecomesSrgbAndSaysSo) {
  save(pattern(64, 48, 3, 8).icc_transform("cmyk", VImage::option()->set("input_profile", "srgb")),
       "cmyk.jpg");
  runTelling("CMYK converted to sRGB", "adjust cmyk.jpg -o out.png");
  const VImage expected =
      open("cmyk.jpg").icc_transform("srgb", VImage::option()->set("embedded", true));
  EXPECT_LE(largestDifference(expected, open("out.png")), 1);
}

// The library leaves an odd last column and row alone, and in its tiled path (an axis of 2304 or
// more) an odd first one black; the host must not let that be seen.
TEST_F(Pixels, OddSizesAreTreatedWhole) {
  for (const auto& [width, height] : {std::pair{75, 51}, {2305, 41}, {2400, 33}, {41, 2401}}) {
    SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
    const VImage odd = pattern(width, height, 3, 8);
    save(odd, "odd.png");
    save(odd.embed(0, 0, width + width % 2, height + height % 2,
                   VImage::option()->set("extend", VIPS_EXTEND_COPY)),
         "even.png");
    const VImage result = strongly("odd.png", "odd_out.png");
    const VImage even = strongly("even.png", "even_out.png");
    EXPECT_EQ(largestDifference(result, even.crop(0, 0, width, height)), 0);
    const VImage change = (result - odd).abs();
    EXPECT_GT(change.crop(width - 1, 0, 1, height).max(), 4) << "stale last column";
    EXPECT_GT(change.crop(0, height - 1, width, 1).max(), 4) << "stale last row";
    EXPECT_GT(result.crop(0, 0, width, 1).avg(), 20) << "black first row";
    EXPECT_GT(result.crop(0, 0, 1, height).avg(), 20) << "black first column";
  }
}

TEST_F(Pixels, TheSmallestPicturesWork) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {3, 5}}) {
    save(pattern(width, height, 3, 8), "in.png");
    for (const std::string out : {"out.png", "out.jpg", "out.tif", "out.webp"}) {
      const VImage result = strongly("in.png", out);
      EXPECT_TRUE(result.width() == width && result.height() == height) << out;
    }
  }
}

// What the preview shows is what the full result looks like when reduced; treating the reduced
// picture with radii of the full size does not.
TEST_F(Pixels, PreviewResemblesTheReducedResult) {
  const VImage image = picture(pattern(1200, 900, 3, 8).gaussblur(2), 8);
  const VImage small = picture(image.shrink(4, 4), 8);
  save(image, "in.png");
  save(image, "in.jpg[Q=97]");
  save(small, "small.png");
  const auto treated = [this](const std::string& arguments) {
    runWell("adjust -o out.png --luma-eq-amount 0.5 --luma-eq-radius 100 --force " + arguments);
    return open("out.png");
  };
  const VImage naive = treated("small.png");
  for (const std::string in : {"in.png", "in.jpg"}) {
    SCOPED_TRACE(in);
    const VImage reduced = treated(in).shrink(4, 4);
    const auto miss = [&](const VImage& other) { return (reduced - other).abs().avg(); };
    EXPECT_GT(miss(small), 5) << "the settings do too little for a comparison";
    EXPECT_LT(miss(treated(in + " --preview-scale 4")), miss(naive) / 3);
  }
}

}  // namespace
}  // namespace vx::host_test
