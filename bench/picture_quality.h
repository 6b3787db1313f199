#pragma once

#include <cstdint>
#include <vector>

/// Interleaved RGB, 8 bits a sample, rows one after the other.
struct RgbPicture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> samples;

  double megapixels() const { return 1e-6 * width * height; }
};

/// Peak signal to noise ratio of all samples, in dB.
double psnr(const RgbPicture& a, const RgbPicture& b);

/// Structural similarity, the mean over the channels and over all windows that lie inside: Gaussian
/// windows of 11 x 11, sigma 1.5.
///
/// Z. Wang, A. C. Bovik, H. R. Sheikh, E. P. Simoncelli, "Image quality assessment: from error
/// visibility to structural similarity", 2004.
double ssim(const RgbPicture& a, const RgbPicture& b);
