#include "vxenhlib/nonlocal/search_transform.h"

#include <algorithm>
#include <mutex>

namespace vx {

SearchTransform::SearchTransform(const SearchShape& shape) {
  FftBuffer buffer;
  if (!buffer.reserve(floatsOf(shape))) return;
  auto* data = reinterpret_cast<fftwf_complex*>(buffer.data());
  const int width = shape.searchWidth;
  const int height = shape.searchHeight;
  // `count` transforms of `length` numbers `stride` apart, beginning `distance` apart.
  const auto batch = [data](int length, int count, int stride, int distance) {
    return fftwf_plan_many_dft(1, &length, count, data, nullptr, stride, distance, data, nullptr,
                               stride, distance, FFTW_FORWARD, FFTW_PATIENT);
  };
  const std::lock_guard lock(fftPlanner());
  if (!fftPlannerHasMemory()) return;
  tile_ = fftwf_plan_dft_2d(height, width, data, data, FFTW_FORWARD, FFTW_PATIENT);
  blockRows_ = batch(width, std::min(shape.blockHeight, height), 1, width);
  columns_ = batch(height, width, width, 1);
  inverse_ = fftwf_plan_dft_2d(height, width, data, data, FFTW_BACKWARD, FFTW_PATIENT);
}

bool SearchTransform::empty() const {
  return tile_ == nullptr || blockRows_ == nullptr || columns_ == nullptr || inverse_ == nullptr;
}

SearchTransform::~SearchTransform() {
  const std::lock_guard lock(fftPlanner());
  for (fftwf_plan plan : {tile_, blockRows_, columns_, inverse_})
    if (plan != nullptr) fftwf_destroy_plan(plan);
}

}  // namespace vx
