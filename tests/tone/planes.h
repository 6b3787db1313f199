#pragma once

// Pictures for the tests of the tone stage, and the comparison bit by bit.

#include <gtest/gtest.h>
#include <omp.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "frame/img.h"
#include "prim/prims.h"

namespace vx::test {

using Plane = GIMG<float>;

inline float& at(Plane& p, int x, int y) { return p.row(y)[x]; }
inline float at(const Plane& p, int x, int y) { return p.row(y)[x]; }

template <class Image>
void copyImage(const Image& from, Image& to) {
  for (int y = 0; y < from.roiHeight; ++y)
    std::memcpy(to.row(y), from.row(y),
                static_cast<std::size_t>(from.roiWidth) * Image::kPixelBytes);
}

// Ramps, hard edges, flat patches and noise: what tells the steps of a tone chain apart.
inline float picture(int x, int y, int w, int h, float noise, std::mt19937& random) {
  const float ramp = 0.7f * static_cast<float>(x) / static_cast<float>(w) +
                     0.2f * static_cast<float>(y) / static_cast<float>(h);
  const bool patch = (x / 13 + y / 9) % 3 == 0;
  const float grain = noise * (static_cast<float>(random() % 1024) / 1024.0f - 0.5f);
  const float v = patch ? 0.35f : ramp + grain + 0.05f;
  return v < 0.0f ? 0.0f : v > 0.999f ? 0.999f : v;
}

inline void fill(Plane& p, unsigned seed, float noise = 0.2f) {
  std::mt19937 random(seed);
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x) at(p, x, y) = picture(x, y, p.width, p.height, noise, random);
}

inline void fill(IMG3<float>& image, unsigned seed, float noise = 0.2f) {
  std::mt19937 random(seed);
  for (int y = 0; y < image.height; ++y)
    for (int x = 0; x < image.width; ++x)
      for (int c = 0; c < 3; ++c)
        image.row(y)[3 * x + c] =
            picture(x + 5 * c, y, image.width + 10, image.height, noise, random);
}

/// The first difference of two images of one size, or nothing; NaN equals NaN.
template <class Image>
::testing::AssertionResult sameBits(const Image& expected, const Image& actual) {
  const int n = expected.roiWidth * Image::kChannels;
  for (int y = 0; y < expected.roiHeight; ++y) {
    for (int i = 0; i < n; ++i) {
      const float e = expected.row(y)[i];
      const float a = actual.row(y)[i];
      if (std::isnan(e) && std::isnan(a)) continue;
      if (std::bit_cast<std::uint32_t>(e) != std::bit_cast<std::uint32_t>(a))
        return ::testing::AssertionFailure()
               << "element " << i << " of row " << y << ": " << a << " instead of " << e << " ("
               << std::hexfloat << a << ", " << e << ")";
    }
  }
  return ::testing::AssertionSuccess();
}

/// The largest difference between two images of one size.
template <class Image>
float largestDifference(const Image& a, const Image& b) {
  float largest = 0.0f;
  for (int y = 0; y < a.roiHeight; ++y)
    for (int i = 0; i < a.roiWidth * Image::kChannels; ++i)
      largest = std::max(largest, std::fabs(a.row(y)[i] - b.row(y)[i]));
  return largest;
}

/// Rows of a band and threads of a run; no result depends on either. The last is one band.
struct Run {
  int rows, threads;
};
inline constexpr Run kRuns[] = {{0, 1}, {1, 1}, {7, 1}, {7, 2}, {2, 7}, {1 << 20, 1}};

/// Runs with another number of threads.
class Threads {
 public:
  explicit Threads(int count) : before_(omp_get_max_threads()) { omp_set_num_threads(count); }
  ~Threads() { omp_set_num_threads(before_); }
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;

 private:
  int before_;
};

}  // namespace vx::test
