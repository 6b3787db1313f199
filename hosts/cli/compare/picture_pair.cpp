#include "hosts/cli/compare/picture_pair.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "hosts/cli/compare/html.h"
#include "hosts/cli/compare/upright.h"
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

std::string imageTag(const char* kind, const std::string& name, const Picture& picture,
                     const Coding& coding, Progress& progress) {
  const std::string width = std::to_string(picture.raster.width());
  const std::string height = std::to_string(picture.raster.height());
  return "<img class=\"" + std::string(kind) + "\" alt=\"" + name + "\" width=\"" + width +
         "\" height=\"" + height + "\" src=\"data:image/jpeg;base64," +
         base64(encodePicture(picture, Format::kJpeg, 8, coding, progress)) + "\">\n";
}

enum class Time { kBefore, kAfter };

std::string layer(Time time, const Picture& picture, const Layout& layout, int orientation,
                  const Coding& coding, Progress& progress) {
  const bool ready = layout.scale == 1 && orientation == 1 && picture.raster.opaque();
  const bool before = time == Time::kBefore;
  const std::string title = before ? "Before" : "After";
  std::string text =
      before ? "<figure class=\"layer before\">\n" : "<figure class=\"layer after\">\n";
  text +=
      ready ? imageTag("whole", title, picture, coding, progress)
            : imageTag("whole", title, uprightPart(picture, layout.all, layout.scale, orientation),
                       coding, progress);
  if (layout.scale > 1)
    text += imageTag("centre", title + ", the centre",
                     uprightPart(picture, layout.centre, 1, orientation), coding, progress);
  return text + "<figcaption>" + title + "</figcaption>\n</figure>\n";
}

std::string remark(const Layout& layout, bool opaque, bool side) {
  std::string text;
  if (layout.scale > 1) {
    int width = layout.centre.width, height = layout.centre.height;
    if (side) std::swap(width, height);
    text += "Too large for this page: Fit shows it reduced to 1/" + std::to_string(layout.scale) +
            ", 100 % its centre of " + std::to_string(width) + " × " + std::to_string(height) +
            " pixels. ";
  }
  if (!opaque) text += "Transparency is shown as white.";
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

void PicturePair::takeBefore(const Picture& picture, int orientation, Progress& progress) {
  if (store_ == nullptr) return;
  orientation_ = orientation;
  guarded(error_, [&] {
    before_ = layer(Time::kBefore, picture, Layout(picture.raster, store_->room), orientation,
                    kShown, progress);
  });
}

ShownPair PicturePair::takeAfter(const Picture& picture, Format format, const Coding& coding,
                                 Progress& progress) {
  if (store_ == nullptr) return {};
  ShownPair pair;
  guarded(error_, [&] {
    const Layout layout(picture.raster, store_->room);
    const bool side = liesOnSide(orientation_);
    Coding shown = kShown;
    if (format == Format::kJpeg && coding.quality && *coding.quality < *kShown.quality)
      shown.quality = coding.quality, shown.subsampled = coding.subsampled;
    int width = layout.all.width, height = layout.all.height;
    if (side) std::swap(width, height);
    std::string text = "<div class=\"viewer\" data-size=\"" + numbers({width, height}) + '"';
    if (layout.scale > 1) {
      Area centre = layout.centre;
      if (side) std::swap(centre.x, centre.y), std::swap(centre.width, centre.height);
      text += " data-centre=\"" + numbers({centre.x, centre.y, centre.width, centre.height}) + '"';
    }
    text += ">\n" + std::exchange(before_, {});
    text += layer(Time::kAfter, picture, layout, orientation_, shown, progress);
    text += "</div>\n" + remark(layout, picture.raster.opaque(), side);
    pair.markup = store_->file.append(text);
  });
  pair.error = error_;
  return pair;
}

}  // namespace vx::cli
