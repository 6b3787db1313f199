#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

using vips::VImage;

class Presets : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    pattern(90, 70, 3, 8).pngsave(path("in.png").c_str());
  }
};

TEST_F(Presets, SavedOneGivesTheSameBytes) {
  runWell({"adjust", "in.png", "-o", "a.png", "--preset", "vivid", "--luma-gamma", "0.333333343",
           "--hue-shift", "-.1", "--save-preset", "mine.toml"});
  runWell({"adjust", "in.png", "-o", "b.png", "--preset", "mine.toml"});
  EXPECT_EQ(bytesOf(path("a.png")), bytesOf(path("b.png")));
  runWell({"adjust", "--preset", "mine.toml", "--save-preset", "again.toml"});
  EXPECT_EQ(bytesOf(path("mine.toml")), bytesOf(path("again.toml")));
  runBadly(1, "again.toml", {"adjust", "--preset", "mine.toml", "--save-preset", "again.toml"});
}

TEST_F(Presets, TheCommandLineHasTheLastWord) {
  write("bright.toml", "luma-gamma = 2\nsat-contrast = 0.5\n");
  runWell({"adjust", "in.png", "-o", "a.png", "--luma-gamma", "1", "--preset", "bright.toml"});
  runWell({"adjust", "in.png", "-o", "b.png", "--luma-gamma", "1", "--sat-contrast", "0.5"});
  EXPECT_EQ(bytesOf(path("a.png")), bytesOf(path("b.png")));
}

TEST_F(Presets, MistakesAreUsageErrorsThatNameTheKey) {
  for (const auto& [text, word] :
       {std::pair<std::string, std::string>{"luma-gama = 1\n", "luma-gama"},
        {"luma-gamma = 9\n", "luma-gamma"},
        {"luma-gamma = much\n", "luma-gamma"},
        {"luma-gamma = 1\nluma-gamma = 2\n", "luma-gamma"},
        {"luma-gamma = [1, 2]\n", "luma-gamma"},
        {"[tone]\nluma-gamma = 1\n", "tone"},
        {"luma-gamma 1\n", "luma-gamma"}}) {
    write("wrong.toml", text);
    runBadly(2, word, {"adjust", "in.png", "-o", "out.png", "--preset", "wrong.toml"});
  }
  EXPECT_EQ(files(), (std::vector<std::string>{"in.png", "wrong.toml"}));
}

TEST_F(Presets, ShippedOnesWorkAndDiffer) {
  const VImage noisy =
      pattern(300, 200, 3, 8) * 0.6 + 30 +
      VImage::gaussnoise(300, 200, VImage::option()->set("sigma", 12)->set("mean", 0));
  noisy.cast(VIPS_FORMAT_UCHAR).jpegsave(path("in.jpg").c_str(), VImage::option()->set("Q", 60));
  std::vector<std::vector<std::uint8_t>> results;
  for (const std::string name : {"clean-jpeg", "high-iso", "low-light", "old-jpeg", "vivid"}) {
    EXPECT_EQ(run({"adjust", "in.jpg", "-o", name + ".png", "--preset", name}).code, 0);
    EXPECT_GT(largestDifference(open(path("in.jpg")), open(path(name + ".png"))), 0) << name;
    for (const auto& other : results) EXPECT_NE(bytesOf(path(name + ".png")), other) << name;
    results.push_back(bytesOf(path(name + ".png")));
  }
}

// Dark, coarsely coded and noisy: every part of it has something to do.
TEST_F(Presets, AutoTellsInALineWhatItChoseAndSavesIt) {
  const VImage scene = pattern(300, 200, 3, 8).gaussblur(2) * 0.5 + 15;
  const VImage noise = VImage::gaussnoise(
      300, 200, VImage::option()->set("sigma", 10)->set("mean", 0)->set("seed", 1));
  (scene + noise)
      .cast(VIPS_FORMAT_UCHAR)
      .jpegsave(path("in.jpg").c_str(), VImage::option()->set("Q", 60));
  const Outcome outcome =
      run({"adjust", "in.jpg", "-o", "a.png", "--auto", "--save-preset", "p.toml"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.complaints(), 1) << outcome.err;
  for (const char* part : {"gamma", "noise ", "non-local", "quality 60"})
    EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
  EXPECT_EQ(run({"adjust", "in.jpg", "-o", "b.png", "--preset", "p.toml"}).code, 0);
  EXPECT_TRUE(bytesOf(path("a.png")) == bytesOf(path("b.png")));
  const auto saved = bytesOf(path("p.toml"));
  EXPECT_EQ(std::string(saved.begin(), saved.end()).find("luma-gamma = 0\n"), std::string::npos);
  // Without a picture it is the wish that is kept.
  runWell({"adjust", "--auto", "--save-preset", "wish.toml"});
  EXPECT_EQ(run({"adjust", "in.jpg", "-o", "c.png", "--preset", "wish.toml"}).code, 0);
  EXPECT_TRUE(bytesOf(path("a.png")) == bytesOf(path("c.png")));
}

TEST_F(Presets, AutoLeavesADrawingAlone) {
  const VImage paper = (VImage::black(300, 200, VImage::option()->set("bands", 3)) + 240)
                           .cast(VIPS_FORMAT_UCHAR)
                           .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
  const VImage drawing = paper.copy_memory();
  drawing.draw_rect({20, 60, 180}, 30, 30, 120, 80, VImage::option()->set("fill", true));
  drawing.pngsave(path("drawing.png").c_str());
  runTelling("drawing", {"adjust", "drawing.png", "-o", "a.png", "--auto"});
  EXPECT_EQ(largestDifference(drawing, open(path("a.png"))), 0);
}

}  // namespace
}  // namespace vx::host_test
