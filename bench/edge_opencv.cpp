#include "bench/edge_opencv.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

bool edgeLumaByOpenCv(const float* input, int inputStep, float* output, int outputStep, int width,
                      int height) {
  cv::setNumThreads(1);
  const cv::Mat image(height, width, CV_32F, const_cast<float*>(input),
                      static_cast<std::size_t>(inputStep));
  cv::Mat result(height, width, CV_32F, output, static_cast<std::size_t>(outputStep));
  static cv::Mat base, highest, lowest, range, smooth, below, above, ratio, detail;
  cv::GaussianBlur(image, base, cv::Size(7, 7), 1.5);
  cv::subtract(image, base, detail);
  cv::dilate(image, highest, cv::Mat());
  cv::erode(image, lowest, cv::Mat());
  cv::subtract(highest, lowest, range);
  cv::GaussianBlur(range, smooth, cv::Size(7, 7), 3.0);
  cv::subtract(highest, image, below);
  cv::subtract(image, lowest, above);
  cv::min(below, above, ratio);
  cv::add(smooth, cv::Scalar(0.01), smooth);
  cv::divide(ratio, smooth, ratio);
  cv::multiply(ratio, cv::Scalar(1.5), ratio);
  cv::add(ratio, cv::Scalar(1.3), ratio);
  cv::multiply(ratio, detail, ratio);
  cv::add(ratio, base, result);
  return true;
}
