#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "adjust/noise_stage.h"

namespace vx {

inline constexpr float kNoiseSigma = 10.0f / 255.0f;
inline constexpr NoiseProfile kNoiseProfile = {0.6f, kNoiseSigma,         0.0f,
                                               0.6f, 0.35f * kNoiseSigma, 0.0f};

/// A picture for the noise filter, as bytes and as floats. It is made of patches, ramps and
/// Gaussian noise of sigma 10: stacks of all depths occur, most of them full, as in a noisy
/// photograph.
struct NoisePicture {
  int width, height;
  std::vector<std::uint8_t> rgb;
  IMG3<float> image, work;

  // 3:2.
  explicit NoisePicture(std::int64_t megapixels)
      : NoisePicture(static_cast<int>(std::sqrt(1.5e6 * static_cast<double>(megapixels))),
                     static_cast<int>(std::sqrt(1e6 * static_cast<double>(megapixels) / 1.5))) {}
  NoisePicture(int w, int h) : width(w), height(h), image(w, h), work(w, h) {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0.0f, 255.0f * kNoiseSigma);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        for (int c = 0; c < 3; ++c) {
          const int patch = (x / 37 ^ y / 29) % 5 * 25;
          const float value = static_cast<float>(40 + patch + 10 * c + 60 * x / w) + noise(random);
          rgb.push_back(static_cast<std::uint8_t>(std::clamp(value, 0.0f, 255.0f)));
          image.row(y)[3 * x + c] = (static_cast<float>(rgb.back()) + 0.49f) / 256.0f;
        }
  }
  double megapixels() const { return 1e-6 * width * height; }
  void restore() {
    for (int y = 0; y < height; ++y) std::copy_n(image.row(y), 3 * width, work.row(y));
  }
  void denoise(int mode) {
    AdjustSettings settings;
    settings.denoiseStrength = 0.6f;
    settings.noiseProfile = &kNoiseProfile;
    settings.denoiseMode = mode;
    NoiseStage().filter(work, settings);
  }
};

}  // namespace vx
