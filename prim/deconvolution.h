#pragma once

#include "prim/types.h"

namespace vx::prim {

// Lucy-Richardson deconvolution (Richardson, 1972, Bayesian-based iterative method of image
// restoration; Lucy, 1974, An iterative technique for the rectification of observed distributions).
//
// The state holds the kernel and the work images, belongs to the caller, and serves one thread at a
// time.

/// Builds the state for images of up to maxWidth - kernelSize + 1 by maxHeight - kernelSize + 1.
///
/// @param state      receives the state; untouched on a refusal
/// @param kernel     kernelSize x kernelSize weights, row-major, copied
/// @param threshold  partial kernel sums of a smaller magnitude count as 1
/// @return -8; -6 for a size below 1 or a kernel larger than the largest image; -5 for a negative
/// threshold; -9
int primDeconvLRInitAlloc_32f_C1R(primDeconvLRState** state, const float* kernel, int kernelSize,
                                  int maxWidth, int maxHeight, float threshold);

/// Sharpens an image: undoes a blur with the state's kernel step by step.
///
/// With s the source and e the estimate, which starts out as s: b = e convolved with the kernel,
/// q = s / b (0 where b is 0), e = e * (q convolved with the transposed kernel), `iterations`
/// times. The transposed kernel is the kernel mirrored in both directions, its anchor with it. Both
/// convolutions sum only the part of the kernel that falls on the image and divide by the sum of
/// that part, which is the whole kernel's sum in the interior; a sum of a magnitude below the
/// threshold, or of 0, counts as 1. Single precision, rows from the top, each from the left.
/// Source and destination may be the same image.
///
/// @param srcStep,dstStep  at least 4 * width
/// @return -8; -6 also for an image larger than the state allows; -14; -108 for a step that is no
/// multiple of 4; -5 for fewer than 1 iteration
int primDeconvLR_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height, int iterations, primDeconvLRState* state);

/// Releases the state with all its blocks; null gives -8.
int primDeconvLRFree_32f_C1R(primDeconvLRState* state);

}  // namespace vx::prim
