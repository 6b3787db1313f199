#include "hosts/cli/compare/upright.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace vx::cli {
namespace {

/// Averages blocks of an area, a row of them at a time.
class BlockRows {
 public:
  BlockRows(const Raster& raster, const Area& area, int scale)
      : raster_(raster),
        area_(area),
        scale_(scale),
        row_(4 * static_cast<std::size_t>(area.width)),
        sums_(3 * static_cast<std::size_t>((area.width + scale - 1) / scale)) {}

  /// Calls `put` with each place and colour of row y.
  template <typename Put>
  void give(int y, const Put& put) {
    std::fill(sums_.begin(), sums_.end(), 0U);
    const int top = y * scale_, rows = std::min(scale_, area_.height - top);
    for (int i = 0; i < rows; ++i) add(area_.y + top + i);
    for (int x = 0; x * scale_ < area_.width; ++x) {
      const auto count = static_cast<unsigned>(rows * std::min(scale_, area_.width - x * scale_));
      std::array<std::uint8_t, 3> colour{};
      for (std::size_t c = 0; c < 3; ++c)
        colour[c] = static_cast<std::uint8_t>(
            (sums_[3 * static_cast<std::size_t>(x) + c] + count / 2) / count);
      put(x, colour);
    }
  }

 private:
  void add(int y) {
    const bool alpha = raster_.alphaDepth() > 0;
    raster_.giveRow(row_.data(), 8, 3, alpha, area_.x, y, area_.width);
    const std::uint8_t* sample = row_.data();
    for (int x = 0; x < area_.width; ++x, sample += alpha ? 4 : 3) {
      const unsigned opacity = alpha ? sample[3] : 255;
      unsigned* sum = &sums_[3 * static_cast<std::size_t>(x / scale_)];
      for (int c = 0; c < 3; ++c)
        sum[c] += (opacity * sample[c] + (255 - opacity) * 255 + 127) / 255;
    }
  }

  const Raster& raster_;
  const Area& area_;
  int scale_;
  std::vector<std::uint8_t> row_;
  std::vector<unsigned> sums_;  // of up to 2^24 samples
};

}  // namespace

Picture uprightPart(const Picture& picture, const Area& area, int scale, int orientation) {
  const int width = (area.width + scale - 1) / scale, height = (area.height + scale - 1) / scale;
  // The eight orientations are an exchange of the axes, then a mirror image along each.
  const bool side = liesOnSide(orientation);
  const int turn = orientation >= 1 && orientation <= 8 ? (orientation - 1) % 4 : 0;
  const bool mirrorX = turn == 1 || turn == 2, mirrorY = turn == 2 || turn == 3;
  Picture part{.format = picture.format,
               .sourceDepth = 8,
               .colours = picture.colours,
               .raster = Raster(side ? height : width, side ? width : height, 8, 0),
               .xResolution = side ? picture.yResolution : picture.xResolution,
               .yResolution = side ? picture.xResolution : picture.yResolution,
               .icc = picture.icc,
               .exif = {},
               .xmp = {},
               .pngTexts = {},
               .notes = {}};
  Raster& raster = part.raster;
  BlockRows rows(picture.raster, area, scale);
  for (int y = 0; y < height; ++y) {
    rows.give(y, [&](int x, const std::array<std::uint8_t, 3>& colour) {
      int column = x, row = y;
      if (side) std::swap(column, row);
      if (mirrorX) column = raster.width() - 1 - column;
      if (mirrorY) row = raster.height() - 1 - row;
      std::uint8_t* target =
          raster.pixels() + static_cast<std::ptrdiff_t>(row) * raster.rowBytes() + 3 * column;
      std::copy(colour.begin(), colour.end(), target);
    });
  }
  raster.pad();
  return part;
}

}  // namespace vx::cli
