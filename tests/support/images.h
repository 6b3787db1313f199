#pragma once

// Float images for the tests of the stages: one way to make them and one to compare them, bit by
// bit. Works on the containers of stages and of the edge enhancer alike.

#include <omp.h>

#include "frame/img.h"
#include "tests/support/test.h"

namespace vx::test {

using Plane = GIMG<float>;

inline float& at(Plane& p, int x, int y) { return p.row(y)[x]; }
inline float at(const Plane& p, int x, int y) { return p.row(y)[x]; }

/// The planes of a picture, as the stages take them.
struct ThreePlanes {
  Plane plane[3];
  Plane* all[3] = {&plane[0], &plane[1], &plane[2]};

  ThreePlanes(int w, int h) : plane{{w, h}, {w, h}, {w, h}} {}
};

/// Calls f(x, y) for every pixel.
template <class Image, class F>
void overPixels(const Image& image, const F& f) {
  for (int y = 0; y < image.height; ++y)
    for (int x = 0; x < image.width; ++x) f(x, y);
}

/// Sets every pixel to value(x, y).
template <class Value>
void paint(Plane& p, const Value& value) {
  overPixels(p, [&](int x, int y) { at(p, x, y) = value(x, y); });
}

template <class Image>
int channelsOf(const Image&) {
  return Image::kPixelBytes / static_cast<int>(sizeof(float));
}

template <class Image>
void copyImage(const Image& from, Image& to) {
  for (int y = 0; y < from.height; ++y)
    std::memcpy(to.row(y), from.row(y), static_cast<std::size_t>(from.width) * Image::kPixelBytes);
}

/// Ramps, hard edges, flat patches and noise: what tells the steps of a chain apart. All in 0..1.
template <class Image>
void fill(Image& image, unsigned seed, float noise = 0.2f) {
  std::mt19937 random(seed);
  const int channels = channelsOf(image);
  for (int y = 0; y < image.height; ++y)
    for (int i = 0; i < image.width * channels; ++i) {
      const int x = i / channels + 5 * (i % channels);
      const float ramp = 0.7f * static_cast<float>(x) / static_cast<float>(image.width + 10) +
                         0.2f * static_cast<float>(y) / static_cast<float>(image.height);
      const bool patch = (x / 13 + y / 9) % 3 == 0;
      const float grain = noise * (static_cast<float>(random() % 1024) / 1024.0f - 0.5f);
      const float v = patch ? 0.35f : ramp + grain + 0.05f;
      image.row(y)[i] = v < 0.0f ? 0.0f : v > 0.999f ? 0.999f : v;
    }
}

/// The first difference of two images, or nothing; NaN equals NaN.
template <class Image>
::testing::AssertionResult sameBits(const Image& expected, const Image& actual) {
  if (expected.width != actual.width || expected.height != actual.height)
    return ::testing::AssertionFailure() << actual.width << "x" << actual.height;
  for (int y = 0; y < expected.height; ++y)
    for (int i = 0; i < expected.width * channelsOf(expected); ++i) {
      const float e = expected.row(y)[i];
      const float a = actual.row(y)[i];
      if (std::isnan(e) && std::isnan(a)) continue;
      if (std::bit_cast<std::uint32_t>(e) != std::bit_cast<std::uint32_t>(a))
        return ::testing::AssertionFailure()
               << "element " << i << " of row " << y << ": " << a << " instead of " << e << " ("
               << std::hexfloat << a << ", " << e << ")";
    }
  return ::testing::AssertionSuccess();
}

/// The largest difference between two images of one size.
template <class Image>
float largestDifference(const Image& a, const Image& b) {
  float largest = 0.0f;
  for (int y = 0; y < a.height; ++y)
    for (int i = 0; i < a.width * channelsOf(a); ++i)
      largest = std::max(largest, std::fabs(a.row(y)[i] - b.row(y)[i]));
  return largest;
}

/// Rows of a band and threads of a run; no result depends on either. The last is one band.
struct Run {
  int rows, threads;
};
inline constexpr Run kRuns[] = {{0, 1}, {1, 1}, {7, 1}, {7, 2}, {2, 7}, {1 << 20, 1}};

/// Runs with another number of threads. The thread sanitizer does not see the synchronisation of an
/// OpenMP runtime that was built without it, so it gets one thread.
class Threads {
 public:
#ifdef __SANITIZE_THREAD__
  explicit Threads(int) : before_(omp_get_max_threads()) { omp_set_num_threads(1); }
#else
  explicit Threads(int count) : before_(omp_get_max_threads()) { omp_set_num_threads(count); }
#endif
  ~Threads() { omp_set_num_threads(before_); }
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;

 private:
  int before_;
};

}  // namespace vx::test
