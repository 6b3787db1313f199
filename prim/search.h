#pragma once

#include "prim/types.h"

namespace vx::prim {

/// One step of a search for the best of several candidates per pixel: where
/// d = |candidate - target| * weight lies below `best`, best = d, dstU = srcU, dstV = srcV.
///
/// One channel throughout; difference, magnitude and product are rounded to single precision each.
/// A NaN is never better. Fuses what would be six passes over memory (absolute difference, product,
/// comparison, three copies under the mask); a search makes up to 169 of these steps.
/// @param best       smallest distances so far, read and written
/// @param srcU,srcV  what comes with the candidate; dstU, dstV: what came with the best so far
/// @return null pointer -8, width or height below 1 -6, a step below the row length -14
int primSearchStep_32f_C1R(const float* candidate, int candidateStep, const float* target,
                           int targetStep, float weight, float* best, int bestStep,
                           const float* srcU, int srcUStep, const float* srcV, int srcVStep,
                           float* dstU, int dstUStep, float* dstV, int dstVStep, int width,
                           int height);

}  // namespace vx::prim
