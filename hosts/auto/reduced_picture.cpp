#include "hosts/auto/reduced_picture.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vx::automatic {
namespace {

constexpr int kWhite = 32767;

// Adds `side` pixels of each square of `scale`.
template <class Sample>
void addRow(const unsigned char* row, const VxAutoPicture& picture, int scale, int side,
            std::vector<std::uint64_t>& sums) {
  for (std::size_t x = 0; x < sums.size() / 3; ++x) {
    for (int i = 0; i < side; ++i) {
      const unsigned char* pixel =
          row + (static_cast<std::ptrdiff_t>(x) * scale + i) * picture.pixelStep;
      for (std::size_t c = 0; c < 3; ++c) {
        Sample sample;
        std::memcpy(&sample, pixel + static_cast<std::ptrdiff_t>(c) * picture.channelStep,
                    sizeof sample);
        sums[3 * x + c] += sample;
      }
    }
  }
}

}  // namespace

ReducedPicture reduced(const VxAutoPicture& picture, int most, Reduction reduction) {
  const int scale = std::max(1, (std::max(picture.width, picture.height) + most - 1) / most);
  ReducedPicture small{picture.width / scale & ~1, picture.height / scale & ~1, scale, {}};
  if (picture.pixels == nullptr || small.width < 2 || small.height < 2) return {};
  const int white = picture.white < 1 ? 255 : picture.white;
  const int side = reduction == Reduction::kMean ? scale : 1;
  const auto whole = static_cast<std::uint64_t>(side) * static_cast<std::uint64_t>(side) *
                     static_cast<std::uint64_t>(white);
  const std::size_t length = 3 * static_cast<std::size_t>(small.width);
  small.samples.reserve(length * static_cast<std::size_t>(small.height));
  std::vector<std::uint64_t> sums(length);
  for (int y = 0; y < small.height; ++y) {
    std::fill(sums.begin(), sums.end(), std::uint64_t{0});
    for (int i = 0; i < side; ++i) {
      const auto* row = static_cast<const unsigned char*>(picture.pixels) +
                        (std::ptrdiff_t{y} * scale + i) * picture.rowStep;
      if (white > 255) {
        addRow<std::uint16_t>(row, picture, scale, side, sums);
      } else {
        addRow<std::uint8_t>(row, picture, scale, side, sums);
      }
    }
    for (const std::uint64_t sum : sums) {
      const std::uint64_t value = (sum * kWhite + whole / 2) / whole;
      small.samples.push_back(static_cast<std::uint16_t>(std::min<std::uint64_t>(value, kWhite)));
    }
  }
  return small;
}

}  // namespace vx::automatic
