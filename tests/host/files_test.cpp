#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

class Files : public HostTest {
 protected:
  // One picture fails, in one line that names it and gives a reason; nothing is left behind.
  void expectRefused(const std::string& in, const std::string& reason,
                     const std::string& out = "out.png") const {
    const Names before = files();
    runBadly(1, reason, "adjust --hue-shift 0 " + in + " -o " + out);
    EXPECT_EQ(files(), before);
  }
};

TEST_F(Files, WhatIsNoWholePictureIsRefused) {
  for (const std::string extension : {"jpg", "png", "tif", "webp"}) {
    save(pattern(200, 200, 3, 8), "good." + extension);
    const std::string good = bytesOf("good." + extension);
    for (const double share : {0.03, 0.5, 0.9}) {
      write("cut." + extension, good.substr(0, std::size_t(share * double(good.size()))));
      expectRefused("cut." + extension, "cannot read");
    }
  }
  write("empty.jpg", "");
  write("text.jpg", "not a picture at all");
  fs::create_directory(path("empty_folder"));
  expectRefused("empty.jpg", "is empty");
  expectRefused("text.jpg", "is no picture of a format that is read here: jpeg, png");
  expectRefused("missing.jpg", "No such file");
  expectRefused("/dev/null", "is not a regular file");
}

TEST_F(Files, WhatOtherProgramsReadIsNamed) {
  using std::string_literals::operator""s;
  const struct {
    std::string name, head, reason;
  } cases[] = {{"a.gif", "GIF89a", "is a GIF picture"},
               {"a.mov",
                "\0\0\0\x14"
                "ftypqt  "s,
                "is a video"},
               {"a.cr3",
                "\0\0\0\x18"
                "ftypcrx "s,
                "develop it first"},
               {"a.NEF", "II*\0"s, "develop it first"},
               {"a.jpg", "FUJIFILMCCD-RAW 0201", "develop it first"}};
  for (const auto& c : cases) {
    write(c.name, c.head + std::string(40, '1'));
    expectRefused(c.name, c.reason);
  }
}

// A byte of the pixels was changed, so that the decoder goes on with a guess.
TEST_F(Files, DamageIsNeverEnhancedSilently) {
  for (const std::string name : {"bad.jpg", "bad.png"}) {
    save(pattern(200, 200, 3, 8), name);
    std::string bytes = bytesOf(name);
    bytes.replace(bytes.size() / 2, 4, "\x12\xff\xff\x13");
    write(name, bytes);
    expectRefused(name, "--accept-damage");
    const Outcome outcome =
        run("adjust " + name + " -o out.png --luma-gamma 1 --accept-damage --force");
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_NE(outcome.err.find("note: damaged: "), std::string::npos) << outcome.err;
    EXPECT_EQ(open("out.png").width(), 200);
    fs::remove(path("out.png"));
  }
  save(pattern(20, 20, 3, 8), "good.png");
  const Outcome outcome = run("adjust bad.jpg good.png -o out/ --luma-gamma 1 --accept-damage");
  EXPECT_NE(outcome.err.find("2 done (1 of them damaged)"), std::string::npos) << outcome.err;
}

TEST_F(Files, WhatWouldLoseSomethingIsRefused) {
  const VImage image = pattern(40, 30, 3, 8);
  VImage pages = image.join(image.invert(), VIPS_DIRECTION_VERTICAL).copy();
  pages.set(VIPS_META_PAGE_HEIGHT, 30);
  save(image.cast(VIPS_FORMAT_FLOAT), "float.tif");
  save(image.colourspace(VIPS_INTERPRETATION_LABS), "lab.tif");
  save(pages, "pages.tif");
  save(pages, "moving.webp");
  save(VImage::bandjoin({image, image, image}), "bands.tif");
  save(pattern(40, 30, 4, 8), "alpha.png");
  expectRefused("float.tif", "samples");
  expectRefused("lab.tif", "only");
  expectRefused("pages.tif", "2 pages");
  expectRefused("moving.webp", "2 pages");
  expectRefused("bands.tif", "9 channels");
  // An animation control chunk behind the header.
  save(image, "moving.png");
  std::string moving = bytesOf("moving.png");
  moving.insert(33, std::string("\0\0\0\x08"
                                "acTL\0\0\0\x03\0\0\0\0\x4d\x31\x6e\x9a",
                                20));
  write("moving.png", moving);
  expectRefused("moving.png", "3 pages or frames");
  expectRefused("alpha.png", "transparency", "out.jpg");
}

TEST_F(Files, TooLargePicturesAreRefusedWithTheReason) {
  // 400 megapixels of black compress to nothing; the header alone has to be enough for the refusal.
  save(VImage::black(20000, 20000), "large.png[compression=1]");
  for (const std::string reason : {"400.0 megapixels", "GB of memory"})
    runBadly(1, reason, "adjust large.png -o out.png --hue-shift 0 --max-megapixels 100");
  EXPECT_EQ(files(), Names{"large.png"});
  save(VImage::black(17000, 2), "long.png");
  expectRefused("long.png", "up to 16383", "out.webp");
}

TEST_F(Files, OneFailureDoesNotStopTheOthers) {
  save(pattern(40, 30, 3, 8), "a.png");
  write("b.jpg", "not a picture");
  pattern(40, 30, 3, 8).jpegsave(path("c.JPG").c_str());
  runBadly(1, "b.jpg", "adjust a.png b.jpg c.JPG -o results --suffix _x --hue-shift 0 --quiet");
  EXPECT_EQ(files("results"), (Names{"a_x.png", "c_x.JPG"}));
  EXPECT_EQ(run("adjust . -o all/ --format webp").code, 1);
  EXPECT_EQ(files("all"), (Names{"a.webp", "c.webp"}));
}

TEST_F(Files, NothingIsOverwrittenWithoutForce) {
  constexpr auto kPrivate = fs::perms::owner_read | fs::perms::owner_write;
  save(pattern(40, 30, 3, 8), "in.png");
  const std::string original = bytesOf("in.png");
  write("out.png", "precious");
  fs::permissions(path("out.png"), kPrivate);
  for (const std::string out : {"out.png", "in.png"})
    runBadly(1, "--force", "adjust --hue-shift 0 in.png -o " + out);
  EXPECT_EQ(bytesOf("out.png"), "precious");
  EXPECT_TRUE(bytesOf("in.png") == original);

  runWell("adjust in.png -o out.png --force --hue-shift 0");
  EXPECT_EQ(open("out.png").width(), 40);
  EXPECT_EQ(fs::status(path("out.png")).permissions(), kPrivate);
  runWell("adjust in.png -o in.png --force --luma-gamma 1");
  EXPECT_TRUE(bytesOf("in.png") != original);
  fs::create_symlink("out.png", path("link.png"));
  runWell("adjust in.png -o link.png --force --hue-shift 0");
  EXPECT_TRUE(fs::is_symlink(path("link.png")));
  EXPECT_EQ(files(), (Names{"in.png", "link.png", "out.png"}));
}

TEST_F(Files, FullDiskAndBadFoldersLeaveNothing) {
  save(pattern(300, 300, 3, 8), "in.png");
  write("old.tif", "precious");
  const Environment full{.variables = {}, .fileSizeLimit = 3000};
  for (const std::string out : {"out.png", "out.jpg", "out.tif", "out.webp", "old.tif --force"})
    runBadly(1, "cannot write", "adjust --hue-shift 0 in.png -o " + out, full);
  EXPECT_EQ(bytesOf("old.tif"), "precious");
  for (const std::string out : {"missing/out.png", "/proc/out.png", "in.png/out.png"})
    runBadly(1, "out.png", "adjust --hue-shift 0 in.png -o " + out);
  EXPECT_EQ(files(), (Names{"in.png", "old.tif"}));
}

// The preloaded library raises the signal at a known place (raise_signal.c).
TEST_F(Files, CancellingLeavesNoFile) {
  for (const std::string name : {"a.png", "b.png"}) save(pattern(300, 200, 3, 8), name);
  for (const std::string place : {"progress", "fsync", "fsync-twice"})
    for (const std::string signal : {"2", "15"}) {
      SCOPED_TRACE(place + " " + signal);
      const Outcome outcome = run("adjust a.png b.png -o results --luma-gamma 1",
                                  {.variables = {{"LD_PRELOAD", VX_RAISE_SIGNAL},
                                                 {"VX_RAISE_AT", place},
                                                 {"VX_RAISE", signal},
                                                 {"ASAN_OPTIONS", "verify_asan_link_order=0"}},
                                   .fileSizeLimit = 0});
      EXPECT_EQ(outcome.code, 130) << outcome.err;
      EXPECT_LE(outcome.complaints(), 1) << outcome.err;
      EXPECT_FALSE(fs::exists(path("results")));
    }
}

TEST_F(Files, UsageErrorsAreOneLineAndDoNothing) {
  fs::create_directory(path("other"));
  for (const std::string name : {"a.png", "other/a.png"}) save(pattern(20, 20, 3, 8), name);
  for (const std::string line :
       {"", "adjust", "adjust a.png", "unknown a.png", "adjust a.png -o out.jpg --depth 16",
        "adjust a.png -o out.bmp", "adjust a.png other/a.png -o out/",
        "adjust a.png other/a.png -o other --force"})
    runBadly(2, "", line);
  fs::remove(path("out"));
  for (const std::string mistake :
       {"--no-such-option", "--luma-gamma 4.5", "--luma-gamma nan", "--luma-gamma 1x",
        "--quality 0", "--depth 12", "--preview-scale 0", "--format jpeg", "--format gif",
        "--preset no-such-preset", "other/a.png"})
    runBadly(2, "", "adjust a.png -o out.png " + mistake);
  EXPECT_EQ(files(), (Names{"a.png", "other"}));
  for (const std::string asked : {"--help", "adjust --help", "--version"})
    EXPECT_EQ(run(asked).code, 0);
}

}  // namespace
}  // namespace vx::host_test
