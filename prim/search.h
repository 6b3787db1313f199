#pragma once

#include "prim/types.h"

namespace vx::prim {

/// What a search along the row reads and writes: planes of one channel with their steps in bytes.
struct SearchRow {
  const float* candidate;  ///< compared with the target; width + count - 1 pixels per row are read
  int candidateStep;
  const float* target;
  int targetStep;
  const float* weights;  ///< `count` factors
  int count;             ///< neighbours of a pixel: candidates x to x + count - 1
  float* best;           ///< smallest distances so far, read and written
  int bestStep;
  const float* srcU;  ///< goes with the candidate, as long as it
  int srcUStep;
  const float* srcV;
  int srcVStep;
  float* dstU;  ///< what came with `best`, read and written
  int dstUStep;
  float* dstV;
  int dstVStep;
};

/// Searches neighbours along the row for the best of each pixel: for i = 0 .. count - 1, where d =
/// |candidate(x + i) - target(x)| * weights[i] lies below best(x), best = d, dstU = srcU(x + i),
/// dstV = srcV(x + i). Of equals the first stays.
///
/// Difference, magnitude and product are rounded to single precision each. A NaN is never better.
/// One call takes the place of 6 * count passes over memory, with the best so far held in
/// registers.
/// @return null pointer -8; width, height or count below 1 -6; a step below the row length -14
int primSearchRow_32f_C1R(const SearchRow* search, int width, int height);

}  // namespace vx::prim
