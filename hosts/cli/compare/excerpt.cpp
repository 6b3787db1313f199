#include "hosts/cli/compare/excerpt.h"

#include <algorithm>
#include <cstdint>
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

  /// Row y of the blocks, as RGB.
  void give(int y, std::uint8_t* target) {
    std::fill(sums_.begin(), sums_.end(), 0U);
    const int top = y * scale_, rows = std::min(scale_, area_.height - top);
    for (int i = 0; i < rows; ++i) add(area_.y + top + i);
    const unsigned* sum = sums_.data();
    for (int left = 0; left < area_.width; left += scale_) {
      const auto count = static_cast<unsigned>(rows * std::min(scale_, area_.width - left));
      for (int c = 0; c < 3; ++c)
        *target++ = static_cast<std::uint8_t>((*sum++ + count / 2) / count);
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

Picture excerpt(const Picture& picture, const Area& area, int scale) {
  const int width = (area.width + scale - 1) / scale, height = (area.height + scale - 1) / scale;
  Picture part{.format = picture.format,
               .sourceDepth = 8,
               .colours = picture.colours,
               .raster = Raster(width, height, 8, 0),
               .xResolution = picture.xResolution,
               .yResolution = picture.yResolution,
               .icc = picture.icc,
               .exif = {},
               .xmp = {},
               .iptc = {},
               .orientation = picture.orientation,
               .notes = {}};
  Raster& raster = part.raster;
  BlockRows rows(picture.raster, area, scale);
  for (int y = 0; y < height; ++y) {
    std::uint8_t* target = raster.pixels() + static_cast<std::ptrdiff_t>(y) * raster.rowBytes();
    rows.give(y, target);
  }
  raster.pad();
  return part;
}

}  // namespace vx::cli
