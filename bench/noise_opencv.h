#pragma once

// OpenCV's denoisers on one thread: the bilateral filter of diameter 9 is the peer of the fast
// noise filter, non-local means that of the other one.
//
// Each is ready to run again and again on buffers of its own. Empty when the benchmark was built
// without OpenCV, or without its photo module.

#include <cstdint>
#include <functional>
#include <vector>

/// The bilateral filter over RGB bytes of width by height, or over the same picture in floats.
#ifdef VX_BENCH_OPENCV
std::function<void()> openCvBilateral(const std::vector<std::uint8_t>& rgb, int width, int height,
                                      bool floats);
#else
inline std::function<void()> openCvBilateral(const std::vector<std::uint8_t>&, int, int, bool) {
  return {};
}
#endif

/// Non-local means over RGB bytes, patches of 3 and windows of 11.
#ifdef VX_BENCH_OPENCV_PHOTO
std::function<void()> openCvNonLocalMeans(const std::vector<std::uint8_t>& rgb, int width,
                                          int height);
#else
inline std::function<void()> openCvNonLocalMeans(const std::vector<std::uint8_t>&, int, int) {
  return {};
}
#endif
