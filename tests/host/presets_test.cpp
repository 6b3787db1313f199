#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

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
  std::vector<std::vector<std::uint8_t>> results{bytesOf(path("in.png"))};
  for (const std::string name : {"clean-jpeg", "high-iso", "low-light", "old-jpeg", "vivid"}) {
    EXPECT_EQ(run({"adjust", "in.png", "-o", name + ".png", "--preset", name}).code, 0);
    for (const auto& other : results) EXPECT_NE(bytesOf(path(name + ".png")), other) << name;
    results.push_back(bytesOf(path(name + ".png")));
  }
}

}  // namespace
}  // namespace vx::host_test
