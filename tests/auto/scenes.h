// Pictures of known noise.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "hosts/auto/auto_noise.h"

namespace vx::test {

/// Colours of 0 to 255 as floats, three at each pixel.
struct Scene {
  int width, height;
  std::vector<float> samples;

  Scene(int w, int h)
      : width(w),
        height(h),
        samples(3 * static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}

  template <class Value>
  static Scene of(int w, int h, const Value& value) {
    Scene scene(w, h);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        for (int c = 0; c < 3; ++c) scene.at(x, y, c) = static_cast<float>(value(x, y, c));
    return scene;
  }
  float& at(int x, int y, int c) {
    return samples[static_cast<std::size_t>(3 * (static_cast<std::ptrdiff_t>(y) * width + x) + c)];
  }
  float mirrored(int x, int y, int c) {
    const auto fold = [](int i, int n) { return i < 0 ? -i : i >= n ? 2 * n - 2 - i : i; };
    return at(fold(x, width), fold(y, height), c);
  }
};

/// Something like a photograph out of focus in places: sky, discs, a lawn.
inline Scene photograph(int w, int h) {
  return Scene::of(w, h, [=](double x, double y, int c) {
    const double sky = 90 + 70 * x / w + 20 * c + 18 * std::sin(x / 37) * std::cos(y / 23);
    const double disc = 50 * std::tanh((0.2 * h - std::hypot(x - 0.6 * w, y - 0.3 * h)) / 2);
    const double lawn =
        y > 0.7 * h ? 14 * std::sin(1.1 * x + 3 * std::sin(y / 5)) * std::sin(0.9 * y + x / 11) : 0;
    return sky + disc + lawn;
  });
}

inline Scene flat(int w, int h, double level) {
  return Scene::of(w, h, [=](int, int, int) { return level; });
}

/// Adds Gaussian noise; each of `passes` smooths it by [1 2 1] / 4 in both directions first.
inline Scene withNoise(const Scene& clean, double sigma, int passes = 0, unsigned seed = 7) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal(0, sigma);
  Scene noise = Scene::of(clean.width, clean.height, [&](int, int, int) { return normal(random); });
  for (int pass = 0; pass < passes; ++pass)
    noise = Scene::of(clean.width, clean.height, [&](int x, int y, int c) {
      float sum = 0;
      for (int j = -1; j <= 1; ++j)
        for (int i = -1; i <= 1; ++i)
          sum += noise.mirrored(x + i, y + j, c) * static_cast<float>((2 - i * i) * (2 - j * j));
      return sum / 16;
    });
  for (std::size_t i = 0; i < noise.samples.size(); ++i) noise.samples[i] += clean.samples[i];
  return noise;
}

/// The scene in samples of 8 or 16 bits, in a block that ends with its last sample, so that an
/// address sanitizer sees the first byte too many.
template <class Sample>
struct Raster {
  int width, height, white, channels;
  std::vector<Sample> samples;

  Raster(const Scene& scene, int top, int colours = 3)
      : width(scene.width), height(scene.height), white(top), channels(colours) {
    for (std::size_t i = 0; i < scene.samples.size(); ++i)
      if (colours == 3 || i % 3 == 1)
        samples.push_back(static_cast<Sample>(std::lround(
            std::fmin(std::fmax(scene.samples[i], 0.0F), 255.0F) * static_cast<float>(top) / 255)));
  }
  VxAutoPicture picture() const {
    constexpr auto kBytes = static_cast<std::ptrdiff_t>(sizeof(Sample));
    return {samples.data(),
            channels == 3 ? kBytes : 0,
            channels * kBytes,
            channels * width * kBytes,
            width,
            height,
            white};
  }
};
using Bytes = Raster<std::uint8_t>;
using Words = Raster<std::uint16_t>;

template <class Sample>
VxAutoNoise noiseOf(const Raster<Sample>& raster, const VxAutoEvidence& evidence = {}) {
  const VxAutoPicture picture = raster.picture();
  VxAutoNoise noise{};
  vxAutoMeasureNoise(&picture, &evidence, &noise);
  return noise;
}
inline VxAutoNoise noiseOf(const Scene& scene) { return noiseOf(Bytes(scene, 255)); }

constexpr double kLumaOfRgb = 0.66847;  // sigma of the luma for noise of sigma 1 in each channel

}  // namespace vx::test
