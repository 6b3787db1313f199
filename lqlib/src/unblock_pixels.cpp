#include "lqlib/src/unblock_pixels.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace vx {
namespace {

std::uint8_t* rowOf(const UnblockPixels& p, int y) {
  const std::ptrdiff_t sampleBytes = p.deep ? 2 : 1;
  return static_cast<std::uint8_t*>(p.first) + sampleBytes * p.rowStep * y;
}

// 16-bit rows may start at odd addresses.
std::uint16_t load16(const std::uint8_t* at) {
  std::uint16_t v;
  std::memcpy(&v, at, sizeof v);
  return v;
}

}  // namespace

bool UnblockPixels::rowsOverlap() const noexcept {
  const std::int64_t span = std::abs(std::int64_t{pixelStep}) * (width - 1) + 3;
  return height > 1 && std::abs(std::int64_t{rowStep}) < span;
}

void readUnblockSource(const UnblockPixels& p, ImageBuffer<std::uint8_t, 3>& source) noexcept {
  for (int y = 0; y < p.height; ++y) {
    const std::uint8_t* in = rowOf(p, y);
    std::uint8_t* out = source.row(y);
    if (!p.deep && p.pixelStep == 3) {
      std::memcpy(out, in, static_cast<std::size_t>(p.width) * 3);
      continue;
    }
    for (std::ptrdiff_t x = 0; x < p.width; ++x, out += 3) {
      const std::ptrdiff_t at = x * p.pixelStep;
      for (std::ptrdiff_t c = 0; c < 3; ++c)
        out[c] = p.deep ? static_cast<std::uint8_t>(std::min(255, load16(in + 2 * (at + c)) >> 7))
                        : in[at + c];
    }
  }
}

void writeUnblockRow(const UnblockPixels& p, int y, const std::uint16_t* const sums[3],
                     int trips) noexcept {
  std::uint8_t* out = rowOf(p, y);
  const float factor = (p.deep ? 128.0f : 1.0f) / static_cast<float>(trips);
  const float top = p.deep ? 32767.0f : 255.0f;
  for (std::ptrdiff_t x = 0; x < p.width; ++x) {
    const std::ptrdiff_t at = x * p.pixelStep;
    for (std::ptrdiff_t c = 0; c < 3; ++c) {
      const int value = static_cast<int>(std::min(static_cast<float>(sums[c][x]) * factor, top));
      if (p.deep) {
        const auto sample = static_cast<std::uint16_t>(value);
        std::memcpy(out + 2 * (at + c), &sample, sizeof sample);
      } else {
        out[at + c] = static_cast<std::uint8_t>(value);
      }
    }
  }
}

}  // namespace vx
