// The page of --compare as a user meets it.
#include "tests/host/browser.h"
#include "tests/host/page_test.h"

namespace vx::host_test {
namespace {

using Places = std::vector<std::pair<double, double>>;

class CompareInBrowser : public PageTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    if (Browser::program().empty()) GTEST_SKIP() << "no chromium here";
    fs::create_directory(path("profile"));
    browser_ = std::make_unique<Browser>(path("profile"));
  }
  void TearDown() override {
    if (browser_) {
      EXPECT_EQ(browser_->complaints(), Names());
      EXPECT_EQ(browser_->fetched(), Names());
    }
    browser_.reset();
    HostTest::TearDown();
  }

  Json see(const std::string& expression) const { return browser_->evaluate(expression); }
  int share() const {
    const std::string text =
        see("document.querySelector('[role=slider]').getAttribute('aria-valuenow')");
    return std::stoi(text);
  }
  /// Of an element: left, top, width and height in the window.
  std::array<double, 4> boxOf(const std::string& selector) const {
    return see("(() => { const b = document.querySelector('" + selector +
               "').getBoundingClientRect(); return [b.left, b.top, b.width, b.height]; })()")
        .get<std::array<double, 4>>();
  }
  /// How near an area of the window is to the picture at (x, y), in decibels.
  double likeness(const std::array<double, 4>& area, const VImage& picture, double x,
                  double y) const {
    const auto [left, top, width, height] = area;
    write("shot.png", browser_->screenshot(left, top, width, height));
    const VImage shot = open("shot.png").extract_band(0, VImage::option()->set("n", 3));
    return psnr(picture.crop(int(x), int(y), int(width), int(height)), shot);
  }

  std::unique_ptr<Browser> browser_;
};

TEST_F(CompareInBrowser, OneSliderBetweenTwoPicturesThatMoveTogether) {
  save(picture(pattern(1600, 1200, 3, 8).gaussblur(0.7), 8), "in.png");
  runWell("adjust in.png -o out.png --luma-gamma 0.7 --hue-shift 0.2 --compare page.html");
  const VImage before = pictures("page.html")[0], after = pictures("page.html")[1];
  browser_->open(path("page.html"), {1000, 1000, 1, false, false});
  EXPECT_EQ(see("[...document.images].map(i => [i.complete, i.naturalWidth, i.naturalHeight])"),
            Json::parse("[[true, 1600, 1200], [true, 1600, 1200]]"));

  browser_->press("Tab");
  EXPECT_EQ(see("document.activeElement.getAttribute('role')"), "slider");
  const std::pair<const char*, int> keys[] = {
      {"ArrowRight", 51}, {"ArrowUp", 52}, {"ArrowLeft", 51}, {"PageDown", 41},
      {"End", 100},       {"PageUp", 100}, {"Home", 0},       {"ArrowDown", 0}};
  EXPECT_EQ(share(), 50);
  for (const auto& [key, wanted] : keys) {
    browser_->press(key);
    EXPECT_EQ(share(), wanted) << key;
  }
  const auto [left, top, width, height] = boxOf(".viewer");
  const double middle = top + height / 2;
  browser_->drag({{left + 5, middle}, {left + 9, middle}, {left + 5 + 0.25 * width, middle}});
  EXPECT_EQ(share(), 25) << "from the line, held at its left edge";
  browser_->drag(
      {{left + 0.6 * width, middle}, {left + 0.5 * width, middle}, {left + 0.4 * width, 999}});
  EXPECT_EQ(share(), 40);
  browser_->click(left + 0.9 * width, middle);
  EXPECT_EQ(share(), 40) << "a click alone moves nothing";

  const auto [buttonX, buttonY, w, h] = boxOf(".zoom button:last-child");
  browser_->click(buttonX + w / 2, buttonY + h / 2);
  // One pixel of the screen for each: half of the window's box from the middle of the picture.
  const auto box = boxOf(".viewer");
  const double boxLeft = box[0], boxTop = box[1], boxWidth = box[2], boxHeight = box[3];
  const std::array<double, 4> leftPart{boxLeft + 8, boxTop + 40, 300, 200};
  const std::array<double, 4> rightPart{boxLeft + boxWidth - 308, boxTop + 40, 300, 200};
  // The place of the picture is rounded as Math.round does.
  const auto corner = [](double at, double shown, double size) {
    return -std::floor(0.5 - std::clamp(at - shown / 2, 0.0, size - shown));
  };
  const auto check = [&](double atX, double atY) {
    const double x = corner(atX, boxWidth, 1600), y = corner(atY, boxHeight, 1200);
    EXPECT_GT(likeness(leftPart, before, x + 8, y + 40), 45);
    EXPECT_GT(likeness(rightPart, after, x + boxWidth - 308, y + 40), 45);
  };
  check(800, 600);
  browser_->drag({{left + 300, middle}, {left + 260, middle - 10}, {left + 173, middle - 51}});
  check(927, 651);
  browser_->drag({{left + 100, middle}, {left + 900, middle + 900}});
  check(0, 0);
  browser_->press("ArrowRight");
  const double step = std::round(std::min(boxWidth, boxHeight) / 8);
  check(boxWidth / 2 + step, boxHeight / 2);
  browser_->press("Escape");
  EXPECT_EQ(boxOf(".before img")[2], boxOf(".after img")[2]);
  EXPECT_LT(boxOf(".before img")[2], 1000) << "all of it fits again";
  browser_->press("ArrowRight");
  EXPECT_EQ(share(), 41) << "the focus is back on the line";
}

TEST_F(CompareInBrowser, OnAPhoneFingersSlideScrollAndPan) {
  const std::string name = "<b>&amp;\"'.jpg";
  save(picture(pattern(1200, 900, 3, 8).gaussblur(0.7), 8), "in.jpg");
  addMetadata("in.jpg");  // lies on its side
  fs::rename(path("in.jpg"), path(name));
  save(picture(pattern(16404, 40, 3, 8), 8), "long.png");
  EXPECT_EQ(run({"adjust", name, "long.png", "-o", "out", "--luma-gamma", "0.7", "--compare",
                 "page.html", "-q"})
                .code,
            0);
  browser_->open(path("page.html"), {390, 800, 2, true, true});
  EXPECT_EQ(see("document.querySelector('main h2').textContent"), name);
  EXPECT_EQ(
      see("[...document.images].map(i => [i.naturalWidth, i.naturalHeight].join())"),
      Json::parse(R"(["900,1200", "900,1200", "8202,20", "16384,40", "8202,20", "16384,40"])"));
  EXPECT_EQ(see("document.documentElement.scrollWidth"), 390);
  EXPECT_EQ(see("getComputedStyle(document.body).backgroundColor"), "rgb(23, 23, 26)");

  const auto [left, top, width, height] = boxOf(".viewer");
  const double middle = top + height / 4;
  browser_->swipe(
      {{left + 0.3 * width, middle}, {left + 0.5 * width, middle}, {left + 0.7 * width, middle}});
  EXPECT_EQ(share(), 70);
  browser_->swipe({{left + 90, middle + 80},
                   {left + 91, middle + 40},
                   {left + 92, middle - 90},
                   {left + 93, middle - 150}});
  EXPECT_EQ(share(), 70) << "a finger that scrolls the page moves no line";
  EXPECT_GT(see("scrollY"), 50);

  see("scrollTo(0, 0), document.querySelector('.zoom button:last-child').click()");
  EXPECT_EQ(boxOf(".before img")[2], 450) << "one pixel of the screen for each";
  const auto from = boxOf(".before img");
  browser_->swipe({{left + 0.1 * width, middle},
                   {left + 0.1 * width - 5, middle - 20},
                   {left + 0.1 * width - 30, middle - 30}});
  const auto now = boxOf(".before img");
  EXPECT_NEAR(now[0] - from[0], -30, 0.6);
  EXPECT_NEAR(now[1] - from[1], -30, 0.6);
  EXPECT_EQ(now, boxOf(".after img"));
  EXPECT_EQ(see("scrollY"), 0) << "the page stays";

  const std::string sizes =
      "[...document.querySelectorAll('section:last-child img')].map(i => i.clientWidth)";
  EXPECT_EQ(see(sizes)[1], 0) << "of the long one all is shown, reduced";
  see("document.querySelector('section:last-child .zoom button:last-child').click()");
  EXPECT_EQ(see(sizes), Json::parse("[0, 8192, 0, 8192]")) << "and its centre as it is";
}

}  // namespace
}  // namespace vx::host_test
