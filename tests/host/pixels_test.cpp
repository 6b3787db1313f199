#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

using vips::VImage;

class Pixels : public HostTest {
 protected:
  // Strong settings that reach every step of the tone stage.
  const std::vector<std::string> strong_{"--luma-gamma",       "0.6", "--luma-eq-amount",    "0.2",
                                         "--luma-eq-radius",   "20",  "--luma-detail-range", "0.1",
                                         "--luma-detail-gain", "1.5", "--sharpen-amount",    "1.5",
                                         "--sat-contrast",     "1.3"};

  std::vector<std::string> strongly(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), strong_.begin(), strong_.end());
    return arguments;
  }
};

TEST_F(Pixels, NeutralSettingsChangeNothing) {
  for (const int bands : {1, 2, 3, 4}) {
    SCOPED_TRACE(bands);
    const VImage shallow = pattern(70, 50, bands, 8), deep = pattern(70, 50, bands, 16);
    shallow.pngsave(path("in8.png").c_str());
    deep.tiffsave(path("in16.tif").c_str());
    runWell({"adjust", "in8.png", "-o", "out8.png", "--force"});
    runWell({"adjust", "in16.tif", "-o", "out16.tif", "--force"});
    EXPECT_EQ(largestDifference(shallow, open(path("out8.png"))), 0);
    // The library counts to 32768: one bit is lost, rounded; 65533 and 65534 join white.
    EXPECT_LE(largestDifference(deep, open(path("out16.tif"))), 2);
    EXPECT_EQ(open(path("out16.tif")).getpoint(0, 0),
              std::vector<double>(static_cast<std::size_t>(bands), 65535.0));
  }
}

TEST_F(Pixels, AlphaIsKeptByteForByte) {
  const struct {
    const char *in, *out;
    int depth;
  } cases[] = {{"in.png", "out.png", 8},
               {"in.png", "out16.png", 16},
               {"in.tif", "out.tif", 8},
               {"in.tif", "out16.tif", 16},
               {"in.png", "out.webp", 8}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.out);
    const VImage image = pattern(71, 51, 4, c.depth);
    image.write_to_file(path(c.in).c_str());
    runWell(strongly({"adjust", c.in, "-o", c.out, "--force"}));
    const VImage result = open(path(c.out));
    ASSERT_EQ(result.bands(), 4);
    EXPECT_EQ(largestDifference(image.extract_band(3), result.extract_band(3)), 0);
    EXPECT_GT((image.extract_band(0) - result.extract_band(0)).abs().max(), 4)
        << "nothing was done";
  }
}

TEST_F(Pixels, DepthStaysUnlessAskedOtherwise) {
  pattern(40, 30, 3, 16).tiffsave(path("deep.tif").c_str());
  pattern(40, 30, 4, 8).pngsave(path("shallow.png").c_str());
  runWell({"adjust", "deep.tif", "-o", "a.png"});
  runWell({"adjust", "deep.tif", "-o", "b.tif", "--depth", "8"});
  runWell({"adjust", "deep.tif", "-o", "c.jpg"});
  runWell({"adjust", "shallow.png", "-o", "d.tif"});
  runWell({"adjust", "shallow.png", "-o", "e.png", "--depth", "16"});
  EXPECT_EQ(open(path("a.png")).format(), VIPS_FORMAT_USHORT);
  EXPECT_EQ(open(path("b.tif")).format(), VIPS_FORMAT_UCHAR);
  EXPECT_EQ(open(path("c.jpg")).format(), VIPS_FORMAT_UCHAR);
  EXPECT_EQ(open(path("d.tif")).format(), VIPS_FORMAT_UCHAR);
  // 8 bits told in 16: each sample times 257, to the library's scale of 32768 and back.
  const VImage widened = (pattern(40, 30, 4, 8) * 257).cast(VIPS_FORMAT_USHORT);
  EXPECT_LE(largestDifference(widened, open(path("e.png"))), 2);
  EXPECT_EQ(largestDifference(widened.extract_band(3), open(path("e.png")).extract_band(3)), 0);
  const VImage narrowed = (pattern(40, 30, 3, 16) / 257).rint().cast(VIPS_FORMAT_UCHAR);
  EXPECT_LE(largestDifference(narrowed, open(path("b.tif"))), 1);
}

TEST_F(Pixels, GreyStaysGrey) {
  for (const int depth : {8, 16}) {
    const VImage grey = pattern(64, 48, 1, depth);
    grey.pngsave(path("grey.png").c_str());
    VImage::bandjoin({grey, grey, grey})
        .copy(VImage::option()->set(
            "interpretation", depth == 8 ? VIPS_INTERPRETATION_sRGB : VIPS_INTERPRETATION_RGB16))
        .pngsave(path("rgb.png").c_str());
    for (const std::string name : {"grey", "rgb"})
      runWell(strongly({"adjust", name + ".png", "-o", name + "_out.png", "--force"}));
    const VImage result = open(path("grey_out.png"));
    EXPECT_EQ(result.bands(), 1);
    EXPECT_EQ(largestDifference(result, open(path("rgb_out.png")).extract_band(1)), 0);
  }
}

TEST_F(Pixels, CmykBecomesSrgbAndSaysSo) {
  pattern(64, 48, 3, 8)
      .icc_transform("cmyk", VImage::option()->set("input_profile", "srgb"))
      .jpegsave(path("cmyk.jpg").c_str());
  const Outcome outcome = run({"adjust", "cmyk.jpg", "-o", "out.png"});
  EXPECT_EQ(outcome.code, 0);
  ASSERT_EQ(outcome.complaints(), 1) << outcome.err;
  EXPECT_NE(outcome.err.find("CMYK converted to sRGB"), std::string::npos);
  const VImage result = open(path("out.png"));
  EXPECT_EQ(result.bands(), 3);
  const VImage expected =
      open(path("cmyk.jpg")).icc_transform("srgb", VImage::option()->set("embedded", true));
  EXPECT_LE(largestDifference(expected, result), 1);
}

// The library leaves an odd last column and row alone, and in its tiled path (an axis of 2304 or
// more) an odd first one black; the host must not let that be seen.
TEST_F(Pixels, OddSizesAreTreatedWhole) {
  for (const auto& [width, height] : {std::pair{75, 51}, {2305, 41}, {2400, 33}, {41, 2401}}) {
    SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
    const VImage odd = pattern(width, height, 3, 8);
    const int evenWidth = width + width % 2, evenHeight = height + height % 2;
    odd.pngsave(path("odd.png").c_str());
    odd.embed(0, 0, evenWidth, evenHeight, VImage::option()->set("extend", VIPS_EXTEND_COPY))
        .pngsave(path("even.png").c_str());
    runWell(strongly({"adjust", "odd.png", "-o", "odd_out.png", "--force"}));
    runWell(strongly({"adjust", "even.png", "-o", "even_out.png", "--force"}));
    const VImage result = open(path("odd_out.png"));
    EXPECT_EQ(largestDifference(result, open(path("even_out.png")).crop(0, 0, width, height)), 0);
    const VImage change = (result - odd).abs();
    EXPECT_GT(change.crop(width - 1, 0, 1, height).max(), 4) << "stale last column";
    EXPECT_GT(change.crop(0, height - 1, width, 1).max(), 4) << "stale last row";
    EXPECT_GT(result.crop(0, 0, width, 1).avg(), 20) << "black first row";
    EXPECT_GT(result.crop(0, 0, 1, height).avg(), 20) << "black first column";
  }
}

TEST_F(Pixels, TheSmallestPicturesWork) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {3, 5}}) {
    pattern(width, height, 3, 8).pngsave(path("in.png").c_str());
    for (const std::string out : {"out.png", "out.jpg", "out.tif", "out.webp"}) {
      runWell(strongly({"adjust", "in.png", "-o", out, "--force"}));
      EXPECT_TRUE(open(path(out)).width() == width && open(path(out)).height() == height) << out;
    }
  }
}

// What the preview shows is what the full result looks like when reduced; treating the reduced
// picture with radii of the full size does not.
TEST_F(Pixels, PreviewResemblesTheReducedResult) {
  const VImage image = pattern(1200, 900, 3, 8).gaussblur(2).cast(VIPS_FORMAT_UCHAR);
  const VImage small = image.shrink(4, 4).cast(VIPS_FORMAT_UCHAR);
  image.pngsave(path("in.png").c_str());
  image.jpegsave(path("in.jpg").c_str(), VImage::option()->set("Q", 97));
  small.pngsave(path("small.png").c_str());
  const auto with = [](std::vector<std::string> arguments) {
    const std::vector<std::string> settings{"--luma-eq-amount", "0.5", "--luma-eq-radius", "100",
                                            "--force"};
    arguments.insert(arguments.end(), settings.begin(), settings.end());
    return arguments;
  };
  runWell(with({"adjust", "small.png", "-o", "naive.png"}));
  for (const std::string in : {"in.png", "in.jpg"}) {
    SCOPED_TRACE(in);
    runWell(with({"adjust", in, "-o", "full.png"}));
    runWell(with({"adjust", in, "-o", "preview.png", "--preview-scale", "4"}));
    const VImage reduced = open(path("full.png")).shrink(4, 4);
    const double change = (reduced - small).abs().avg();
    const double miss = (reduced - open(path("preview.png"))).abs().avg();
    const double naiveMiss = (reduced - open(path("naive.png"))).abs().avg();
    EXPECT_GT(change, 5) << "the settings do too little for a comparison";
    EXPECT_LT(miss, naiveMiss / 3);
  }
}

}  // namespace
}  // namespace vx::host_test
