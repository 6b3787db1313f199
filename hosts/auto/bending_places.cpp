#include "hosts/auto/bending_places.h"

#include <algorithm>
#include <cstdlib>

namespace vx::automatic {
namespace {

// A sample between two that are half a block away. The second difference of a ramp in rounded
// levels is at most 1.
constexpr int kReach = 4;
constexpr double kBend = 1.25;

class Bends {
 public:
  explicit Bends(const BlockSamples& picture)
      : picture_(picture), least_(static_cast<int>(kBend * picture.white / 255)) {}

  /// 1 where the picture bends along the row or the column.
  std::vector<std::uint8_t> run() const {
    const auto width = static_cast<std::size_t>(picture_.width);
    std::vector<std::uint8_t> bends(width * static_cast<std::size_t>(picture_.height));
    for (int y = 0; y < picture_.height; ++y) {
      std::uint8_t* row = bends.data() + static_cast<std::size_t>(y) * width;
      const std::uint16_t* here = picture_.row(y);
      constexpr int kAside = 3 * kReach;
      for (int x = kReach; x < picture_.width - kReach; ++x)
        row[x] = bent(here + 3 * x - kAside, here + 3 * x, here + 3 * x + kAside);
      if (y < kReach || y >= picture_.height - kReach) continue;
      const std::uint16_t *above = picture_.row(y - kReach), *below = picture_.row(y + kReach);
      for (int x = 0; x < picture_.width; ++x)
        row[x] |= bent(above + 3 * x, here + 3 * x, below + 3 * x);
    }
    return bends;
  }

 private:
  std::uint8_t bent(const std::uint16_t* before, const std::uint16_t* at,
                    const std::uint16_t* after) const {
    int most = 0;
    for (int c = 0; c < 3; ++c) most = std::max(most, std::abs(before[c] - 2 * at[c] + after[c]));
    return most > least_ ? 1 : 0;
  }

  const BlockSamples& picture_;
  int least_;
};

}  // namespace

std::vector<std::uint8_t> bendingPlaces(const BlockSamples& picture) {
  constexpr int kEighth = 8;  // of a window that bends makes it fully rough
  const std::vector<std::uint8_t> bends = Bends(picture).run();
  std::vector<std::uint8_t> rough(bends.size());
  std::vector<int> columns(static_cast<std::size_t>(picture.width));
  const auto addToColumns = [&](int y, int sign) {
    if (y < 0 || y >= picture.height) return;
    const std::uint8_t* row = bends.data() + static_cast<std::size_t>(y) * columns.size();
    for (std::size_t x = 0; x < columns.size(); ++x) columns[x] += sign * row[x];
  };
  for (int y = 0; y < kBlockRadius; ++y) addToColumns(y, 1);
  std::uint8_t* at = rough.data();
  for (int y = 0; y < picture.height; ++y) {
    addToColumns(y + kBlockRadius, 1);
    addToColumns(y - kBlockRadius - 1, -1);
    int window = 0;
    const auto column = [&columns](int x) { return columns[static_cast<std::size_t>(x)]; };
    for (int x = 0; x < std::min(kBlockRadius, picture.width); ++x) window += column(x);
    for (int x = 0; x < picture.width; ++x) {
      if (x + kBlockRadius < picture.width) window += column(x + kBlockRadius);
      if (x > kBlockRadius) window -= column(x - kBlockRadius - 1);
      constexpr int kWhole = (2 * kBlockRadius + 1) * (2 * kBlockRadius + 1);
      *at++ = static_cast<std::uint8_t>(std::min(kEighth * kRough * window / kWhole, kRough));
    }
  }
  return rough;
}

}  // namespace vx::automatic
