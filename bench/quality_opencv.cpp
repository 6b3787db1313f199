#include "bench/quality_opencv.h"

#include <algorithm>
#include <cstdio>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/photo.hpp>

using Kind = OpenCvDenoiser::Kind;

std::string OpenCvDenoiser::setting() const {
  char text[64];
  if (kind == Kind::kNonLocalMeans) {
    std::snprintf(text, sizeof text, "h %.3g", strength);
  } else {
    std::snprintf(text, sizeof text, "colour %.3g, space %.3g", strength, spatialSigma);
  }
  return text;
}

std::vector<OpenCvDenoiser> openCvSettings(Kind kind, double sigma) {
  std::vector<OpenCvDenoiser> settings;
  if (kind == Kind::kNonLocalMeans) {
    for (const double share : {0.3, 0.5, 0.7, 0.9, 1.1, 1.3, 1.6, 2.0})
      settings.push_back({kind, share * sigma, 0.0});
  } else {
    for (const double share : {1.5, 2.0, 2.5, 3.0, 3.5, 4.0, 5.0, 6.0})
      for (const double space : {1.0, 1.5, 2.0, 3.0, 5.0})
        settings.push_back({kind, share * sigma, space});
  }
  return settings;
}

RgbPicture denoise(const OpenCvDenoiser& denoiser, const RgbPicture& noisy) {
  cv::setNumThreads(1);
  cv::Mat in(noisy.height, noisy.width, CV_8UC3), out;
  // Its functions expect blue first; of the two, one weighs the channels differently.
  for (std::size_t i = 0; i < noisy.samples.size(); ++i)
    in.data[i] = noisy.samples[i / 3 * 3 + (2 - i % 3)];
  if (denoiser.kind == Kind::kNonLocalMeans) {
    const auto h = static_cast<float>(denoiser.strength);
    cv::fastNlMeansDenoisingColored(in, out, h, h, 3, 11);
  } else {
    cv::bilateralFilter(in, out, 9, denoiser.strength, denoiser.spatialSigma);
  }
  RgbPicture result = noisy;
  for (std::size_t i = 0; i < result.samples.size(); ++i)
    result.samples[i] = out.data[i / 3 * 3 + (2 - i % 3)];
  return result;
}
