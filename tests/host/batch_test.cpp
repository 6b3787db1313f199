// Many pictures, pipes, and what the program says of a command line.
#include <nlohmann/json.hpp>

#include "hosts/cli/pictures/jpeg_header.h"
#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

class Batch : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    fs::create_directories(path("in/sub/deep"));
    for (const std::string name : {"in/a.png", "in/b.png", "in/sub/c.png", "in/sub/deep/d.png"})
      save(pattern(60 + int(name.size()), 50, 3, 8), name);
  }
  std::vector<nlohmann::json> objects(const std::string& line, int code) const {
    const Outcome outcome = run(line);
    EXPECT_EQ(outcome.code, code) << outcome.err;
    std::vector<nlohmann::json> all;
    std::istringstream lines(outcome.out);
    for (std::string text; std::getline(lines, text);) all.push_back(nlohmann::json::parse(text));
    return all;
  }
};

TEST_F(Batch, TheTreeIsKeptAndGoneOnWith) {
  runWell("adjust in -o in/out -r --preset vivid --quiet");
  EXPECT_EQ(files("in/out"), (Names{"a.png", "b.png", "sub"}));
  EXPECT_EQ(files("in/out/sub/deep"), Names{"d.png"});
  const std::string first = bytesOf("in/out/b.png");
  fs::remove(path("in/out/a.png"));
  write("in/out/b.png", "kept");
  // Its own results are no pictures to it.
  const auto told = objects("adjust in -o in/out -r --preset vivid --skip-existing --json", 0);
  ASSERT_EQ(told.size(), 4U);
  EXPECT_EQ(told[0]["status"], "done");
  EXPECT_EQ(told[0]["file"], "in/a.png");
  EXPECT_EQ(told[0]["settings"]["luma-detail-gain"], "1.2");
  for (const std::size_t i : {1U, 2U, 3U}) EXPECT_EQ(told[i]["status"], "skipped") << i;
  EXPECT_EQ(bytesOf("in/out/b.png"), "kept");
  fs::remove_all(path("in/out"));
  for (int turn = 0; turn < 2; ++turn)
    runWell("adjust in --suffix _v --preset vivid --skip-existing --quiet");
  EXPECT_EQ(files("in"), (Names{"a.png", "a_v.png", "b.png", "b_v.png", "sub"}));
  EXPECT_EQ(bytesOf("in/b_v.png"), first);
}

TEST_F(Batch, SeveralAtATimeGiveTheSameBytesAndOrder) {
  for (int i = 0; i < 12; ++i)
    save(pattern(300 - 20 * i, 90, 3, 8), "in/p" + std::to_string(10 + i) + ".png");
  write("in/p15.png", "no picture");
  for (const std::string jobs : {"1", "3"})
    for (const auto& told :
         {objects("adjust in --json --luma-gamma 1 -o o" + jobs + " -j " + jobs, 1)}) {
      ASSERT_EQ(told.size(), 14U);
      for (std::size_t i = 1; i < told.size(); ++i) EXPECT_LT(told[i - 1]["file"], told[i]["file"]);
      EXPECT_EQ(told[7]["status"], "failed");
    }
  ASSERT_EQ(files("o1").size(), 13U);
  for (const std::string& name : files("o1"))
    EXPECT_EQ(bytesOf("o1/" + name), bytesOf("o3/" + name));
}

// As a decoder that crashes would end it.
TEST_F(Batch, AWorkerThatDiesCostsItsPicturesAlone) {
  const Outcome outcome = run("adjust in/a.png in/b.png in/sub/c.png -o o -j 2 --luma-gamma 1 -q",
                              {.variables = {{"LD_PRELOAD", VX_RAISE_SIGNAL},
                                             {"VX_RAISE_AT", "progress"},
                                             {"VX_RAISE", "9"},
                                             {"ASAN_OPTIONS", "verify_asan_link_order=0"}}});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.complaints(), 3) << outcome.err;
  EXPECT_NE(outcome.err.find("in/sub/c.png: its process died: Killed"), std::string::npos);
  EXPECT_EQ(files(), Names{"in"}) << "the folder made for nothing has to go";
}

TEST_F(Batch, PicturesGoThroughPipes) {
  runWell("adjust in/a.png -o a.png --preset vivid");
  const std::string program = "cd " + path("") + " && " VX_PROGRAM " adjust - -o - --preset vivid";
  EXPECT_EQ(std::system((program + " < in/a.png > piped.png").c_str()), 0);
  EXPECT_EQ(bytesOf("piped.png"), bytesOf("a.png"));
  EXPECT_NE(std::system((program + " < /dev/null > none.png 2> told").c_str()), 0);
  EXPECT_EQ(bytesOf("none.png") + bytesOf("told"), "vxicore: standard input: is empty\n");
  // A pipe that brings nothing and does not end.
  const std::string waiting = "cd " + path("") + " && mkfifo pipe && exec 9<> pipe && " +
                              "timeout --preserve-status -s INT 1 " VX_PROGRAM
                              " adjust - -o late.png --preset vivid < pipe 2> told";
  EXPECT_EQ(WEXITSTATUS(std::system(waiting.c_str())), 130);
  EXPECT_EQ(bytesOf("told"), "vxicore: cancelled\n");
}

TEST_F(Batch, CommandLinesAreUnderstoodOrAdvised) {
  save(pattern(40, 30, 3, 8), "-dash.png");
  runWell("adjust --preset vivid in/a.png -o a.png");
  runWell("adjust --hue-shift 0.1 -o dash.png -- -dash.png");
  runBadly(2, "did you mean adjust", "adjst in/a.png");
  runBadly(2, "vxicore adjust in/a.png -o OUT", "in/a.png");
  runBadly(2, "did you mean --preset", "adjust in/a.png -o b.png --presett vivid");
  runBadly(2, "did you mean vivid", "adjust in/a.png -o b.png --preset vivd");
  runBadly(2, "nothing was asked for", "adjust in/a.png -o new/folder/");
  runBadly(2, "--lossless: no result is webp", "adjust in/a.png -o new/folder/ --lossless");
  EXPECT_EQ(files(), (Names{"-dash.png", "a.png", "dash.png", "in"}));
}

TEST_F(Batch, PresetsCombineAndMayBeOnesOwn) {
  fs::create_directories(path("config/vxicore26/presets/adjust"));
  write("config/vxicore26/presets/adjust/mine.toml",
        "\xef\xbb\xbf# Mine: it is.\nsat-contrast = 0.5\n");
  const Environment own{.variables = {{"XDG_CONFIG_HOME", path("config")}}};
  runWell("adjust --luma-gamma 1 --save-preset bright.toml");
  EXPECT_EQ(run("adjust in/a.png -o a.png --preset mine --preset bright.toml", own).code, 0);
  runWell("adjust in/a.png -o b.png --luma-gamma 1 --sat-contrast 0.5");
  EXPECT_EQ(bytesOf("a.png"), bytesOf("b.png"));
  const std::string listed = run("presets", own).out;
  EXPECT_NE(listed.find("  mine             Mine: it is."), std::string::npos) << listed;
}

TEST_F(Batch, CodingIsThatOfTheSource) {
  const VImage image = picture(pattern(160, 120, 3, 8).gaussblur(1), 8);
  for (const std::string coding :
       {"jpg[Q=75]", "jpg[Q=75,interlace]", "jpg[Q=60,no-subsample]", "jpg[Q=95]",
        "tif[compression=lzw]", "tif[compression=deflate,predictor=none]", "tif[compression=zstd]",
        "tif", "webp[lossless]"}) {
    SCOPED_TRACE(coding);
    const std::string extension = coding.substr(0, coding.find('['));
    save(image, "in." + coding);
    runWell("adjust in." + extension + " -o out." + extension + " --hue-shift 0 --force");
    if (extension != "jpg") {
      EXPECT_NEAR(double(bytesOf("out." + extension).size()),
                  double(bytesOf("in." + extension).size()), 300);
      EXPECT_EQ(largestDifference(image, open("out." + extension)), 0);
      continue;
    }
    const auto before = cli::jpegHeader(path("in.jpg")), after = cli::jpegHeader(path("out.jpg"));
    EXPECT_EQ(after->lumaSteps, before->lumaSteps);
    EXPECT_EQ(after->subsampled, before->subsampled);
    EXPECT_EQ(after->progressive, before->progressive);
  }
  save(image, "big.tif[bigtiff,compression=lzw]");
  runTelling("EXIF of a BigTIFF", "adjust big.tif -o out.tif --hue-shift 0 --force");
  EXPECT_EQ(bytesOf("out.tif").substr(0, 4), bytesOf("big.tif").substr(0, 4));
  EXPECT_EQ(largestDifference(image, open("out.tif")), 0);
  const auto size = [&](const std::string& options) {
    runWell("adjust in.jpg -o out." + options + " --hue-shift 0 --force");
    return bytesOf("out." + options.substr(0, options.find(' '))).size();
  };
  save(image, "in.jpg[Q=60]");
  EXPECT_GT(size("jpg --subsampling 444"), size("jpg"));
  EXPECT_GT(size("jpg --quality 80"), size("jpg"));
  EXPECT_GT(size("webp --lossless"), size("webp"));
  EXPECT_GT(size("tif"), size("tif --compression deflate"));
  // What was made smooth is not made coarse again.
  EXPECT_EQ(run("unblock in.jpg -o smooth.jpg").code, 0);
  EXPECT_GT(bytesOf("smooth.jpg").size(), size("jpg"));
}

TEST_F(Batch, MetadataGoesWhereThatIsAsked) {
  save(pattern(60, 50, 3, 8), "in.jpg");
  addMetadata("in.jpg");
  runWell("adjust in.jpg -o home.jpg --strip-location");
  runWell("adjust in.jpg -o bare.jpg --strip");
  const Exiv2::ExifData home = metadataOf("home.jpg")->exifData();
  const Exiv2::ExifData bare = metadataOf("bare.jpg")->exifData();
  EXPECT_EQ(home.findKey(Exiv2::ExifKey("Exif.GPSInfo.GPSLatitude")), home.end());
  EXPECT_NE(home.findKey(Exiv2::ExifKey("Exif.Image.Model")), home.end());
  EXPECT_EQ(bare.findKey(Exiv2::ExifKey("Exif.Image.Model")), bare.end());
  EXPECT_NE(bare.findKey(Exiv2::ExifKey("Exif.Image.Orientation")), bare.end());
}

TEST_F(Batch, TransparencyIsPutOnABackground) {
  const VImage clear = pattern(40, 30, 4, 8);
  const auto colour = VImage::option()->set("background", std::vector<double>{64, 255, 0});
  save(clear, "clear8.png");
  save((clear * 257)
           .cast(VIPS_FORMAT_USHORT)
           .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16)),
       "clear16.png");
  const VImage wanted = clear.flatten(colour);
  for (const std::string depth : {"8", "16"}) {
    runTelling("background 40ff00", "adjust clear" + depth + ".png -o flat.jpg --force --depth 8" +
                                        " --quality 100 --background 40ff00");
    EXPECT_GT(psnr(wanted, open("flat.jpg")), 30) << depth;
  }
}

}  // namespace
}  // namespace vx::host_test
