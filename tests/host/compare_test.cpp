// The page of --compare, read as a file. What it does in a browser is in compare_browser_test.cpp.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "hosts/cli/compare/scratch_file.h"
#include "tests/host/page_test.h"

namespace vx::host_test {
namespace {

using Compare = PageTest;

/// As a page shows it.
VImage shownAs(VImage image) {
  if (image.format() == VIPS_FORMAT_USHORT) image = picture(image / 257, 8);
  if (image.bands() == 4)
    image = image.flatten(VImage::option()->set("background", std::vector<double>{255, 255, 255}));
  return image.autorot();
}

TEST_F(Compare, PicturesAreThoseOfTheFiles) {
  VImage profiled = picture(pattern(301, 200, 3, 16).gaussblur(1), 16);
  VipsBlob* profile = nullptr;
  ASSERT_EQ(vips_profile_load("p3", &profile, nullptr), 0);
  vips_image_set_blob_copy(profiled.get_image(), VIPS_META_ICC_NAME, VIPS_AREA(profile)->data,
                           VIPS_AREA(profile)->length);
  save(profiled, "deep.png");
  save(picture(pattern(250, 121, 1, 8).gaussblur(1), 8), "grey.png");
  save(picture(pattern(160, 121, 4, 8).gaussblur(1), 8), "clear.png");
  // Longer than a page shows whole: an overview of half the size, and its centre.
  save(picture(pattern(16404, 10, 3, 8).gaussblur(1), 8), "long.png");
  runWell(
      "adjust deep.png grey.png clear.png long.png -o out -q --luma-gamma 0.7 --compare p.html");
  const std::vector<VImage> shown = pictures("p.html");
  ASSERT_EQ(shown.size(), 10U);
  std::size_t at = 0;
  for (const std::string name : {"deep.png", "grey.png", "clear.png", "long.png"})
    for (const std::string& file : {name, "out/" + name}) {
      VImage wanted = shownAs(open(file));
      if (name == "long.png") {
        EXPECT_GT(psnr(wanted.shrink(2, 2), shown[at++]), 36) << file;
        wanted = wanted.crop(10, 0, 16384, 10);
      }
      EXPECT_EQ(shown[at].bands(), wanted.bands());
      EXPECT_GT(psnr(wanted, shown[at++]), 36) << file;
    }
  std::size_t size = 0;
  const void* icc = shown[1].get_blob(VIPS_META_ICC_NAME, &size);
  EXPECT_EQ(
      std::string(static_cast<const char*>(icc), size),
      std::string(static_cast<const char*>(VIPS_AREA(profile)->data), VIPS_AREA(profile)->length));
  vips_area_unref(VIPS_AREA(profile));
}

TEST_F(Compare, LargePicturesAreAnOverviewAndTheirCentre) {
  const VImage places = VImage::xyz(5400, 4800);
  const VImage large = picture((places * 0.04).bandjoin(places.extract_band(0) % 200), 8);
  save(large, "large.png[compression=1]");
  runWell("adjust large.png -o out.png --hue-shift 0 --compare p.html");
  const std::vector<VImage> shown = pictures("p.html");
  ASSERT_EQ(shown.size(), 4U);
  EXPECT_GT(psnr(large.shrink(3, 3), shown[0]), 36);
  const VImage& centre = shown[3];
  EXPECT_NEAR(centre.width() * centre.height(), 4e6, 1e4);
  const int left = (5400 - centre.width()) / 2, top = (4800 - centre.height()) / 2;
  EXPECT_GT(psnr(large.crop(left, top, centre.width(), centre.height()), centre), 36);
}

TEST_F(Compare, ProcessesShareAScratchFile) {
  const cli::ScratchFile file(folder_);
  EXPECT_EQ(files(), Names()) << "it has no name";
  const auto text = [](int child, int i) { return std::string(std::size_t(i), char('a' + child)); };
  std::array<int, 2> told{};
  ASSERT_EQ(pipe(told.data()), 0);
  for (int child = 0; child < 4; ++child) {
    if (fork() != 0) continue;
    for (int i = 1; i <= 400; ++i) {
      const cli::Piece piece = file.append(text(child, i));
      const std::array<std::uint64_t, 3> line{std::uint64_t(child), piece.offset, piece.size};
      if (::write(told[1], line.data(), sizeof line) != sizeof line) break;
    }
    _exit(0);
  }
  close(told[1]);
  std::array<std::uint64_t, 3> line{};
  int pieces = 0, whole = 0;
  while (::read(told[0], line.data(), sizeof line) == sizeof line) {
    ++pieces;
    const int copy = ::open(path("copy").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    file.give({line[1], line[2]}, copy);
    close(copy);
    whole += bytesOf("copy") == text(int(line[0]), int(line[2]));
  }
  close(told[0]);
  while (wait(nullptr) > 0) continue;
  EXPECT_EQ(pieces, 1600);
  EXPECT_EQ(whole, 1600);
}

TEST_F(Compare, PicturesStandUpright) {
  Names names;
  for (int orientation = 1; orientation <= 8; ++orientation) {
    names.push_back("o" + std::to_string(orientation) + ".jpg");
    save(picture(pattern(90, 62, 3, 8).gaussblur(1), 8), names.back() + "[Q=95]");
    const auto image = metadataOf(names.back());
    image->exifData()["Exif.Image.Orientation"] = std::uint16_t(orientation);
    image->writeMetadata();
  }
  runWell("adjust . -o out -q --luma-gamma 0.7 --compare p.html");
  const std::vector<VImage> shown = pictures("p.html");
  ASSERT_EQ(shown.size(), 16U);
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_GT(psnr(shownAs(open(names[i])), shown[2 * i]), 36) << names[i];
    EXPECT_GT(psnr(shownAs(open("out/" + names[i])), shown[2 * i + 1]), 36) << names[i];
  }
  // Where the encoder turns the result too, and writes the metadata, which are not for the page.
  if (vips_type_find("VipsOperation", "jxlsave_buffer") == 0) return;
  addMetadata("o6.jpg");
  EXPECT_EQ(run("adjust o6.jpg -o o6.jxl --luma-gamma 0.7 --compare x.html").code, 0);
  for (const std::size_t i : {0U, 1U}) {
    const VImage again = pictures("x.html").at(i);
    EXPECT_EQ(largestDifference(again, shown[10 + i]), 0);
    EXPECT_EQ(again.get_typeof("exif-ifd3-GPSLatitude"), 0U);
  }
}

TEST_F(Compare, NothingOfAFileBecomesMarkup) {
  const std::string name = "<img src=x onerror=alert(1)>&\"'{{facts}}\xff.png";
  save(pattern(40, 30, 3, 8), "plain.png");
  fs::copy(path("plain.png"), path(name));
  write("</section><script>.jpg", "no picture");
  EXPECT_EQ(run({"adjust", "--luma-gamma", "0.7", "-o", "out", "--compare", "p.html", name,
                 "</section><script>.jpg"})
                .code,
            1);
  const std::string page = bytesOf("p.html");
  EXPECT_NE(
      page.find("&lt;img src=x onerror=alert(1)&gt;&amp;&quot;&#39;{{facts}}\xef\xbf\xbd.png"),
      std::string::npos);
  EXPECT_EQ(page.find("<img src=x"), std::string::npos);
  EXPECT_EQ(page.find("</section><script>"), std::string::npos);
  EXPECT_TRUE(g_utf8_validate(page.c_str(), static_cast<gssize>(page.size()), nullptr));
  // What would be fetched: the pictures are all that has an address.
  EXPECT_EQ(pictures("p.html").size(), 2U);
  for (const char* reference : {"http:", "https:", "url(", "@import", "src=\"/", "href=\"/"})
    EXPECT_EQ(page.find(reference), std::string::npos) << reference;
}

TEST_F(Compare, APageThatCannotBeIsRefusedBeforeTheWork) {
  save(pattern(40, 30, 3, 8), "in.png");
  fs::copy(path("in.png"), path("picture.html"));
  write("old.html", "precious");
  for (const std::string bad : {"old.html", "missing/p.html", "in.png/p.html"})
    runBadly(1, bad, "adjust in.png -o out.png --luma-gamma 1 --compare " + bad);
  for (const std::string bad : {"p.png", "-", "picture.html", "out.html"})
    runBadly(
        2, "--compare " + bad,
        "adjust picture.html -o out.html --format png --luma-gamma 1 --force --compare " + bad);
  EXPECT_EQ(files(), (Names{"in.png", "old.html", "picture.html"}));
  EXPECT_EQ(bytesOf("old.html") + bytesOf("picture.html"), "precious" + bytesOf("in.png"));
  runWell("adjust in.png -o out.png --luma-gamma 1 --force --compare old.html");
  EXPECT_EQ(pictures("old.html").size(), 2U);
}

TEST_F(Compare, PagesDoNotDependOnTheNumberOfProcesses) {
  for (int i = 0; i < 9; ++i)
    save(pattern(700 - 70 * i, 300, 3, 8), "in" + std::to_string(i) + ".png");
  write("in4.png", "no picture");
  for (const std::string jobs : {"1", "3"}) {
    const Outcome outcome = run({"adjust", ".", "-o", "out", "-q", "--force", "--luma-gamma", "0.7",
                                 "--unblock", "auto", "--compare", jobs + ".html", "-j", jobs});
    EXPECT_EQ(outcome.code, 1) << outcome.err;
    EXPECT_EQ(pictures(jobs + ".html").size(), 16U);
  }
  EXPECT_TRUE(bytesOf("1.html") == bytesOf("3.html"));
  const std::string program =
      "cd " + path("") + " && " VX_PROGRAM " adjust - -o - --luma-gamma 0.7 --unblock auto -q";
  EXPECT_EQ(std::system((program + " --compare piped.html < in0.png > out.png").c_str()), 0);
  EXPECT_TRUE(bytesOf("out.png") == bytesOf("out/in0.png"));
  EXPECT_EQ(largestDifference(pictures("piped.html")[1], pictures("1.html")[1]), 0);
}

TEST_F(Compare, WhatWasDoneIsShownWhateverCameLater) {
  save(VImage::black(300, 300), "a.png");
  save(pattern(300, 200, 3, 8), "b.png");
  write("bad.png", "no picture");
  runWell("adjust a.png -o out/ --luma-gamma 1");
  const Outcome cancelled =
      run("adjust a.png bad.png b.png -o out -j 1 --skip-existing --luma-gamma 1 --compare c.html",
          {.variables = {{"LD_PRELOAD", VX_RAISE_SIGNAL},
                         {"VX_RAISE_AT", "progress"},
                         {"VX_RAISE", "2"},
                         {"ASAN_OPTIONS", "verify_asan_link_order=0"}}});
  EXPECT_EQ(cancelled.code, 130) << cancelled.err;
  const std::string page = bytesOf("c.html");
  EXPECT_NE(page.find("1 left out, 1 failed, cancelled with 1 not done"), std::string::npos);
  EXPECT_NE(page.find("Failed:</span> is no"), std::string::npos);
  EXPECT_EQ(files("out"), Names{"a.png"});
  // The result of a black picture is small, the page is not.
  const Environment full{.variables = {}, .fileSizeLimit = 8000};
  runBadly(1, "p.html: cannot write", "adjust a.png -o full.png --luma-gamma 1 --compare p.html",
           full);
  runBadly(1, "not on the page: cannot write",
           "adjust b.png -o full.jpg --quality 1 --luma-gamma 1"
           " --compare p.html",
           {.variables = {}, .fileSizeLimit = 24000});
  EXPECT_EQ(files(), (Names{"a.png", "b.png", "bad.png", "c.html", "full.jpg", "full.png", "out",
                            "p.html"}));
}

}  // namespace
}  // namespace vx::host_test
