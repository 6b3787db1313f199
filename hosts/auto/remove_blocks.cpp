#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "hosts/auto/auto_jpeg.h"
#include "hosts/auto/bending_places.h"
#include "vxicore26.h"

namespace {

using vx::automatic::BlockSamples;
using vx::automatic::kBlockRadius;
using vx::automatic::kRough;

constexpr int kFraction = 128;  // what vxUnblock divides a level into when `deep`

// A level of a sample, 0 to 255, and the unit of changes.
int levelOf(unsigned sample, int white) {
  const auto top = static_cast<unsigned>(white);
  return static_cast<int>((std::min(sample, top) * 255U + top / 2) / top);
}

bool isGrey(const BlockSamples& picture) {
  for (int y = 0; y < picture.height; ++y) {
    const std::uint16_t* row = picture.row(y);
    for (std::ptrdiff_t i = 0; i < picture.rowLength(); i += 3) {
      if (row[i] != row[i + 1] || row[i] != row[i + 2]) return false;
    }
  }
  return true;
}

// What the round trips change, in 1/128 levels, row by row.
std::vector<std::int16_t> changes(const BlockSamples& picture, int quality, int jpegMode,
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

// The trips quantise ramps, too, where there is nothing to gain.
void leaveSmoothPlaces(const BlockSamples& picture, std::vector<std::int16_t>& changes) {
  const std::vector<std::uint8_t> rough = vx::automatic::bendingPlaces(picture);
  for (std::size_t i = 0; i < changes.size(); ++i)
    changes[i] = static_cast<std::int16_t>(changes[i] * rough[i / 3] / kRough);
}

// Adds the changes without their local mean. Sums of a window are exact: at most 17 * 17 * 32640.
class Addition {
 public:
  Addition(const BlockSamples& picture, const std::vector<std::int16_t>& changes)
      : picture_(picture),
        changes_(changes),
        columns_(static_cast<std::size_t>(picture.rowLength())),
        scale_(static_cast<float>(picture.white) / (255 * kFraction)) {}

  void run() {
    for (int y = 0; y < kBlockRadius; ++y) addToColumns(y, 1);
    for (int y = 0; y < picture_.height; ++y) {
      addToColumns(y + kBlockRadius, 1);
      addToColumns(y - kBlockRadius - 1, -1);
      const int rows =
          std::min(y + kBlockRadius, picture_.height - 1) - std::max(y - kBlockRadius, 0) + 1;
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
    for (int x = 0; x < std::min(kBlockRadius, width); ++x, ++count) window += column(x, channel);
    for (int x = 0; x < width; ++x, change += 3, sample += 3) {
      if (x + kBlockRadius < width) {
        window += column(x + kBlockRadius, channel);
        ++count;
      }
      if (x > kBlockRadius) {
        window -= column(x - kBlockRadius - 1, channel);
        --count;
      }
      const float mean = static_cast<float>(window) / static_cast<float>(rows * count);
      const float value =
          static_cast<float>(*sample) + scale_ * (static_cast<float>(*change) - mean);
      *sample = static_cast<std::uint16_t>(
          std::clamp(value, 0.0F, static_cast<float>(picture_.white)) + 0.5F);
    }
  }

  const BlockSamples& picture_;
  const std::vector<std::int16_t>& changes_;
  std::vector<std::int32_t> columns_;
  float scale_;
};

}  // namespace

int vxAutoRemoveBlocks(unsigned short* samples, ptrdiff_t rowStep, int width, int height, int white,
                       int quality, int jpegMode, int shiftStep) try {
  if (samples == nullptr || width < 1 || height < 1) return 1;
  const BlockSamples picture{samples, rowStep, width, height, std::clamp(white, 255, 65535)};
  std::vector<std::int16_t> change = changes(picture, quality, jpegMode, shiftStep);
  leaveSmoothPlaces(picture, change);
  Addition(picture, change).run();
  return 1;
} catch (...) {
  // No memory here or in vxUnblock, which has its own kind of exception.
  return 0;
}
