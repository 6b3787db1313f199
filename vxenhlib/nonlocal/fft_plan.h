#pragma once

#include <fftw3.h>

#include <cstddef>
#include <mutex>

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

}  // namespace vx
