#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

using vips::VImage;
using Json = nlohmann::json;

VImage smooth(int depth) {
  return pattern(300, 200, 3, depth)
      .gaussblur(3)
      .cast(depth == 8 ? VIPS_FORMAT_UCHAR : VIPS_FORMAT_USHORT);
}

// Gaussian, in each band another; sigma in steps of 255.
VImage withNoise(const VImage& image, double sigma) {
  std::vector<VImage> bands;
  for (int band = 0; band < image.bands(); ++band) {
    bands.push_back(VImage::gaussnoise(
        image.width(), image.height(),
        VImage::option()->set("mean", 0)->set("sigma", sigma)->set("seed", band + 1)));
  }
  const double scale = image.format() == VIPS_FORMAT_USHORT ? 257 : 1;
  return (image + VImage::bandjoin(bands) * scale)
      .rint()
      .cast(image.format())
      .copy(VImage::option()->set("interpretation", image.interpretation()));
}

class Noise : public HostTest {
 protected:
  Json estimate(const std::vector<std::string>& files, int code = 0) const {
    std::vector<std::string> arguments{"noise", "--json"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, code) << outcome.err;
    EXPECT_EQ(outcome.complaints(), code) << outcome.err;
    Json list = Json::parse(outcome.out, nullptr, false);
    EXPECT_TRUE(list.is_array()) << outcome.out;
    return list;
  }
};

TEST_F(Noise, EstimateFollowsTheNoiseAndIsTheSameInText) {
  const VImage grey = (VImage::black(256, 256, VImage::option()->set("bands", 3)) + 128)
                          .cast(VIPS_FORMAT_UCHAR)
                          .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
  withNoise(grey, 6).pngsave(path("a.png").c_str());
  withNoise(grey, 12).pngsave(path("b.png").c_str());
  (withNoise(grey, 6) * 257).cast(VIPS_FORMAT_USHORT).tiffsave(path("c.tif").c_str());
  const Json list = estimate({"a.png", "b.png", "c.tif"});
  ASSERT_EQ(list.size(), 3U);
  const double a = list[0]["library"]["lumaNoise"], b = list[1]["library"]["lumaNoise"];
  EXPECT_NEAR(b / a, 2, 0.15);
  EXPECT_NEAR(list[2]["library"]["lumaNoise"], a, 1e-3) << "depth";
  // The luma has 0.668 of the noise of each channel.
  EXPECT_NEAR(list[0]["sigma"], 0.668 * 6, 0.4);
  EXPECT_NEAR(list[1]["sigma"], 0.668 * 12, 0.8);
  EXPECT_NEAR(list[2]["sigma"], list[0]["sigma"], 0.1) << "depth";
  for (const Json& entry : list) {
    EXPECT_NEAR(entry["library"]["lumaLevel"].get<double>() * 1.402, 0.5, 0.01);
    EXPECT_GT(entry["nonlocal"]["denoiseStrength"], 0);
    EXPECT_GT(entry["fast"]["noiseProfile"]["lumaNoise"], 0);
  }
  char text[32];
  std::snprintf(text, sizeof text, "luma %.1f,", 255 * b);
  EXPECT_NE(run({"noise", "b.png"}).out.find(text), std::string::npos) << text;
}

TEST_F(Noise, JsonIsValidWhateverTheNameAndTheFailures) {
  const std::string name = "a \"b\"\n\\\xc3\xa4\xff.png";
  pattern(40, 30, 3, 8).pngsave(path("plain.png").c_str());
  fs::rename(path("plain.png"), path(name));
  pattern(3, 40, 3, 8).pngsave(path("tiny.png").c_str());
  write("broken.png", "no picture");
  const Json list = estimate({name, "broken.png", "tiny.png"}, 1);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["file"], "a \"b\"\n\\\xc3\xa4\xef\xbf\xbd.png");
  EXPECT_EQ(list[0]["libraryKnown"], true);
  EXPECT_EQ(list[1]["libraryKnown"], false) << "below 4 pixels there is nothing to measure";
  EXPECT_EQ(list[1]["fast"]["denoiseStrength"], 0);
  EXPECT_EQ(estimate({"missing.png"}, 1), Json::array());
  runBadly(2, "no picture", {"noise"});
  runTelling("too small", {"adjust", "tiny.png", "-o", "out.png", "--denoise", "1"});
  EXPECT_LE(largestDifference(open(path("tiny.png")), open(path("out.png"))), 1);
}

// A picture larger than what the estimate looks at, which is all that is kept of it.
TEST_F(Noise, OfALargePictureTheCentreIsMeasured) {
  const VImage image = withNoise(pattern(4124, 90, 3, 8), 8);
  image.tiffsave(path("in.tif").c_str());
  image.crop(14, 0, 4096, 90).tiffsave(path("centre.tif").c_str());
  const Json list = estimate({"in.tif", "centre.tif"});
  EXPECT_EQ(list[0]["sigma"], list[1]["sigma"]);
  EXPECT_EQ(list[0]["library"], list[1]["library"]);
}

TEST_F(Noise, AutoTakesTheToldStrengthAndGetsNearerToTheOriginal) {
  for (const int depth : {8, 16}) {
    const VImage original = smooth(depth);
    withNoise(original, 10).pngsave(path("in.png").c_str());
    const double before = psnr(original, open(path("in.png")));
    const auto adjusted = [&](const std::string& mode, const std::string& strength) {
      runTelling("note: noise ", {"adjust", "in.png", "-o", "out.png", "--denoise", strength,
                                  "--denoise-mode", mode, "--force"});
      return open(path("out.png")).copy_memory();
    };
    // Measured: see the gains below plus a tenth or more.
    for (const auto& [mode, gain] : {std::pair{"fast", 0.5}, {"nonlocal", 7.0}}) {
      SCOPED_TRACE(mode + std::to_string(depth));
      const VImage result = adjusted(mode, "auto");
      EXPECT_GT(psnr(original, result), before + gain);
      EXPECT_EQ(largestDifference(result, adjusted(mode, "1")), 0) << "auto is 1";
      EXPECT_GT(largestDifference(result, adjusted(mode, "0.5")), 0);
    }
  }
}

TEST_F(Noise, AGivenSigmaTakesThePlaceOfTheEstimate) {
  withNoise(smooth(8), 10).pngsave(path("in.png").c_str());
  const auto distance = [this](const std::string& sigma) {
    runTelling("taken to be " + sigma, {"adjust", "in.png", "-o", "out.png", "--denoise", "auto",
                                        "--noise", sigma, "--force"});
    return (open(path("in.png")) - open(path("out.png"))).abs().avg();
  };
  EXPECT_GT(distance("8.0"), distance("2.0") + 1);
  runBadly(2, "--noise", {"adjust", "in.png", "-o", "out.png", "--noise", "-2"});
}

TEST_F(Noise, GrainComesBackInItsShare) {
  withNoise(smooth(8), 10).pngsave(path("in.png").c_str());
  const auto distance = [this](const std::string& grain) {
    runTelling("note: noise", {"adjust", "in.png", "-o", "out.png", "--denoise", "1", "--grain",
                               grain, "--force"});
    return (open(path("in.png")) - open(path("out.png"))).abs().avg();
  };
  const double without = distance("0");
  EXPECT_GT(without, 1.5);
  EXPECT_NEAR(distance("0.5"), without / 2, 0.3);
  EXPECT_LT(distance("1"), 0.3);
}

TEST_F(Noise, PreviewResemblesTheReducedResult) {
  withNoise(smooth(8), 16).pngsave(path("in.png").c_str());
  const std::vector<std::string> preset{"adjust", "--denoise", "auto", "--save-preset", "p.toml"};
  runWell(preset);
  const std::string told = "note: noise ";
  runTelling(told, {"adjust", "in.png", "-o", "full.png", "--preset", "p.toml"});
  runTelling(told,
             {"adjust", "in.png", "-o", "small.png", "--preset", "p.toml", "--preview-scale", "2"});
  const VImage reduced = open(path("full.png")).shrink(2, 2).cast(VIPS_FORMAT_UCHAR);
  const VImage untreated = open(path("in.png")).shrink(2, 2).cast(VIPS_FORMAT_UCHAR);
  EXPECT_GT(psnr(reduced, open(path("small.png"))), psnr(reduced, untreated) + 3);
}

}  // namespace
}  // namespace vx::host_test
