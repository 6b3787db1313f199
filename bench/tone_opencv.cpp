#include "bench/tone_opencv.h"

#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace {

struct Buffers {
  cv::Mat rgb, image, hls, luma, luma16, out16, blur, sharp, power, bytes;
  cv::Mat mean, meanOfSquares, squares, variance, a, b, meanA, meanB, base, detail;
  cv::Ptr<cv::CLAHE> clahe = cv::createCLAHE(3.0, cv::Size(8, 8));
};

// The guided filter by box means (K. He, J. Sun, X. Tang, "Guided image filtering", 2010), guided
// by the plane itself: the cheapest edge-preserving base layer that the main modules can make.
void split(Buffers& p) {
  const cv::Size box(17, 17);
  cv::boxFilter(p.luma, p.mean, CV_32F, box);
  cv::multiply(p.luma, p.luma, p.squares);
  cv::boxFilter(p.squares, p.meanOfSquares, CV_32F, box);
  cv::multiply(p.mean, p.mean, p.squares);
  cv::subtract(p.meanOfSquares, p.squares, p.variance);
  cv::add(p.variance, 0.01, p.a);
  cv::divide(p.variance, p.a, p.a);
  cv::multiply(p.a, p.mean, p.b);
  cv::subtract(p.mean, p.b, p.b);
  cv::boxFilter(p.a, p.meanA, CV_32F, box);
  cv::boxFilter(p.b, p.meanB, CV_32F, box);
  cv::multiply(p.meanA, p.luma, p.base);
  cv::add(p.base, p.meanB, p.base);
  cv::subtract(p.luma, p.base, p.detail);
}

}  // namespace

std::vector<PeerStep> openCvToneChain(const std::vector<std::uint8_t>& rgb, int width, int height) {
  cv::setNumThreads(1);
  const auto p = std::make_shared<Buffers>();
  p->rgb = cv::Mat(height, width, CV_8UC3);
  std::copy(rgb.begin(), rgb.end(), p->rgb.data);
  p->rgb.convertTo(p->image, CV_32F, 1 / 255.0);
  cv::cvtColor(p->image, p->luma, cv::COLOR_RGB2GRAY);
  p->luma.convertTo(p->luma16, CV_16U, 65535);
  return {
      {"8 bit to float", true, [p] { p->rgb.convertTo(p->image, CV_32F, 1 / 255.0); }},
      {"RGB - HLS - RGB", true,
       [p] {
         cv::cvtColor(p->image, p->hls, cv::COLOR_RGB2HLS);
         cv::cvtColor(p->hls, p->sharp, cv::COLOR_HLS2RGB);
       }},
      {"unsharp, RGB float", true,
       [p] {
         cv::GaussianBlur(p->image, p->blur, {}, 1);
         cv::addWeighted(p->image, 1.5, p->blur, -.5, 0, p->sharp);
       }},
      {"CLAHE, luma 16 bit", true, [p] { p->clahe->apply(p->luma16, p->out16); }},
      {"CLAHE, saturation 16 bit", false, [p] { p->clahe->apply(p->luma16, p->out16); }},
      {"base/detail by guided filter", true, [p] { split(*p); }},
      {"gamma, RGB float", true, [p] { cv::pow(p->image, .8, p->power); }},
      {"float to 8 bit", true, [p] { p->image.convertTo(p->bytes, CV_8U, 255.0); }},
  };
}
