#pragma once

#include "prim/types.h"

namespace vx::prim {

/// Searches `count` neighbours along the row for the best of each pixel: for i = 0 .. count - 1,
/// where d = |candidate(x + i) - target(x)| * weights[i] lies below best(x), best = d, dstU =
/// srcU(x + i), dstV = srcV(x + i). Of equals the first stays.
///
/// One channel throughout; difference, magnitude and product are rounded to single precision each.
/// A NaN is never better. One call takes the place of 6 * count passes over memory, with the best
/// so far held in registers.
/// @param candidate,srcU,srcV  width + count - 1 pixels per row are read
/// @param weights    `count` factors
/// @param best       smallest distances so far, read and written like dstU and dstV, what came with
/// them
/// @return null pointer -8; width, height or count below 1 -6; a step below the row length -14
int primSearchRow_32f_C1R(const float* candidate, int candidateStep, const float* target,
                          int targetStep, const float* weights, int count, float* best,
                          int bestStep, const float* srcU, int srcUStep, const float* srcV,
                          int srcVStep, float* dstU, int dstUStep, float* dstV, int dstVStep,
                          int width, int height);

}  // namespace vx::prim
