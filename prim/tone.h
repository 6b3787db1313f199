#pragma once

// Steps of the tone stage that would otherwise be several passes over the same row. Each does what
// the operations in its formula do one after the other, rounded to single precision after each, so
// that it may take their place; infinities and NaN pass as the processor makes them. For all of
// them:
//
// - A destination is one of the sources itself or overlaps none.
// - Errors: kStatusNullPtr for any null pointer, kStatusBadSize for a length below 1.

#include "prim/types.h"

namespace vx::prim {

/// srcDst limited to `low` from below, then to `high` from above; NaN becomes `low`.
int primvClip_32f_I(float low, float high, float* srcDst, int length);

/// Turns hues in 0 to 1 by `shift`: with v = srcDst + shift, a positive shift gives v > 1 ? v - 1 :
/// v, any other v < 0 ? v + 1 : v.
int primvTurnHue_32f_I(float shift, float* srcDst, int length);

/// dst = blur + (src - blur) * amount.
int primvSharpen_32f(float amount, const float* src, const float* blur, float* dst, int length);

/// dst = |src - base|.
int primvDetailSize_32f(const float* src, const float* base, float* dst, int length);

/// Takes the detail on top of a base apart: with d = src - base, size = |d| + least, and
/// sign = d / size.
int primvDetailPart_32f(float least, const float* src, const float* base, float* sign, float* size,
                        int length);

/// dst = base + (sign * size) * gain.
int primvDetailJoin_32f(float gain, const float* sign, const float* size, const float* base,
                        float* dst, int length);

}  // namespace vx::prim
