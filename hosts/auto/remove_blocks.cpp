#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "hosts/auto/auto_jpeg.h"
#include "vxicore26.h"

namespace {

constexpr int kRadius = 8;      // of the window whose mean is kept
constexpr int kFraction = 128;  // what vxUnblock divides a level into when `deep`

struct Samples {
  std::uint16_t* first;
  std::ptrdiff_t rowStep;
  int width, height, white;

  std::uint16_t* row(int y) const { return first + y * rowStep; }
  std::ptrdiff_t rowLength() const { return std::ptrdiff_t{3} * width; }
};

// A level of a sample, 0 to 255, and the unit of changes.
int levelOf(unsigned sample, int white) {
  const auto top = static_cast<unsigned>(white);
  return static_cast<int>((std::min(sample, top) * 255U + top / 2) / top);
}

bool isGrey(const Samples& picture) {
  for (int y = 0; y < picture.height; ++y) {
    const std::uint16_t* row = picture.row(y);
    for (std::ptrdiff_t i = 0; i < picture.rowLength(); i += 3) {
      if (row[i] != row[i + 1] || row[i] != row[i + 2]) return false;
    }
  }
  return true;
}

// What the round trips change, in 1/128 levels, row by row.
std::vector<std::int16_t> changes(const Samples& picture, int quality, int jpegMode,
                                  int shiftStep) {
  const std::ptrdiff_t length = picture.rowLength();
  std::vector<std::int16_t> trips(static_cast<std::size_t>(length * picture.height));
  std::int16_t* at = trips.data();
  for (int y = 0; y < picture.height; ++y) {
    const std::uint16_t* row = picture.row(y);
    for (std::ptrdiff_t i = 0; i < length; ++i)
      *at++ = static_cast<std::int16_t>(kFraction * levelOf(row[i], picture.white));
  }
  vxUnblock(1, trips.data(), 3, static_cast<int>(length), picture.width, picture.height, quality,
            jpegMode, shiftStep, 0);
  at = trips.data();
  for (int y = 0; y < picture.height; ++y) {
    const std::uint16_t* row = picture.row(y);
    for (std::ptrdiff_t i = 0; i < length; ++i, ++at)
      *at = static_cast<std::int16_t>(*at - kFraction * levelOf(row[i], picture.white));
  }
  if (isGrey(picture)) {
    // The trips' conversion from YCbCr rounds blue in another way.
    for (std::size_t i = 0; i < trips.size(); i += 3) trips[i] = trips[i + 2] = trips[i + 1];
  }
  return trips;
}

// Adds the changes without their local mean. Sums of a window are exact: at most 17 * 17 * 32640.
class Addition {
 public:
  Addition(const Samples& picture, const std::vector<std::int16_t>& changes)
      : picture_(picture),
        changes_(changes),
        columns_(static_cast<std::size_t>(picture.rowLength())),
        scale_(static_cast<float>(picture.white) / (255 * kFraction)) {}

  void run() {
    for (int y = 0; y < kRadius; ++y) addToColumns(y, 1);
    for (int y = 0; y < picture_.height; ++y) {
      addToColumns(y + kRadius, 1);
      addToColumns(y - kRadius - 1, -1);
      const int rows = std::min(y + kRadius, picture_.height - 1) - std::max(y - kRadius, 0) + 1;
      for (int channel = 0; channel < 3; ++channel) addRow(y, channel, rows);
    }
  }

 private:
  void addToColumns(int y, int sign) {
    if (y < 0 || y >= picture_.height) return;
    const std::int16_t* row = changes_.data() + y * picture_.rowLength();
    for (std::size_t i = 0; i < columns_.size(); ++i) columns_[i] += sign * row[i];
  }

  std::int32_t column(int x, int channel) const {
    return columns_[static_cast<std::size_t>(std::ptrdiff_t{3} * x + channel)];
  }

  void addRow(int y, int channel, int rows) {
    const int width = picture_.width;
    const std::int16_t* change = changes_.data() + y * picture_.rowLength() + channel;
    std::uint16_t* sample = picture_.row(y) + channel;
    std::int32_t window = 0;
    int count = 0;
    for (int x = 0; x < std::min(kRadius, width); ++x, ++count) window += column(x, channel);
    for (int x = 0; x < width; ++x, change += 3, sample += 3) {
      if (x + kRadius < width) {
        window += column(x + kRadius, channel);
        ++count;
      }
      if (x > kRadius) {
        window -= column(x - kRadius - 1, channel);
        --count;
      }
      const float mean = static_cast<float>(window) / static_cast<float>(rows * count);
      const float value =
          static_cast<float>(*sample) + scale_ * (static_cast<float>(*change) - mean);
      *sample = static_cast<std::uint16_t>(
          std::clamp(value, 0.0F, static_cast<float>(picture_.white)) + 0.5F);
    }
  }

  const Samples& picture_;
  const std::vector<std::int16_t>& changes_;
  std::vector<std::int32_t> columns_;
  float scale_;
};

}  // namespace

int vxAutoRemoveBlocks(unsigned short* samples, ptrdiff_t rowStep, int width, int height, int white,
                       int quality, int jpegMode, int shiftStep) try {
  if (samples == nullptr || width < 1 || height < 1) return 1;
  const Samples picture{samples, rowStep, width, height, std::clamp(white, 255, 65535)};
  const std::vector<std::int16_t> change = changes(picture, quality, jpegMode, shiftStep);
  Addition(picture, change).run();
  return 1;
} catch (...) {
  // No memory here or in vxUnblock, which has its own kind of exception.
  return 0;
}
