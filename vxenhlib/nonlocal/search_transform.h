#pragma once

#include "vxenhlib/nonlocal/block_search.h"
#include "vxenhlib/nonlocal/fft_plan.h"

namespace vx {

/// The complex transforms of a search area, in place, unnormalised, rows searchSize complex numbers
/// apart.
///
/// Construction searches patiently for the fastest plans, for some 10 ms where the process has not
/// planned that size before. Which plans win can change from process to process, and with it the
/// last bits of every transform. Any number of threads may use one object on FftBuffers of their
/// own.
class SearchTransform {
 public:
  explicit SearchTransform(const SearchShape& shape);
  SearchTransform(const SearchTransform&) = delete;
  SearchTransform& operator=(const SearchTransform&) = delete;
  ~SearchTransform();

  /// True when the planner failed.
  bool empty() const;

  /// Floats that a buffer holds.
  static std::size_t floatsOf(const SearchShape& shape) {
    const auto size = static_cast<std::size_t>(shape.searchSize);
    return 2 * size * size;
  }

  void forward(float* data) const { execute(forward_, data); }
  void inverse(float* data) const { execute(inverse_, data); }

 private:
  static void execute(fftwf_plan plan, float* data) {
    auto* numbers = reinterpret_cast<fftwf_complex*>(data);
    fftwf_execute_dft(plan, numbers, numbers);
  }

  fftwf_plan forward_ = nullptr;
  fftwf_plan inverse_ = nullptr;
};

}  // namespace vx
