#include "bench/noise_opencv.h"

#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#ifdef VX_BENCH_OPENCV_PHOTO
#include <opencv2/photo.hpp>
#endif

std::function<void()> openCvBilateral(const std::vector<std::uint8_t>& rgb, int width, int height,
                                      bool floats) {
  cv::setNumThreads(1);
  cv::Mat bytes(height, width, CV_8UC3);
  std::copy(rgb.begin(), rgb.end(), bytes.data);
  cv::Mat image = bytes, out;
  if (floats) bytes.convertTo(image, CV_32F, 1 / 255.0);
  const double sigma = floats ? 30 / 255.0 : 30.0;
  return [image, out, sigma]() mutable { cv::bilateralFilter(image, out, 9, sigma, 3.0); };
}

#ifdef VX_BENCH_OPENCV_PHOTO
std::function<void()> openCvNonLocalMeans(const std::vector<std::uint8_t>& rgb, int width,
                                          int height) {
  cv::setNumThreads(1);
  cv::Mat image(height, width, CV_8UC3), out;
  std::copy(rgb.begin(), rgb.end(), image.data);
  return
      [image, out]() mutable { cv::fastNlMeansDenoisingColored(image, out, 10.0f, 10.0f, 3, 11); };
}
#endif
