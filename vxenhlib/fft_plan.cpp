#include "vxenhlib/fft_plan.h"

#include <algorithm>
#include <mutex>

namespace vx {
namespace {

constinit std::mutex plannerMutex;

}  // namespace

FftPlan::FftPlan(int depth, int height, int width) {
  FftBuffer buffer;
  const auto floats = static_cast<std::size_t>(std::max(depth, 1)) *
                      static_cast<std::size_t>(height) *
                      static_cast<std::size_t>(fftRowFloats(width));
  if (!buffer.reserve(floats)) return;
  float* samples = buffer.data();
  auto* spectrum = reinterpret_cast<fftwf_complex*>(samples);
  const int sizes[3] = {depth, height, width};
  const int* first = depth > 0 ? sizes : sizes + 1;
  const int rank = depth > 0 ? 3 : 2;
  const std::lock_guard lock(plannerMutex);
  forward_ = fftwf_plan_dft_r2c(rank, first, samples, spectrum, FFTW_PATIENT);
  inverse_ = fftwf_plan_dft_c2r(rank, first, spectrum, samples, FFTW_PATIENT);
}

FftPlan::~FftPlan() {
  if (forward_ == nullptr && inverse_ == nullptr) return;
  const std::lock_guard lock(plannerMutex);
  if (forward_ != nullptr) fftwf_destroy_plan(forward_);
  if (inverse_ != nullptr) fftwf_destroy_plan(inverse_);
}

}  // namespace vx
