#include <cmath>

#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

VImage matrix(std::vector<double> values, int width) {
  const auto size = static_cast<int>(values.size());
  return VImage::new_matrix(width, size / width, values.data(), size);
}

// The analogue television colours that edge works in.
VImage toYuv(const VImage& rgb) {
  return rgb.recomb(matrix({0.299, 0.587, 0.114, -0.147, -0.289, 0.436, 0.615, -0.515, -0.1}, 3));
}

VImage chroma(const VImage& rgb) {
  return toYuv(rgb).extract_band(1, VImage::option()->set("n", 2));
}

// Slanted stripes of four colours that differ in lightness too, and none of them at a limit.
VImage card(double top) {
  const double colours[4][3] = {
      {0.62, 0.28, 0.25}, {0.70, 0.66, 0.30}, {0.22, 0.30, 0.52}, {0.35, 0.58, 0.38}};
  constexpr int kWidth = 192, kHeight = 128;
  std::vector<double> samples;
  for (int i = 0; i < kWidth * kHeight; ++i)
    for (const double value : colours[(i % kWidth + i / kWidth / 3) / 20 % 4])
      samples.push_back(value);
  const VImage image = VImage::new_from_memory(samples.data(), samples.size() * sizeof(double),
                                               kWidth, kHeight, 3, VIPS_FORMAT_DOUBLE);
  return (image * top).copy_memory();  // the samples end here
}

// Chroma blurred along the rows over seven pixels, then three pixels to the right.
VImage damaged(const VImage& rgb) {
  const VImage moved = chroma(rgb)
                           .conv(matrix(std::vector<double>(7, 1.0 / 7), 7))
                           .embed(3, 0, rgb.width() + 3, rgb.height(),
                                  VImage::option()->set("extend", VIPS_EXTEND_COPY))
                           .crop(0, 0, rgb.width(), rgb.height());
  return toYuv(rgb).extract_band(0).bandjoin(moved).recomb(
      matrix({1, 0, 1.14, 1, -0.394, -0.581, 1, 2.032, 0}, 3));
}

class Edge : public HostTest {};

TEST_F(Edge, RepairsMovedAndBledChroma) {
  for (const int depth : {8, 16}) {
    SCOPED_TRACE(depth);
    const double top = depth == 8 ? 255 : 65535;
    const VImage original = card(top);
    save(picture(damaged(original), depth), "in.png");
    runWell("edge in.png -o moved.png --chroma-shift-x -3 --force");
    runWell(
        "edge in.png -o aligned.png --chroma-shift-x -3 --align-x 4 --align-threshold 0.01"
        " --force");
    const auto quality = [&](const std::string& name) {
      return psnr(chroma(original), chroma(open(name)), top);
    };
    // Measured at both depths: 25.3, 30.3 and 41.4 dB.
    EXPECT_GT(quality("moved.png"), quality("in.png") + 4.5);
    EXPECT_GT(quality("aligned.png"), quality("moved.png") + 10);
  }
}

// The way to luminance and chroma and back is all that is left.
TEST_F(Edge, NeutralSettingsCostAtMostOneLevel) {
  // Measured at 16 bits: 13. The inverse matrix is off by up to 0.0004 of the range, which is 26.
  for (const auto& [depth, tolerance] : {std::pair{8, 1}, {16, 30}}) {
    const VImage image = pattern(71, 51, 3, depth);
    save(image, "in.png");
    runWell("edge in.png -o out.png --force --chroma-shift-x 0");
    EXPECT_LE(largestDifference(image, open("out.png")), tolerance);
    EXPECT_EQ(open("out.png").getpoint(0, 0), image.getpoint(0, 0)) << "white";
  }
}

TEST_F(Edge, AlphaAndMetadataAreKept) {
  const VImage image = pattern(61, 40, 4, 8);
  save(image, "in.png");
  addMetadata("in.png");
  runWell("edge in.png -o out.png --preset soft-lens");
  const VImage result = open("out.png");
  EXPECT_EQ(largestDifference(image.extract_band(3), result.extract_band(3)), 0);
  EXPECT_GT((image.extract_band(1) - result.extract_band(1)).abs().max(), 1) << "nothing was done";
  EXPECT_EQ(metadataOf("out.png")->exifData()["Exif.Image.Orientation"].toString(), "6");
}

TEST_F(Edge, PresetsBelongToTheirCommand) {
  save(pattern(90, 70, 3, 8), "in.png");
  for (const std::string name : {"soft-lens", "chroma-bleed", "chroma-shift"}) {
    runWell("edge in.png -o out.png --force --preset " + name);
    EXPECT_GT(largestDifference(open("in.png"), open("out.png")), 1) << name;
  }
  runWell("edge in.png -o a.png --preset soft-lens --chroma-shift-y -2 --save-preset mine.toml");
  runWell("edge in.png -o b.png --preset mine.toml");
  EXPECT_TRUE(bytesOf("a.png") == bytesOf("b.png"));
  runBadly(2, "made for edge", "adjust in.png -o wrong.png --preset mine.toml");
  runBadly(2, "made for edge", "adjust in.png -o wrong.png --preset soft-lens");
  runBadly(2, "made for adjust", "edge in.png -o wrong.png --preset vivid");
}

TEST_F(Edge, MistakesAreUsageErrors) {
  save(pattern(20, 20, 3, 8), "in.png");
  write("half.toml", "chroma-shift-x = 1.5\n");
  for (const std::string mistake :
       {"--chroma-shift-x 1.5", "--preset half.toml", "--chroma-shift-y -8", "--align-x nan",
        "--range-floor 0", "--luma-gamma 1", "--preview-scale 2"})
    runBadly(2, "", "edge in.png -o out.png " + mistake);
  EXPECT_EQ(files(), (Names{"half.toml", "in.png"}));
}

}  // namespace
}  // namespace vx::host_test
