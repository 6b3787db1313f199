#include "hosts/auto/tone_statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vx::automatic {
namespace {

constexpr double kWhite = 32767;

double percentile(std::vector<double>& values, double share) {
  const auto rank =
      static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1) + 0.5);
  std::nth_element(values.begin(), values.begin() + rank, values.end());
  return values[static_cast<std::size_t>(rank)];
}

// Sums over rectangles from the corner of the plane on, with a row and a column of zeros.
class Integral {
 public:
  Integral(const std::vector<double>& plane, int width, int height)
      : stride_(static_cast<std::size_t>(width) + 1),
        sums_(stride_ * (static_cast<std::size_t>(height) + 1)) {
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
      double row = 0;
      for (std::size_t x = 0; x + 1 < stride_; ++x) {
        row += plane[y * (stride_ - 1) + x];
        sums_[(y + 1) * stride_ + x + 1] = sums_[y * stride_ + x + 1] + row;
      }
    }
  }

  double mean(int left, int top, int right, int bottom) const {
    const double sum = at(right, bottom) - at(left, bottom) - at(right, top) + at(left, top);
    return sum / (static_cast<double>(right - left) * (bottom - top));
  }

 private:
  double at(int x, int y) const {
    return sums_[static_cast<std::size_t>(y) * stride_ + static_cast<std::size_t>(x)];
  }

  std::size_t stride_;
  std::vector<double> sums_;
};

double localContrast(const std::vector<double>& lightness, int width, int height) {
  const Integral integral(lightness, width, height);
  const int radius = std::max(1, std::max(width, height) / 24);
  double squares = 0;
  std::size_t i = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x, ++i) {
      const double mean =
          integral.mean(std::max(x - radius, 0), std::max(y - radius, 0),
                        std::min(x + radius + 1, width), std::min(y + radius + 1, height));
      squares += (lightness[i] - mean) * (lightness[i] - mean);
    }
  }
  return std::sqrt(squares / static_cast<double>(lightness.size()));
}

}  // namespace

ToneStatistics toneStatistics(const ReducedPicture& picture) {
  ToneStatistics result;
  std::vector<double> lightness;
  const std::size_t count = picture.samples.size() / 3;
  lightness.reserve(count);
  for (std::size_t i = 0; i < 3 * count; i += 3) {
    const double r = picture.samples[i] / kWhite, g = picture.samples[i + 1] / kWhite,
                 b = picture.samples[i + 2] / kWhite;
    const double low = std::min({r, g, b}), high = std::max({r, g, b});
    lightness.push_back((low + high) / 2);
    result.chroma += high - low;
    result.luma += 0.299 * r + 0.587 * g + 0.114 * b;
    result.clipped += low <= 0.5 / 255 || high >= 254.5 / 255 ? 1 : 0;
  }
  const auto pixels = static_cast<double>(count);
  result.chroma /= pixels;
  result.luma /= pixels;
  result.clipped /= pixels;
  result.contrast = localContrast(lightness, picture.width, picture.height);
  result.median = percentile(lightness, 0.5);
  result.bright = percentile(lightness, 0.95);
  return result;
}

}  // namespace vx::automatic
