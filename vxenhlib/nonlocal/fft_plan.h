#pragma once

#include <fftw3.h>

#include <cstddef>
#include <mutex>
#include <utility>

namespace vx {

/// Held while plans are made or destroyed: the planner of the transform library belongs to the
/// whole process and is not safe for threads. Transforming takes no lock.
std::mutex& fftPlanner();

/// Whether planning may begin: FFTW ends the process when its planner finds no memory, so a try
/// with more than it was seen to need (0.5 MB) comes first. Under fftPlanner().
bool fftPlannerHasMemory();

/// Floats for transforms, aligned as the plans expect it.
class FftBuffer {
 public:
  FftBuffer() = default;
  FftBuffer(const FftBuffer&) = delete;
  FftBuffer& operator=(const FftBuffer&) = delete;
  ~FftBuffer() { fftwf_free(data_); }

  /// `count` floats afterwards, not initialised; false, and empty, when memory is short.
  bool reserve(std::size_t count) {
    fftwf_free(data_);
    data_ = static_cast<float*>(fftwf_malloc(count * sizeof(float)));
    return data_ != nullptr;
  }
  float* data() const { return data_; }

 private:
  float* data_ = nullptr;
};

/// Floats of one row of an in-place real transform of `width` samples: room for its spectrum.
constexpr int fftRowFloats(int width) { return (width & ~1) + 2; }

/// A real transform in three dimensions and its inverse, in place, unnormalised: both together
/// multiply by the number of samples. Rows, also those of the samples, are fftRowFloats apart,
/// slices follow one another.
///
/// Construction searches patiently for the fastest plan, for 10 to 100 ms where the process has not
/// planned that size before. Which plan wins can change from process to process, and with it the
/// last bits of every transform. Any number of threads may use one plan on FftBuffers of their own.
class FftPlan {
 public:
  FftPlan() = default;
  /// Empty when the planner fails.
  FftPlan(int depth, int height, int width);
  FftPlan(FftPlan&& other) noexcept
      : forward_(std::exchange(other.forward_, nullptr)),
        inverse_(std::exchange(other.inverse_, nullptr)) {}
  FftPlan& operator=(FftPlan&& other) noexcept {
    std::swap(forward_, other.forward_);
    std::swap(inverse_, other.inverse_);
    return *this;
  }
  ~FftPlan();

  bool empty() const { return forward_ == nullptr || inverse_ == nullptr; }
  void forward(float* data) const {
    fftwf_execute_dft_r2c(forward_, data, reinterpret_cast<fftwf_complex*>(data));
  }
  void inverse(float* data) const {
    fftwf_execute_dft_c2r(inverse_, reinterpret_cast<fftwf_complex*>(data), data);
  }

 private:
  fftwf_plan forward_ = nullptr;
  fftwf_plan inverse_ = nullptr;
};

}  // namespace vx
