#pragma once

// One channel reduced to one or a few numbers. For all of them:
//
// - Nothing outside the rectangle is read. Steps are not checked except where a line says so: any
//   value is honoured, also one below 1 (an image from the bottom up).
// - Errors: kStatusNullPtr for the image or a result, then kStatusBadSize for a width or height
//   below 1. A refusal leaves the results as they were.

#include "prim/types.h"

namespace vx::prim {

/// Sum in single precision, stored as double.
///
/// The generic body adds even and odd elements of the rows apart. Every other one adds element i of
/// a row to lane i mod 16, row after row, and then folds the upper half of the lanes onto the lower
/// until one is left. So all vector bodies agree in every bit, and the generic one differs from
/// them by rounding. `hint` is ignored.
int primSum_32f_C1R(const float* src, int srcStep, int width, int height, double* sum, int hint);

/// primSum_32f_C1R's result / (width * height), divided in double precision.
int primMean_32f_C1R(const float* src, int srcStep, int width, int height, double* mean, int hint);

/// Exact integer sum / (width * height) in double precision.
int primMean_16s_C1R(const std::int16_t* src, int srcStep, int width, int height, double* mean);

/// Smallest element. The search ends with the row in which -32768 is seen.
int primMin_16s_C1R(const std::int16_t* src, int srcStep, int width, int height, std::int16_t* min);

/// Largest element. A NaN never wins; an image of NaN alone gives 0. A largest zero is positive.
int primMax_32f_C1R(const float* src, int srcStep, int width, int height, float* max);

/// Smallest element and its first position in row order: an equal element further on does not
/// replace it. A NaN never wins; an image of NaN alone gives 0 at (0, 0).
int primMinIndex_32f_C1R(const float* src, int srcStep, int width, int height, float* min,
                         int* indexX, int* indexY);

/// Sum of |src1 - src2|, exact. kStatusBadStep for a step below 1.
int primNormDiffL1_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                          int src2Step, int width, int height, double* result);

/// hist[i] = number of elements v with levels[i] <= v < levels[i + 1], for each of the
/// levelCount - 1 bins.
///
/// Levels may have any value and order: an element counts in every bin that holds it, and in none
/// outside all. Counts are modulo 2^32. Large images use a table of 256 KiB and are counted without
/// it when memory is short. kStatusFewHistogramLevels for levelCount below 2.
int primHistogramRange_16s_C1R(const std::int16_t* src, int srcStep, int width, int height,
                               int* hist, const int* levels, int levelCount);

}  // namespace vx::prim
