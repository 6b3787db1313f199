#include "lqlib/src/unblock_plan.h"

#include <algorithm>

#include "jpeg/jpeg.h"

namespace vx {
namespace {

int subsamplingCode(int jpegMode) {
  const int low = jpegMode & 15;
  return low == 0 ? kJpeg444 : low == 1 ? kJpeg422 : kJpeg420;
}

}  // namespace

UnblockPlan::UnblockPlan(int w, int h, int quality, int jpegMode, int shiftStep) noexcept
    : width(w),
      height(h),
      coding((jpegMode & 0xF0) == 0, subsamplingCode(jpegMode), quality & 255),
      trips(0) {
  const int step = std::clamp(shiftStep, 1, 8);
  int perAxis = 0;
  for (int margin = 0; margin < 8; margin += step, ++perAxis) taken[margin] = true;
  trips = perAxis * perAxis;
}

std::int64_t UnblockPlan::blockBytes() const {
  const std::int64_t rowBytes = 3 * (std::int64_t{width} + 8);
  constexpr std::int64_t kRowGranule = 32;  // of an ImageBuffer
  const std::int64_t step = (rowBytes + kRowGranule - 1) / kRowGranule * kRowGranule;
  return step * (std::int64_t{height} + 8) + 128;
}

}  // namespace vx
