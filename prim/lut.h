#pragma once

// Curves given by points, in place on one float channel. For both:
//
// - The curve has `count` points (levels[i], values[i]). The segment of an element x is the first i
//   with levels[i] <= x < levels[i + 1]. An element of no segment stays as it is, bit by bit: one
//   below the first level, one at or above the last level, a NaN.
// - Levels may have any order and repeat. A segment of width 0 or less holds nothing, nor does one
//   beside a NaN. Levels that never fall are searched by bisection or faster, others from the
//   first.
// - Double precision in the order printed, rounded to float once; all variants give the same bits.
//   Points that are infinite or NaN, or four points of which two have one level, give what the
//   formula gives; a NaN that results is the quiet one with the sign set.
// - Up to 63 segments cost no allocation; eight or fewer in rising order are the fast case.
// - The step is not checked: any value is honoured, also one below 1 (an image from the bottom
//   up). Nothing outside the rectangle is read or written.
// - Errors: kStatusNullPtr for srcDst, values or levels, kStatusBadSize for a width or height below
//   1, kStatusFewLutLevels for count below 2, kStatusNoMemory. All leave the image as it was.

#include "prim/types.h"

namespace vx::prim {

/// Joins the points by straight lines: values[i] + (x - levels[i]) * slope, with
/// slope = (values[i + 1] - values[i]) / (levels[i + 1] - levels[i]).
int primLUT_Linear_32f_C1IR(float* srcDst, int srcDstStep, int width, int height,
                            const float* values, const float* levels, int count);

/// In segment i follows the cubic through the points i - 1 to i + 2, or through the four nearest
/// the curve's end for the first and last segment:
/// values[k] + c*u + b*u*u + a*u*u*u with u = x - levels[k] and k the second of the four points.
///
/// The coefficients come from Cramer's rule, once per call. Fewer than four points make the linear
/// form. The curve passes through its points but neither its slope nor, between uneven levels, its
/// range follows theirs.
int primLUT_Cubic_32f_C1IR(float* srcDst, int srcDstStep, int width, int height,
                           const float* values, const float* levels, int count);

}  // namespace vx::prim
