#pragma once

#include "vxenhlib/nonlocal/fft_plan.h"

namespace vx {

/// Blocks and the tiles in which they are searched, in pixels.
struct SearchShape {
  int blockWidth = 0;
  int blockHeight = 0;
  int searchWidth = 0;
  int searchHeight = 0;
};

/// The complex transforms of a search tile, in place, unnormalised, rows searchWidth complex
/// numbers apart. Complex although pixels are real: two blocks that are looked for in one tile
/// travel as the real and the imaginary part of one picture, and their correlations come back apart
/// by themselves. FFTW runs its complex codelets in vectors and those of short real rows not, so
/// that a pair takes less time than one real block would.
///
/// Plans, threads and buffers as FftPlan has them.
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
    return 2 * static_cast<std::size_t>(shape.searchWidth) *
           static_cast<std::size_t>(shape.searchHeight);
  }

  void forward(float* tile) const { execute(tile_, tile); }
  /// Of a picture that is 0 below its first blockHeight rows.
  void forwardBlocks(float* blocks) const {
    execute(blockRows_, blocks);
    execute(columns_, blocks);
  }
  void inverse(float* tile) const { execute(inverse_, tile); }

 private:
  static void execute(fftwf_plan plan, float* data) {
    auto* numbers = reinterpret_cast<fftwf_complex*>(data);
    fftwf_execute_dft(plan, numbers, numbers);
  }

  fftwf_plan tile_ = nullptr;
  fftwf_plan blockRows_ = nullptr;
  fftwf_plan columns_ = nullptr;
  fftwf_plan inverse_ = nullptr;
};

}  // namespace vx
