#pragma once

#include "frame/img.h"
#include "prim/types.h"

namespace vx {

/// Sharpens a plane that a Gaussian has blurred; see prim/deconvolution.h for the method.
///
/// | sigma            | below 0.6 | below 0.9 | below 1.4 | from there on |
/// |------------------|-----------|-----------|-----------|---------------|
/// | kernel           | 3x3       | 5x5       | 7x7       | 9x9           |
/// | iterations       | 5         | 10        | 15        | 20            |
class Deconvolver {
 public:
  static constexpr int kLargestKernel = 9;

  float kernel[kLargestKernel * kLargestKernel] = {};
  prim::primDeconvLRState* state = nullptr;  ///< owned
  int kernelSize = 0;
  int iterations = 20;
  float threshold = 0.0001f;

  Deconvolver() = default;
  Deconvolver(const Deconvolver&) = delete;
  Deconvolver& operator=(const Deconvolver&) = delete;
  ~Deconvolver() { release(); }

  /// Fixes kernel size, iterations and the kernel, a Gaussian of sum 1.
  void setKernel(float sigma);

  /// target = source, sharpened, but for a frame of 4, 5, 6 or 8 pixels (sigma below 0.65, 1.0,
  /// 1.5, and from there on), which keeps the source: too little of the blur is known there. Both
  /// have one size and do not overlap.
  ///
  /// @return kVxrcSizeMismatch, or kVxrcNoMemory; the target is a copy of the source then, or
  ///   untouched
  int deconvolve(const GIMG<float>& source, GIMG<float>& target, float sigma);

 private:
  void release();
};

}  // namespace vx
