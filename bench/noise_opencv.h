#pragma once

// OpenCV's bilateral filter of diameter 9 on one thread, the peer of the fast noise filter.

#include <cstdint>
#include <functional>
#include <vector>

/// The filter over RGB bytes of width by height, or over the same picture in floats; ready to run
/// again and again on buffers of its own. Empty when the benchmark was built without OpenCV.
#ifdef VX_BENCH_OPENCV
std::function<void()> openCvBilateral(const std::vector<std::uint8_t>& rgb, int width, int height,
                                      bool floats);
#else
inline std::function<void()> openCvBilateral(const std::vector<std::uint8_t>&, int, int, bool) {
  return {};
}
#endif
