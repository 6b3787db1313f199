#pragma once

// Integer arithmetic, element by element. For all of them:
//
// - The subtrahend is the FIRST operand: srcDst - src.
// - Steps are not checked unless a function says so: any value is honoured, also one below 1 (an
//   image from the bottom up). 16-bit images may start at odd addresses.
// - Each operand is the destination itself or does not overlap it.
// - Errors: kStatusNullPtr for any null pointer, kStatusBadSize for a width or height below 1.
//
// The scale factor s of the Sfs forms takes the exact result r (a negative 8-bit difference counts
// as 0) to the element:
//
// - 0: r, saturated to the element's range;
// - 1 to b: r / 2^s, rounded to nearest with ties to even, saturated; b is 9 for sums of 8 bits, 8
//   for differences of 8 bits, 16 for 16 bits;
// - above b: 0;
// - -1 to -7 (8 bits) or -15 (16 bits): r * 2^-s, saturated;
// - below that: top of the range for a positive r, bottom for a negative one, 0 for 0.

#include "prim/types.h"

namespace vx::prim {

/// dst = scaled(src1 + src2).
int primAdd_8u_C1RSfs(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                      int src2Step, std::uint8_t* dst, int dstStep, int width, int height,
                      int scaleFactor);
/// srcDst = scaled(src + srcDst).
int primAdd_8u_C1IRSfs(const std::uint8_t* src, int srcStep, std::uint8_t* srcDst, int srcDstStep,
                       int width, int height, int scaleFactor);
/// srcDst = scaled(max(srcDst - src, 0)).
int primSub_8u_C1IRSfs(const std::uint8_t* src, int srcStep, std::uint8_t* srcDst, int srcDstStep,
                       int width, int height, int scaleFactor);
/// srcDst = scaled(srcDst - src).
int primSub_16s_C1IRSfs(const std::int16_t* src, int srcStep, std::int16_t* srcDst, int srcDstStep,
                        int width, int height, int scaleFactor);
/// srcDst = scaled(max(srcDst - value, 0)); value 0 with scale factor 0 touches nothing.
int primSubC_8u_C1IRSfs(std::uint8_t value, std::uint8_t* srcDst, int srcDstStep, int width,
                        int height, int scaleFactor);
/// srcDst = scaled(srcDst + value); value 0 with scale factor 0 touches nothing.
int primAddC_16s_C1IRSfs(std::int16_t value, std::int16_t* srcDst, int srcDstStep, int width,
                         int height, int scaleFactor);

/// srcDst = |srcDst|; -32768 gives 32767.
int primAbs_16s_C1IR(std::int16_t* srcDst, int srcDstStep, int width, int height);
/// dst = |src1 - src2|.
int primAbsDiff_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                       int src2Step, std::uint8_t* dst, int dstStep, int width, int height);
/// srcDst = srcDst + src1 * src2, the product exact, the sum rounded to float.
///
/// @return kStatusBadStep last, for a step shorter than the row or a destination step that is not a
///   multiple of 4
int primAddProduct_8u32f_C1IR(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                              int src2Step, float* srcDst, int srcDstStep, int width, int height);

}  // namespace vx::prim
