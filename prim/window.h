#pragma once

// Multiplication by window functions, in place. Windows have at least three elements.

#include "prim/types.h"

namespace vx::prim {

/// srcDst = srcDst * wx(x) * wy(y) with Bartlett windows across the width and the height.
///
/// A Bartlett window of length n is 0 at both ends and rises in steps of 2 / (n - 1) from both to
/// the middle, where an odd length has the value 1. Its values are rounded to float, and so is each
/// of the two products.
/// @return kStatusNullPtr, kStatusBadSize for a width or height below 3, kStatusBadStep for a step
///   below 1, kStatusNoMemory
int primWinBartlett2D_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);

/// srcDst[i] = srcDst[i] * (0.54 - 0.46 cos(2 pi i / (length - 1))), the Hamming window.
///
/// The cosine comes from one rotation per element, in double from both ends toward the middle; only
/// the product is rounded to float.
/// @return kStatusNullPtr, kStatusBadSize for a length below 3
int primvWinHamming_32f_I(float* srcDst, int length);

}  // namespace vx::prim
