#include <cstdio>
#include <nlohmann/json.hpp>

#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

using Json = nlohmann::json;

VImage smooth(int depth) { return picture(pattern(300, 200, 3, depth).gaussblur(3), depth); }

// Gaussian, in each band another; sigma in steps of 255.
VImage withNoise(const VImage& image, double sigma) {
  std::vector<VImage> bands;
  for (int band = 0; band < image.bands(); ++band)
    bands.push_back(VImage::gaussnoise(
        image.width(), image.height(),
        VImage::option()->set("mean", 0)->set("sigma", sigma)->set("seed", band + 1)));
  const bool deep = image.format() == VIPS_FORMAT_USHORT;
  return picture(image + VImage::bandjoin(bands) * (deep ? 257 : 1), deep ? 16 : 8);
}

class Noise : public HostTest {
 protected:
  Json estimate(const Names& files, int code = 0) const {
    Names arguments{"noise", "--json"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, code) << outcome.err;
    EXPECT_EQ(outcome.complaints(), code) << outcome.err;
    Json list = Json::parse(outcome.out, nullptr, false);
    EXPECT_TRUE(list.is_array()) << outcome.out;
    return list;
  }
  // The picture in.png without its noise.
  VImage adjusted(const std::string& options, const std::string& told = "note: noise ") const {
    runTelling(told, "adjust in.png -o out.png --force " + options);
    return open("out.png");
  }
  // The mean change of a sample.
  double change(const std::string& options, const std::string& told = "note: noise ") const {
    return (open("in.png") - adjusted(options, told)).abs().avg();
  }
};

TEST_F(Noise, EstimateFollowsTheNoiseAndIsTheSameInText) {
  const VImage grey = picture(VImage::black(256, 256, VImage::option()->set("bands", 3)) + 128, 8);
  save(withNoise(grey, 6), "a.png");
  save(withNoise(grey, 12), "b.png");
  save(picture(withNoise(grey, 6) * 257, 16), "c.tif");
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
  EXPECT_NE(run("noise b.png").out.find(text), std::string::npos) << text;
}

TEST_F(Noise, JsonIsValidWhateverTheNameAndTheFailures) {
  const std::string name = "a \"b\"\n\\\xc3\xa4\xff.png";
  save(pattern(40, 30, 3, 8), "plain.png");
  fs::rename(path("plain.png"), path(name));
  save(pattern(3, 40, 3, 8), "in.png");
  write("broken.png", "no picture");
  const Json list = estimate({name, "broken.png", "in.png"}, 1);
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["file"], "a \"b\"\n\\\xc3\xa4\xef\xbf\xbd.png");
  EXPECT_EQ(list[0]["libraryKnown"], true);
  EXPECT_EQ(list[1]["libraryKnown"], false) << "below 4 pixels there is nothing to measure";
  EXPECT_EQ(list[1]["fast"]["denoiseStrength"], 0);
  EXPECT_EQ(estimate({"missing.png"}, 1), Json::array());
  runBadly(2, "no picture", "noise");
  EXPECT_LE(largestDifference(open("in.png"), adjusted("--denoise 1", "too small")), 1);
}

// A picture larger than what the estimate looks at, which is all that is kept of it.
TEST_F(Noise, OfALargePictureTheCentreIsMeasured) {
  const VImage image = withNoise(pattern(4124, 90, 3, 8), 8);
  save(image, "in.tif");
  save(image.crop(14, 0, 4096, 90), "centre.tif");
  const Json list = estimate({"in.tif", "centre.tif"});
  EXPECT_EQ(list[0]["sigma"], list[1]["sigma"]);
  EXPECT_EQ(list[0]["library"], list[1]["library"]);
}

TEST_F(Noise, AutoTakesTheToldStrengthAndGetsNearerToTheOriginal) {
  for (const int depth : {8, 16}) {
    const VImage original = smooth(depth);
    save(withNoise(original, 10), "in.png");
    const double before = psnr(original, open("in.png"));
    // Measured: see the gains below plus a tenth or more.
    for (const auto& [mode, gain] :
         {std::pair<std::string, double>{"fast", 0.5}, {"nonlocal", 7}}) {
      SCOPED_TRACE(mode + std::to_string(depth));
      const auto with = [&](const std::string& strength) {
        return adjusted("--denoise-mode " + mode + " --denoise " + strength);
      };
      const VImage result = with("auto");
      EXPECT_GT(psnr(original, result), before + gain);
      EXPECT_EQ(largestDifference(result, with("1")), 0) << "auto is 1";
      EXPECT_GT(largestDifference(result, with("0.5")), 0);
    }
  }
}

TEST_F(Noise, AGivenSigmaTakesThePlaceOfTheEstimate) {
  save(withNoise(smooth(8), 10), "in.png");
  EXPECT_GT(change("--denoise auto --noise 8.0", "taken to be 8.0"),
            change("--denoise auto --noise 2.0", "taken to be 2.0") + 1);
  runBadly(2, "--noise", "adjust in.png -o out.png --noise -2");
}

TEST_F(Noise, GrainComesBackInItsShare) {
  save(withNoise(smooth(8), 10), "in.png");
  const double without = change("--denoise 1 --grain 0");
  EXPECT_GT(without, 1.5);
  EXPECT_NEAR(change("--denoise 1 --grain 0.5"), without / 2, 0.3);
  EXPECT_LT(change("--denoise 1 --grain 1"), 0.3);
}

TEST_F(Noise, PreviewResemblesTheReducedResult) {
  save(withNoise(smooth(8), 16), "in.png");
  runWell("adjust --denoise auto --save-preset p.toml");
  const auto reduced = [](const VImage& image) { return picture(image.shrink(2, 2), 8); };
  const VImage wanted = reduced(adjusted("--preset p.toml"));
  EXPECT_GT(psnr(wanted, adjusted("--preset p.toml --preview-scale 2")),
            psnr(wanted, reduced(open("in.png"))) + 3);
}

}  // namespace
}  // namespace vx::host_test
