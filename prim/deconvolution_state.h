#pragma once

namespace vx::prim {

/// Everything that one deconvolution works with; all blocks are aligned ones. The images have
/// (maxWidth + kernelSize) by (maxHeight + kernelSize) floats, rows without padding.
struct primDeconvLRState {
  int maxWidth = 0;
  int maxHeight = 0;
  int kernelSize = 0;
  int anchor = 0;  ///< (kernelSize - 1) / 2 in both directions
  float threshold = 0;
  float* kernel = nullptr;      ///< kernelSize squared, row-major
  float* transposed = nullptr;  ///< the kernel of the transposed operator: mirrored both ways
  float* estimate = nullptr;
  float* quotient = nullptr;
  float* kernelSum = nullptr;      ///< per pixel, the part of the kernel that falls on the image
  float* transposedSum = nullptr;  ///< the same of the transposed kernel
};

}  // namespace vx::prim
