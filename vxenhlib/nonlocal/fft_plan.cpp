#include "vxenhlib/nonlocal/fft_plan.h"

namespace vx {

std::mutex& fftPlanner() {
  static constinit std::mutex planner;
  return planner;
}

bool fftPlannerHasMemory() {
  FftBuffer room;
  return room.reserve(std::size_t{1} << 19);
}

}  // namespace vx
