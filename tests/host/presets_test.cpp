#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

// Dark, coarsely coded and noisy, so that everything has something to do.
VImage poorScene(double share, double offset, double sigma) {
  const VImage noise = VImage::gaussnoise(
      300, 200, VImage::option()->set("sigma", sigma)->set("mean", 0)->set("seed", 1));
  return picture(pattern(300, 200, 3, 8).gaussblur(2) * share + offset + noise, 8);
}

class Presets : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    save(pattern(90, 70, 3, 8), "in.png");
  }
  void expectSame(const std::string& name, const std::string& other) const {
    EXPECT_TRUE(bytesOf(name) == bytesOf(other)) << name << ", " << other;
  }
};

TEST_F(Presets, SavedOneGivesTheSameBytes) {
  runWell(
      "adjust in.png -o a.png --preset vivid --luma-gamma 0.333333343 --hue-shift -.1"
      " --save-preset mine.toml");
  runWell("adjust in.png -o b.png --preset mine.toml");
  expectSame("a.png", "b.png");
  runWell("adjust --preset mine.toml --save-preset again.toml");
  expectSame("mine.toml", "again.toml");
  runBadly(1, "again.toml", "adjust --preset mine.toml --save-preset again.toml");
}

TEST_F(Presets, TheCommandLineHasTheLastWord) {
  write("bright.toml", "luma-gamma = 2\nsat-contrast = 0.5\n");
  runWell("adjust in.png -o a.png --luma-gamma 1 --preset bright.toml");
  runWell("adjust in.png -o b.png --luma-gamma 1 --sat-contrast 0.5");
  expectSame("a.png", "b.png");
}

TEST_F(Presets, MistakesAreUsageErrorsThatNameTheKey) {
  for (const std::string text : {"luma-gama = 1\n", "luma-gamma = 9\n", "luma-gamma = much\n",
                                 "luma-gamma = 1\nluma-gamma = 2\n", "luma-gamma = [1, 2]\n",
                                 "[tone]\nluma-gamma = 1\n", "luma-gamma 1\n"}) {
    write("wrong.toml", text);
    const std::string key = text[0] == '[' ? "tone" : text.substr(0, text.find(' '));
    runBadly(2, key, "adjust in.png -o out.png --preset wrong.toml");
  }
  EXPECT_EQ(files(), (Names{"in.png", "wrong.toml"}));
}

TEST_F(Presets, ShippedOnesWorkAndDiffer) {
  save(poorScene(0.6, 30, 12), "in.jpg[Q=60]");
  Names results;
  for (const std::string name : {"clean-jpeg", "high-iso", "low-light", "old-jpeg", "vivid"}) {
    EXPECT_EQ(run("adjust in.jpg -o out.png --force --preset " + name).code, 0);
    EXPECT_GT(largestDifference(open("in.jpg"), open("out.png")), 0) << name;
    for (const auto& other : results) EXPECT_TRUE(bytesOf("out.png") != other) << name;
    results.push_back(bytesOf("out.png"));
  }
}

TEST_F(Presets, AutoTellsInALineWhatItChoseAndSavesIt) {
  save(poorScene(0.5, 15, 10), "in.jpg[Q=60]");
  const Outcome outcome = run("adjust in.jpg -o a.png --auto --save-preset p.toml");
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.complaints(), 1) << outcome.err;
  for (const char* part : {"gamma", "noise ", "non-local", "quality 60"})
    EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
  EXPECT_NE(bytesOf("p.toml").find("luma-gamma = "), std::string::npos);
  // Without a picture it is the wish that is kept.
  runWell("adjust --auto --save-preset wish.toml");
  for (const std::string preset : {"p.toml", "wish.toml"}) {
    EXPECT_EQ(run("adjust in.jpg -o b.png --force --preset " + preset).code, 0);
    expectSame("a.png", "b.png");
  }
}

TEST_F(Presets, AutoLeavesADrawingAlone) {
  const VImage drawing =
      picture(VImage::black(300, 200, VImage::option()->set("bands", 3)) + 240, 8).copy_memory();
  drawing.draw_rect({20, 60, 180}, 30, 30, 120, 80, VImage::option()->set("fill", true));
  save(drawing, "drawing.png");
  runTelling("drawing", "adjust drawing.png -o a.png --auto");
  EXPECT_EQ(largestDifference(drawing, open("a.png")), 0);
}

}  // namespace
}  // namespace vx::host_test
