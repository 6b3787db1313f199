#include <random>

#include "hosts/auto/auto_jpeg.h"
#include "hosts/cli/pictures/jpeg_table.h"
#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

using vips::VImage;

// 0 where the file has none.
int jpegQuality(const fs::path& path) {
  const auto table = cli::jpegTable(path);
  return vxAutoJpegQuality(table ? table->data() : nullptr);
}

class Unblock : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    original_ = pattern(250, 190, 3, 8).gaussblur(1.5).cast(VIPS_FORMAT_UCHAR);
    original_.pngsave(path("original.png").c_str());
    for (const int quality : {25, 95}) {
      const std::string name = "q" + std::to_string(quality) + ".jpg";
      original_.jpegsave(path(name).c_str(), VImage::option()->set("Q", quality));
    }
  }
  VImage original_;
};

TEST_F(Unblock, QualityIsThatOfTheEncoder) {
  for (int quality = 1; quality <= 100; ++quality) {
    pattern(24, 16, quality % 2 ? 3 : 1, 8)
        .jpegsave(path("in.jpg").c_str(), VImage::option()->set("Q", quality));
    EXPECT_EQ(jpegQuality(path("in.jpg")), quality);
  }
  EXPECT_EQ(jpegQuality(path("original.png")), 0);
  EXPECT_EQ(jpegQuality(path("missing.jpg")), 0);
  EXPECT_EQ(jpegQuality(folder_), 0);
}

// Under the sanitizers this looks for what hostile headers could reach.
TEST_F(Unblock, HostileHeadersGiveAQualityOrNone) {
  const auto bytes = bytesOf(path("q25.jpg"));
  const std::string good(bytes.begin(), bytes.end());
  const std::string header = good.substr(0, good.find("\xff\xda") + 20);
  std::mt19937 random(1);
  int known = 0, unknown = 0;
  for (int turn = 0; turn < 3000; ++turn) {
    std::string bad = header;
    if (turn < 600) {
      bad.resize(random() % bad.size());
    } else {
      for (int i = 0; i < 3; ++i)
        bad[2 + random() % (bad.size() - 2)] = static_cast<char>(random());
    }
    fs::remove(path("bad.jpg"));  // writing over a file can wait for the disk
    write("bad.jpg", bad);
    const int quality = jpegQuality(path("bad.jpg"));
    ++(quality > 0 ? known : unknown);
    ASSERT_TRUE(quality >= 0 && quality <= 100) << "turn " << turn;
  }
  EXPECT_GT(known, 100);
  EXPECT_GT(unknown, 600);
}

TEST_F(Unblock, AutoGetsNearerToTheOriginal) {
  const std::string told = "JPEG coded at quality 25; blocks removed";
  runTelling(told, {"unblock", "q25.jpg", "-o", "a.png"});
  runTelling(told, {"adjust", "q25.jpg", "-o", "b.png", "--unblock", "auto"});
  runWell({"unblock", "q25.jpg", "-o", "c.png", "--trip-quality", "25"});
  EXPECT_TRUE(bytesOf(path("a.png")) == bytesOf(path("c.png")));
  const double before = psnr(original_, open(path("q25.jpg")));  // 33.9; 35.3 afterwards
  EXPECT_GT(psnr(original_, open(path("a.png"))), before + 1.2);
  EXPECT_NEAR(open(path("a.png")).avg(), open(path("q25.jpg")).avg(), 0.1) << "brightness";
  EXPECT_EQ(largestDifference(open(path("a.png")), open(path("b.png"))), 0);
}

TEST_F(Unblock, AutoLeavesAloneWhatIsFineOrUnknown) {
  for (const auto& [in, reason] : {std::pair<std::string, std::string>{"q95.jpg", "quality 95"},
                                   {"original.png", "nothing known"}}) {
    runTelling(reason, {"unblock", in, "-o", "a.png", "--force"});
    EXPECT_EQ(largestDifference(open(path(in)), open(path("a.png"))), 0);
    runTelling(reason, {"adjust", in, "-o", "a.png", "--force", "--unblock", "auto"});
    EXPECT_LE(largestDifference(open(path(in)), open(path("a.png"))), 1);
  }
  runWell({"adjust", "q25.jpg", "-o", "small.png", "--unblock", "auto", "--preview-scale", "2"});
}

TEST_F(Unblock, EverySettingReachesTheTrips) {
  std::vector<std::vector<std::uint8_t>> results{bytesOf(path("original.png"))};
  for (const auto& [option, value] : {std::pair<std::string, std::string>{"--shift-step", "1"},
                                      {"--shift-step", "2"},
                                      {"--trip-chroma", "422"},
                                      {"--trip-chroma", "420"},
                                      {"--trip-colours", "rgb"}}) {
    fs::remove(path("p.toml"));
    runWell({"unblock", "original.png", "-o", "out.png", "--trip-quality", "40", option, value,
             "--force", "--save-preset", "p.toml"});
    for (const auto& other : results) EXPECT_TRUE(bytesOf(path("out.png")) != other) << value;
    results.push_back(bytesOf(path("out.png")));
    runWell({"unblock", "original.png", "-o", "again.png", "--preset", "p.toml", "--force"});
    EXPECT_TRUE(bytesOf(path("again.png")) == results.back()) << value;
  }
  // 16 bits: rows are counted in samples.
  pattern(251, 33, 3, 16).pngsave(path("deep.png").c_str());
  runWell({"unblock", "deep.png", "-o", "out.png", "--trip-quality", "98", "--force"});
  EXPECT_GT(psnr(open(path("deep.png")), open(path("out.png"))), 40);
}

TEST_F(Unblock, MistakesAreUsageErrors) {
  for (const auto& [option, value] : {std::pair<std::string, std::string>{"--trip-quality", "0"},
                                      {"--trip-quality", "none"},
                                      {"--trip-chroma", "1"},
                                      {"--trip-colours", "cmyk"},
                                      {"--shift-step", "1.5"}}) {
    runBadly(2, option, {"unblock", "q25.jpg", "-o", "out.png", option, value});
  }
}

}  // namespace
}  // namespace vx::host_test
