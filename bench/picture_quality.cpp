#include "bench/picture_quality.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace {

constexpr int kTaps = 11;
constexpr double kWindowSigma = 1.5;

std::array<double, kTaps> windowTaps() {
  std::array<double, kTaps> taps{};
  double sum = 0.0;
  for (int i = 0; i < kTaps; ++i) {
    const double d = (i - kTaps / 2) / kWindowSigma;
    sum += taps[static_cast<std::size_t>(i)] = std::exp(-0.5 * d * d);
  }
  for (double& tap : taps) tap /= sum;
  return taps;
}

// What a window sums up: both values, their squares, their product.
using Moments = std::array<double, 5>;

void add(Moments& to, const Moments& from, double weight) {
  for (std::size_t i = 0; i < to.size(); ++i) to[i] += weight * from[i];
}

double similarity(const Moments& m) {
  constexpr double kC1 = 0.01 * 255 * 0.01 * 255, kC2 = 0.03 * 255 * 0.03 * 255;
  const double varianceA = m[2] - m[0] * m[0], varianceB = m[3] - m[1] * m[1];
  const double covariance = m[4] - m[0] * m[1];
  return (2 * m[0] * m[1] + kC1) * (2 * covariance + kC2) /
         ((m[0] * m[0] + m[1] * m[1] + kC1) * (varianceA + varianceB + kC2));
}

}  // namespace

double psnr(const RgbPicture& a, const RgbPicture& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.samples.size(); ++i) {
    const double d = double(a.samples[i]) - double(b.samples[i]);
    sum += d * d;
  }
  return 10.0 * std::log10(255.0 * 255.0 * static_cast<double>(a.samples.size()) / sum);
}

double ssim(const RgbPicture& a, const RgbPicture& b) {
  const auto taps = windowTaps();
  const int across = a.width - kTaps + 1, down = a.height - kTaps + 1;
  double sum = 0.0;
  for (int channel = 0; channel < 3; ++channel) {
    std::vector<Moments> rows(static_cast<std::size_t>(across) *
                              static_cast<std::size_t>(a.height));
    for (int y = 0; y < a.height; ++y)
      for (int x = 0; x < across; ++x) {
        Moments& m = rows[static_cast<std::size_t>(y) * static_cast<std::size_t>(across) +
                          static_cast<std::size_t>(x)];
        for (int k = 0; k < kTaps; ++k) {
          const auto i = 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(a.width) +
                              static_cast<std::size_t>(x + k)) +
                         static_cast<std::size_t>(channel);
          const double p = a.samples[i], q = b.samples[i];
          add(m, {p, q, p * p, q * q, p * q}, taps[static_cast<std::size_t>(k)]);
        }
      }
    for (int y = 0; y < down; ++y)
      for (int x = 0; x < across; ++x) {
        Moments m{};
        for (int k = 0; k < kTaps; ++k)
          add(m,
              rows[static_cast<std::size_t>(y + k) * static_cast<std::size_t>(across) +
                   static_cast<std::size_t>(x)],
              taps[static_cast<std::size_t>(k)]);
        sum += similarity(m);
      }
  }
  return sum / (3.0 * across * down);
}
