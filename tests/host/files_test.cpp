#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

using vips::VImage;
using Names = std::vector<std::string>;

class Files : public HostTest {
 protected:
  void cut(const std::string& from, const std::string& to, double share) const {
    const auto bytes = bytesOf(path(from));
    const auto length = static_cast<std::size_t>(share * static_cast<double>(bytes.size()));
    write(to, std::string(bytes.begin(), bytes.end()).substr(0, length));
  }
  // One picture fails, in one line that names it and gives a reason; nothing is left behind.
  void expectRefused(const std::string& in, const std::string& reason,
                     const std::string& out = "out.png") const {
    const Names before = files();
    runBadly(1, reason, {"adjust", in, "-o", out});
    EXPECT_EQ(files(), before);
  }
};

TEST_F(Files, WhatIsNoWholePictureIsRefused) {
  for (const std::string extension : {"jpg", "png", "tif", "webp"}) {
    pattern(200, 200, 3, 8).write_to_file(path("good." + extension).c_str());
    for (const double share : {0.03, 0.5, 0.9}) {
      cut("good." + extension, "cut." + extension, share);
      expectRefused("cut." + extension, "cannot read");
    }
  }
  write("empty.jpg", "");
  write("text.jpg", "not a picture at all");
  fs::create_directory(path("empty_folder"));
  expectRefused("empty.jpg", "is empty");
  expectRefused("text.jpg", "is not a JPEG, PNG, TIFF or WebP picture");
  expectRefused("missing.jpg", "No such file");
  expectRefused("/dev/null", "is not a regular file");
}

TEST_F(Files, WhatWouldLoseSomethingIsRefused) {
  const VImage image = pattern(40, 30, 3, 8);
  image.cast(VIPS_FORMAT_FLOAT).tiffsave(path("float.tif").c_str());
  image.colourspace(VIPS_INTERPRETATION_LABS).tiffsave(path("lab.tif").c_str());
  VImage pages = image.join(image.invert(), VIPS_DIRECTION_VERTICAL).copy();
  pages.set(VIPS_META_PAGE_HEIGHT, 30);
  pages.tiffsave(path("pages.tif").c_str());
  pages.webpsave(path("moving.webp").c_str());
  VImage::bandjoin({image, image, image}).tiffsave(path("bands.tif").c_str());
  pattern(40, 30, 4, 8).pngsave(path("alpha.png").c_str());
  expectRefused("float.tif", "samples");
  expectRefused("lab.tif", "only");
  expectRefused("pages.tif", "2 pages");
  expectRefused("moving.webp", "2 pages");
  expectRefused("bands.tif", "9 channels");
  expectRefused("alpha.png", "transparency", "out.jpg");
}

TEST_F(Files, TooLargePicturesAreRefusedWithTheReason) {
  // 400 megapixels of black compress to nothing; the header alone has to be enough for the refusal.
  VImage::black(20000, 20000)
      .pngsave(path("large.png").c_str(), VImage::option()->set("compression", 1));
  const std::vector<std::string> large{"adjust",  "large.png",        "-o",
                                       "out.png", "--max-megapixels", "100"};
  runBadly(1, "400.0 megapixels", large);
  runBadly(1, "GB of memory", large);
  EXPECT_EQ(files(), Names{"large.png"});
  VImage::black(17000, 2).pngsave(path("long.png").c_str());
  expectRefused("long.png", "up to 16383", "out.webp");
}

TEST_F(Files, OneFailureDoesNotStopTheOthers) {
  pattern(40, 30, 3, 8).pngsave(path("a.png").c_str());
  write("b.jpg", "not a picture");
  pattern(40, 30, 3, 8).jpegsave(path("c.JPG").c_str());
  runBadly(1, "b.jpg", {"adjust", "a.png", "b.jpg", "c.JPG", "-o", "results", "--suffix", "_x"});
  EXPECT_EQ(files("results"), (Names{"a_x.png", "c_x.JPG"}));
  EXPECT_EQ(run({"adjust", ".", "-o", "all/", "--format", "webp"}).code, 1);
  EXPECT_EQ(files("all"), (Names{"a.webp", "c.webp"}));
}

TEST_F(Files, NothingIsOverwrittenWithoutForce) {
  pattern(40, 30, 3, 8).pngsave(path("in.png").c_str());
  const auto original = bytesOf(path("in.png"));
  write("out.png", "precious");
  fs::permissions(path("out.png"), fs::perms::owner_read | fs::perms::owner_write);
  runBadly(1, "--force", {"adjust", "in.png", "-o", "out.png"});
  EXPECT_EQ(bytesOf(path("out.png")).size(), 8U);
  runBadly(1, "--force", {"adjust", "in.png", "-o", "in.png"});
  EXPECT_EQ(bytesOf(path("in.png")), original);

  runWell({"adjust", "in.png", "-o", "out.png", "--force"});
  EXPECT_EQ(open(path("out.png")).width(), 40);
  EXPECT_EQ(fs::status(path("out.png")).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
  runWell({"adjust", "in.png", "-o", "in.png", "--force", "--luma-gamma", "1"});
  EXPECT_NE(bytesOf(path("in.png")), original);
  fs::create_symlink("out.png", path("link.png"));
  runWell({"adjust", "in.png", "-o", "link.png", "--force"});
  EXPECT_TRUE(fs::is_symlink(path("link.png")));
  EXPECT_EQ(files(), (Names{"in.png", "link.png", "out.png"}));
}

TEST_F(Files, FullDiskAndBadFoldersLeaveNothing) {
  pattern(300, 300, 3, 8).pngsave(path("in.png").c_str());
  write("old.tif", "precious");
  const Environment full{.variables = {}, .fileSizeLimit = 3000};
  for (const std::string out : {"out.png", "out.jpg", "out.tif", "out.webp"})
    runBadly(1, "cannot write", {"adjust", "in.png", "-o", out}, full);
  runBadly(1, "cannot write", {"adjust", "in.png", "-o", "old.tif", "--force"}, full);
  EXPECT_EQ(bytesOf(path("old.tif")).size(), 8U);
  for (const std::string out : {"missing/out.png", "/proc/out.png", "in.png/out.png"})
    runBadly(1, "out.png", {"adjust", "in.png", "-o", out});
  EXPECT_EQ(files(), (Names{"in.png", "old.tif"}));
}

// The preloaded library raises the signal at a known place (raise_signal.c).
TEST_F(Files, CancellingLeavesNoFile) {
  pattern(300, 200, 3, 8).pngsave(path("a.png").c_str());
  pattern(300, 200, 3, 8).pngsave(path("b.png").c_str());
  for (const std::string place : {"progress", "fsync", "fsync-twice"}) {
    for (const std::string signal : {"2", "15"}) {
      SCOPED_TRACE(place + " " + signal);
      const Outcome outcome =
          run({"adjust", "a.png", "b.png", "-o", "results", "--luma-gamma", "1"},
              {.variables = {{"LD_PRELOAD", VX_RAISE_SIGNAL},
                             {"VX_RAISE_AT", place},
                             {"VX_RAISE", signal},
                             {"ASAN_OPTIONS", "verify_asan_link_order=0"}},
               .fileSizeLimit = 0});
      EXPECT_EQ(outcome.code, 130) << outcome.err;
      EXPECT_LE(outcome.complaints(), 1) << outcome.err;
      EXPECT_EQ(files("results"), Names{});
    }
  }
}

TEST_F(Files, UsageErrorsAreOneLineAndDoNothing) {
  pattern(20, 20, 3, 8).pngsave(path("a.png").c_str());
  fs::create_directory(path("other"));
  pattern(20, 20, 3, 8).pngsave(path("other/a.png").c_str());
  runBadly(2, "", {});
  runBadly(2, "", {"adjust"});
  runBadly(2, "", {"adjust", "a.png"});
  runBadly(2, "", {"unknown", "a.png"});
  const std::vector<Names> wrongOptions{
      {"--no-such-option"},           {"--luma-gamma", "4.5"}, {"--luma-gamma", "nan"},
      {"--luma-gamma", "1x"},         {"--quality", "0"},      {"--depth", "12"},
      {"--preview-scale", "0"},       {"--format", "jpeg"},    {"--format", "gif"},
      {"--preset", "no-such-preset"}, {"other/a.png"}};
  for (const Names& options : wrongOptions) {
    Names arguments{"adjust", "a.png", "-o", "out.png"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    runBadly(2, "", arguments);
  }
  runBadly(2, "", {"adjust", "a.png", "-o", "out.jpg", "--depth", "16"});
  runBadly(2, "", {"adjust", "a.png", "-o", "out.bmp"});
  runBadly(2, "", {"adjust", "a.png", "other/a.png", "-o", "out/"});
  runBadly(2, "", {"adjust", "a.png", "other/a.png", "-o", "other", "--force"});
  fs::remove(path("out"));
  EXPECT_EQ(files(), (Names{"a.png", "other"}));
  for (const Names& asked : {Names{"--help"}, {"adjust", "--help"}, {"--version"}})
    EXPECT_EQ(run(asked).code, 0);
}

}  // namespace
}  // namespace vx::host_test
