#include "vxenhlib/nonlocal/search_transform.h"

#include <mutex>

namespace vx {

SearchTransform::SearchTransform(const SearchShape& shape) {
  FftBuffer buffer;
  if (!buffer.reserve(floatsOf(shape))) return;
  auto* data = reinterpret_cast<fftwf_complex*>(buffer.data());
  const int size = shape.searchSize;
  const std::lock_guard lock(fftPlanner());
  if (!fftPlannerHasMemory()) return;
  forward_ = fftwf_plan_dft_2d(size, size, data, data, FFTW_FORWARD, FFTW_PATIENT);
  inverse_ = fftwf_plan_dft_2d(size, size, data, data, FFTW_BACKWARD, FFTW_PATIENT);
}

bool SearchTransform::empty() const { return forward_ == nullptr || inverse_ == nullptr; }

SearchTransform::~SearchTransform() {
  const std::lock_guard lock(fftPlanner());
  for (fftwf_plan plan : {forward_, inverse_})
    if (plan != nullptr) fftwf_destroy_plan(plan);
}

}  // namespace vx
