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

FftPlan::FftPlan(int depth, int height, int width) {
  FftBuffer buffer;
  const auto floats = static_cast<std::size_t>(depth) * static_cast<std::size_t>(height) *
                      static_cast<std::size_t>(fftRowFloats(width));
  if (!buffer.reserve(floats)) return;
  float* samples = buffer.data();
  auto* spectrum = reinterpret_cast<fftwf_complex*>(samples);
  const std::lock_guard lock(fftPlanner());
  if (!fftPlannerHasMemory()) return;
  forward_ = fftwf_plan_dft_r2c_3d(depth, height, width, samples, spectrum, FFTW_PATIENT);
  inverse_ = fftwf_plan_dft_c2r_3d(depth, height, width, spectrum, samples, FFTW_PATIENT);
}

FftPlan::~FftPlan() {
  if (forward_ == nullptr && inverse_ == nullptr) return;
  const std::lock_guard lock(fftPlanner());
  if (forward_ != nullptr) fftwf_destroy_plan(forward_);
  if (inverse_ != nullptr) fftwf_destroy_plan(inverse_);
}

}  // namespace vx
