#pragma once

// Operations on vectors. For all of them:
//
// - The divisor is the first operand: srcDst / src.
// - Every operation is rounded to single precision. Infinities and NaN pass as the processor makes
//   them, except where a function says otherwise.
// - The source is the destination itself or does not overlap it.
// - Errors: kStatusNullPtr for any null pointer, kStatusBadSize for a length below 1.

#include "prim/types.h"

namespace vx::prim {

/// dst = value.
int primvSet_32f(float value, float* dst, int length);
/// dst = 0.
int primvZero_32f(float* dst, int length);
/// dst = src.
int primvCopy_32f(const float* src, float* dst, int length);
/// srcDst = src + srcDst.
int primvAdd_32f_I(const float* src, float* srcDst, int length);
/// srcDst = srcDst + value; a value of 0 touches nothing, so -0 stays.
int primvAddC_32f_I(float value, float* srcDst, int length);
/// srcDst = srcDst - value; a value of 0 touches nothing.
int primvSubC_32f_I(float value, float* srcDst, int length);
/// srcDst = srcDst * value; a value of 1 touches nothing, 0 makes everything +0, infinities and NaN
/// too.
int primvMulC_32f_I(float value, float* srcDst, int length);
/// srcDst = srcDst / src; over a zero of either sign as primDiv_32f_C1IR.
///
/// @return kStatusDivByZero as a warning if any divisor was 0
int primvDiv_32f_I(const float* src, float* srcDst, int length);
/// srcDst = srcDst * srcDst.
int primvSqr_32f_I(float* srcDst, int length);

/// dst = sqrt(re * re + im * im), products and sum rounded to float, the root to nearest.
///
/// Source and destination do not overlap.
int primvMagnitude_32fc(const Complex32f* src, float* dst, int length);
/// srcDst = src * srcDst, the complex product: re = ac - bd, im = ad + bc.
int primvMul_32fc_I(const Complex32f* src, Complex32f* srcDst, int length);
/// srcDst = src * srcDst, the real source multiplied into both parts.
///
/// Source and destination do not overlap.
int primvMul_32f32fc_I(const float* src, Complex32f* srcDst, int length);

/// srcDst = srcDst <= level ? srcDst : level, so a NaN takes the level.
int primvThreshold_GT_32f_I(float* srcDst, int length, float level);
/// srcDst = srcDst >= level ? srcDst : level, so a NaN takes the level.
int primvThreshold_LT_32f_I(float* srcDst, int length, float level);

}  // namespace vx::prim
