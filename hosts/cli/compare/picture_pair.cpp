#include "hosts/cli/compare/picture_pair.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "hosts/cli/compare/excerpt.h"
#include "hosts/cli/compare/html.h"
#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

// Longer pictures do not fit into what browsers draw at once.
constexpr int kLongestAxis = 16384;

const Coding kShown{.quality = 90, .subsampled = false, .lossless = {}, .tiffCompression = {}};

/// How a picture is fitted into its room. The same for before and after.
struct Layout {
  Area all{}, centre{};
  int scale = 1;  // of the overview; 1: the picture is shown as it is

  Layout(const Raster& raster, const PageRoom& room) {
    const int width = raster.width(), height = raster.height();
    const double pixels = static_cast<double>(width) * height;
    all = centre = {0, 0, width, height};
    if (pixels <= room.whole && std::max(width, height) <= kLongestAxis) return;
    scale = std::max({2, static_cast<int>(std::ceil(std::sqrt(pixels / room.part))),
                      (std::max(width, height) + kLongestAxis - 1) / kLongestAxis});
    const double share = std::min(1.0, std::sqrt(room.part / pixels));
    // As far from either edge, so that turning the picture leaves it where it is.
    centre.x = static_cast<int>(width * (1 - share) / 2);
    centre.y = static_cast<int>(height * (1 - share) / 2);
    centre.x = std::max(centre.x, (width - kLongestAxis + 1) / 2);
    centre.y = std::max(centre.y, (height - kLongestAxis + 1) / 2);
    centre.width = width - 2 * centre.x;
    centre.height = height - 2 * centre.y;
  }
};

std::string numbers(std::initializer_list<int> values) {
  std::string text;
  for (const int value : values) text += (text.empty() ? "" : " ") + std::to_string(value);
  return text;
}

/// From the axes of a raster to those of the picture that people see.
void setUpright(int& x, int& y, int orientation) {
  if (orientation >= 5) std::swap(x, y);
}

/// While it lives, the encoder turns the picture.
class Turned {
 public:
  Turned(Picture& picture, int orientation)
      : picture_(picture), before_(std::exchange(picture.orientation, orientation)) {}
  ~Turned() { picture_.orientation = before_; }
  Turned(const Turned&) = delete;
  Turned& operator=(const Turned&) = delete;

 private:
  Picture& picture_;
  int before_;
};

std::string imageTag(const char* kind, const std::string& name, const Picture& picture,
                     const Coding& coding, Progress& progress) {
  int width = picture.raster.width(), height = picture.raster.height();
  setUpright(width, height, picture.orientation);
  return "<img class=\"" + std::string(kind) + "\" alt=\"" + name + "\" width=\"" +
         std::to_string(width) + "\" height=\"" + std::to_string(height) +
         "\" src=\"data:image/jpeg;base64," +
         base64(encodePicture(picture, Format::kJpeg, 8, coding, progress)) + "\">\n";
}

enum class Time { kBefore, kAfter };

std::string layer(Time time, const Picture& picture, const Layout& layout, const Coding& coding,
                  Progress& progress) {
  const bool before = time == Time::kBefore;
  const bool ready = layout.scale == 1 && picture.raster.opaque();
  const std::string name = before ? "Before" : "After";
  std::string text =
      before ? "<figure class=\"layer before\">\n" : "<figure class=\"layer after\">\n";
  text +=
      ready ? imageTag("whole", name, picture, coding, progress)
            : imageTag("whole", name, excerpt(picture, layout.all, layout.scale), coding, progress);
  if (layout.scale > 1)
    text += imageTag("centre", name + ", the centre", excerpt(picture, layout.centre, 1), coding,
                     progress);
  return text + "<figcaption>" + name + "</figcaption>\n</figure>\n";
}

std::string viewerTag(const Layout& layout, int orientation) {
  int width = layout.all.width, height = layout.all.height;
  setUpright(width, height, orientation);
  std::string text = "<div class=\"viewer\" data-size=\"" + numbers({width, height}) + '"';
  if (layout.scale > 1) {
    Area centre = layout.centre;
    setUpright(centre.x, centre.y, orientation);
    setUpright(centre.width, centre.height, orientation);
    text += " data-centre=\"" + numbers({centre.x, centre.y, centre.width, centre.height}) + '"';
  }
  return text + ">\n";
}

std::string remark(const Layout& layout, const Picture& picture) {
  std::string text;
  if (layout.scale > 1) {
    int width = layout.centre.width, height = layout.centre.height;
    setUpright(width, height, picture.orientation);
    text += "Too large for this page: Fit shows it reduced to 1/" + std::to_string(layout.scale) +
            ", 100 % its centre of " + std::to_string(width) + " × " + std::to_string(height) +
            " pixels. ";
  }
  if (!picture.raster.opaque()) text += "Transparency is shown as white.";
  return text.empty() ? text : "<p class=\"facts\">" + text + "</p>\n";
}

template <typename Work>
void guarded(std::string& error, const Work& work) {
  if (!error.empty()) return;
  try {
    work();
  } catch (const FileError& failure) {
    error = failure.what();
  } catch (const std::bad_alloc&) {
    error = "not enough memory";
  }
}

}  // namespace

PageRoom pageRoom(std::size_t count) {
  const double share = 250e6 / static_cast<double>(std::max<std::size_t>(count, 1));
  const double whole = std::clamp(share, 0.2e6, 25e6);
  return {.whole = whole, .part = std::min(whole / 2, 4e6)};
}

void PicturePair::takeBefore(Picture& picture, int orientation, Progress& progress) {
  if (store_ == nullptr) return;
  orientation_ = orientation;
  guarded(error_, [&] {
    const Turned turned(picture, orientation_);
    before_ = layer(Time::kBefore, picture, Layout(picture.raster, store_->room), kShown, progress);
  });
}

ShownPair PicturePair::takeAfter(Picture& picture, Format format, const Coding& coding,
                                 Progress& progress) {
  if (store_ == nullptr) return {};
  ShownPair pair;
  guarded(error_, [&] {
    const Turned turned(picture, orientation_);
    const Layout layout(picture.raster, store_->room);
    Coding shown = kShown;
    if (format == Format::kJpeg && coding.quality && *coding.quality < *kShown.quality)
      shown.quality = coding.quality, shown.subsampled = coding.subsampled;
    pair.markup = store_->file.append(viewerTag(layout, orientation_) + std::exchange(before_, {}) +
                                      layer(Time::kAfter, picture, layout, shown, progress) +
                                      "</div>\n" + remark(layout, picture));
  });
  pair.error = error_;
  return pair;
}

}  // namespace vx::cli
