#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "adjust/host_pixels.h"
#include "tests/support/attached.h"

namespace vx::test {

constexpr int kFormats[] = {1, 3, 5, 6};

inline bool deep(int format) { return format == 3 || format == 6; }

/// Host pixels in a block that ends with the last pixel, so that an address sanitizer sees the
/// first byte too many. `slack` bytes lie between the rows; 16-bit rows may start at odd addresses.
struct Picture {
  int format, width, height, step;
  std::vector<std::uint8_t> bytes;

  Picture(int f, int w, int h, int slack = 0)
      : format(f),
        width(w),
        height(h),
        step(w * bytesPerPixel(f) + slack),
        bytes(static_cast<std::size_t>(step) * static_cast<std::size_t>(h - 1) +
              static_cast<std::size_t>(w * bytesPerPixel(f))) {}

  /// Fills all bytes, slack and extra channel too, with samples up to `top`. The extra channel of
  /// format 6 stays below the limit that is applied to it.
  void randomise(unsigned seed, int top) {
    std::mt19937 random(seed);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random() % (format == 6 ? 128 : 256));
    forEachSample(
        [&](int, int, int) { return static_cast<int>(random() % static_cast<unsigned>(top + 1)); });
  }
  /// Sets the colour samples to value(x, y, channel).
  void forEachSample(const std::function<int(int, int, int)>& value) {
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        for (int c = 0; c < 3; ++c) set(x, y, c, value(x, y, c));
  }
  std::uint8_t* at(int x, int y, int c) {
    const int sample = bytesPerPixel(format) % 3 == 0 ? c : c + 1;
    return bytes.data() + static_cast<std::ptrdiff_t>(step) * y + bytesPerPixel(format) * x +
           sample * (deep(format) ? 2 : 1);
  }
  int get(int x, int y, int c) {
    if (!deep(format)) return *at(x, y, c);
    std::uint16_t v;
    std::memcpy(&v, at(x, y, c), 2);
    return v;
  }
  void set(int x, int y, int c, int value) {
    const std::uint16_t v = static_cast<std::uint16_t>(value);
    std::memcpy(at(x, y, c), &v, deep(format) ? 2 : 1);
  }
  /// Largest difference of a colour sample to another picture.
  int distance(Picture& other) {
    int most = 0;
    forEachSample([&](int x, int y, int c) {
      most = std::max(most, std::abs(get(x, y, c) - other.get(x, y, c)));
      return get(x, y, c);
    });
    return most;
  }
};

/// A ramp and two flat fields under Gaussian noise of `sigma` levels.
inline void paintScene(Picture& p, double sigma, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> noise(0.0, sigma);
  const double top = deep(p.format) ? 32768.0 : 255.0;
  p.forEachSample([&](int x, int y, int c) {
    const double field = (x / 61 + y / 47) % 3 == 0 ? 0.3 + 0.05 * c : 0.25 + 0.4 * x / p.width;
    return static_cast<int>(
        std::clamp(std::lround(field * top + noise(random)), 0L, std::lround(top)));
  });
}

/// A picture of random samples up to `top`.
inline Picture randomPicture(int format, int width, int height, int top = 255, int slack = 0) {
  Picture p(format, width, height, slack);
  p.randomise(11, top);
  return p;
}

}  // namespace vx::test
