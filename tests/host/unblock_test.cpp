#include <random>

#include "hosts/auto/auto_jpeg.h"
#include "hosts/cli/pictures/jpeg_header.h"
#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

// 0 where the file has none.
int jpegQuality(const fs::path& path) {
  const auto header = cli::jpegHeader(path);
  return vxAutoJpegQuality(header ? header->lumaSteps.data() : nullptr);
}

class Unblock : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    original_ = picture(pattern(250, 190, 3, 8).gaussblur(1.5), 8);
    for (const std::string name : {"original.png", "q25.jpg[Q=25]", "q95.jpg[Q=95]"})
      save(original_, name);
  }
  VImage original_;
};

TEST_F(Unblock, QualityIsThatOfTheEncoder) {
  for (int quality = 1; quality <= 100; ++quality) {
    save(pattern(24, 16, quality % 2 ? 3 : 1, 8), "in.jpg[Q=" + std::to_string(quality) + "]");
    EXPECT_EQ(jpegQuality(path("in.jpg")), quality);
  }
  for (const std::string name : {"original.png", "missing.jpg", ""})
    EXPECT_EQ(jpegQuality(path(name)), 0);
}

// Under the sanitizers this looks for what hostile headers could reach.
TEST_F(Unblock, HostileHeadersGiveAQualityOrNone) {
  const std::string good = bytesOf("q25.jpg");
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
  runTelling(told, "unblock q25.jpg -o a.png");
  runTelling(told, "adjust q25.jpg -o b.png --unblock auto");
  runWell("unblock q25.jpg -o c.png --trip-quality 25");
  EXPECT_TRUE(bytesOf("a.png") == bytesOf("c.png"));
  const VImage result = open("a.png"), before = open("q25.jpg");
  EXPECT_GT(psnr(original_, result), psnr(original_, before) + 1.2);  // 33.9 and 35.3
  EXPECT_NEAR(result.avg(), before.avg(), 0.1) << "brightness";
  EXPECT_EQ(largestDifference(result, open("b.png")), 0);
}

TEST_F(Unblock, AutoLeavesAloneWhatIsFineOrUnknown) {
  for (const auto& [in, reason] : {std::pair<std::string, std::string>{"q95.jpg", "quality 95"},
                                   {"original.png", "nothing known"}}) {
    runTelling(reason, "unblock " + in + " -o a.png --force");
    EXPECT_EQ(largestDifference(open(in), open("a.png")), 0);
    runTelling(reason, "adjust " + in + " -o a.png --force --unblock auto");
    EXPECT_LE(largestDifference(open(in), open("a.png")), 1);
  }
  runWell("adjust q25.jpg -o small.png --unblock auto --preview-scale 2");
}

TEST_F(Unblock, EverySettingReachesTheTrips) {
  Names results{bytesOf("original.png")};
  for (const std::string setting : {"--shift-step 1", "--shift-step 2", "--trip-chroma 422",
                                    "--trip-chroma 420", "--trip-colours rgb"}) {
    fs::remove(path("p.toml"));
    runWell("unblock original.png -o out.png --force --trip-quality 40 --save-preset p.toml " +
            setting);
    for (const auto& other : results) EXPECT_TRUE(bytesOf("out.png") != other) << setting;
    results.push_back(bytesOf("out.png"));
    runWell("unblock original.png -o again.png --preset p.toml --force");
    EXPECT_TRUE(bytesOf("again.png") == results.back()) << setting;
  }
  // 16 bits: rows are counted in samples.
  save(pattern(251, 33, 3, 16), "deep.png");
  runWell("unblock deep.png -o out.png --trip-quality 98 --force");
  EXPECT_GT(psnr(open("deep.png"), open("out.png"), 65535), 40);
}

TEST_F(Unblock, MistakesAreUsageErrors) {
  for (const std::string mistake : {"--trip-quality 0", "--trip-quality none", "--trip-chroma 1",
                                    "--trip-colours cmyk", "--shift-step 1.5"})
    runBadly(2, mistake.substr(0, mistake.find(' ')), "unblock q25.jpg -o out.png " + mistake);
}

}  // namespace
}  // namespace vx::host_test
