#pragma once

// Float arithmetic, element by element, each operation rounded to single precision. For all of
// them:
//
// - The subtrahend and the divisor are the FIRST operand: srcDst - src, src2 - src1, srcDst / src.
// - C3 rows hold three interleaved channels; widths count pixels.
// - Steps are not checked unless a function says so: any value is honoured, also one below 1 (an
//   image from the bottom up).
// - Each operand is the destination itself or does not overlap it.
// - Infinities and NaN pass as the processor makes them; overflow is not reported.
// - Errors: kStatusNullPtr for any null pointer, kStatusBadSize for a width or height below 1.

#include "prim/types.h"

namespace vx::prim {

/// srcDst = src + srcDst.
int primAdd_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);
/// srcDst = src + srcDst.
int primAdd_32f_C3IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);
/// dst = src1 + src2.
int primAdd_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                    int dstStep, int width, int height);
/// srcDst = srcDst - src.
int primSub_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);
/// dst = src2 - src1.
int primSub_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                    int dstStep, int width, int height);
/// srcDst = src * srcDst.
int primMul_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);

/// srcDst = srcDst / src.
///
/// Over a zero of either sign a positive element gives +infinity, a negative one -infinity, and
/// zero and NaN give the NaN 0xFFC00000.
/// @return kStatusDivByZero as a warning if any divisor was 0
int primDiv_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);

/// srcDst = srcDst + value.
int primAddC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height);
/// srcDst = srcDst + value[channel].
///
/// @param value   three floats; they may lie inside the image and are read first
int primAddC_32f_C3IR(const float* value, float* srcDst, int srcDstStep, int width, int height);
/// srcDst = srcDst - value.
int primSubC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height);
/// dst = src - value.
int primSubC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, int width,
                     int height);
/// srcDst = srcDst * value.
int primMulC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height);
/// srcDst = srcDst * value[channel].
///
/// @param value   three floats; they may lie inside the image and are read first
int primMulC_32f_C3IR(const float* value, float* srcDst, int srcDstStep, int width, int height);
/// dst = src * value.
int primMulC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, int width,
                     int height);

/// dst = |src|; the sign bit is cleared, of a zero and a NaN too.
int primAbs_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width, int height);
/// srcDst = |srcDst|.
int primAbs_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);
/// dst = |src1 - src2|.
///
/// @return kStatusBadStep last, for a step shorter than the row
int primAbsDiff_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step,
                        float* dst, int dstStep, int width, int height);
/// srcDst = srcDst * srcDst.
int primSqr_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);

/// srcDst = e to the power of srcDst, computed in double and rounded to float.
///
/// Elements of magnitude below the smallest normal number give 1, above 88.72284 +infinity, below
/// -87.33655 0; a NaN stays.
int primExp_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);

/// srcDst = natural logarithm of srcDst, computed in double and rounded to float.
///
/// A zero gives -infinity, a negative element the NaN 0xFFC00000; +infinity and NaN stay.
/// @return as a warning that of the first row with such elements: kStatusLnOfNegative if it holds a
///   negative one, else kStatusLnOfZero
int primLn_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);

}  // namespace vx::prim
