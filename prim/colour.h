#pragma once

// Colour of one pixel from the three channels of one pixel. For all of them:
//
// - Source and destination may be the same image with the same step; otherwise they do not overlap.
// - Nothing outside the rectangle is read or written.
// - All variants give the same bits on every input, infinities and NaN included.
// - Errors: kStatusNullPtr, then kStatusBadSize for a width or height below 1.

#include "prim/types.h"

namespace vx::prim {

/// Red, green and blue in 0 to 1 to hue (a turn is 1), lightness and saturation, interleaved both.
///
/// With M the largest and m the smallest of the three and d = M - m: L = 0.5 * (M + m). If
/// d <= 1.1920929e-7, one step of a float at 1, the pixel is grey: H = S = 0. Otherwise
/// S = d / (M + m) for L <= 0.5, else d / (2 - M - m); H is (G - B) * 60 / d degrees when R is the
/// largest, else (B - R) * 60 / d + 120 when G is, else (R - G) * 60 / d + 240, plus 360 when
/// negative, and divided by 360. Double precision in the order printed, rounded to float once.
///
/// Values outside 0 to 1 follow the same formulas. A NaN in green or blue is never the largest or
/// smallest; one in red is always both. Steps are not checked.
/// Method: G. H. Joblove and D. Greenberg, Color Spaces for Computer Graphics, 1978 (the double
/// hexcone).
int primRGBToHLS_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height);

/// Hue, lightness and saturation back to red, green and blue.
///
/// S = 0 gives L three times, whatever H is. Otherwise h = H * 360, m2 = L * (1 + S) for L <= 0.5,
/// else (L + S) - L * S, m1 = 2 * L - m2, and with
/// f(t) = m1 + (m2 - m1) * t / 60 for t < 60, m2 for t < 180, m1 + (m2 - m1) * (240 - t) / 60 for
/// t < 240, m1 above: R = f(h + 120), less 360 when 360 or more, G = f(h), B = f(h - 120), plus 360
/// when negative. Single precision at every step.
///
/// One turn is wrapped; a hue outside 0 to 1 follows the formulas from there. A NaN in H counts as
/// a t above all limits; of two NaN in L and S the one in L comes out. Steps are not checked.
int primHLSToRGB_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height);

/// primRGBToHLS_32f_C3R and primHLSToRGB_32f_C3R, bit for bit, with a plane for each of hue,
/// lightness and saturation, as stages keep them. No two images overlap.
int primRGBToHLS_32f_C3P3R(const float* src, int srcStep, float* hue, int hueStep, float* lightness,
                           int lightnessStep, float* saturation, int saturationStep, int width,
                           int height);
int primHLSToRGB_32f_P3C3R(const float* hue, int hueStep, const float* lightness, int lightnessStep,
                           const float* saturation, int saturationStep, float* dst, int dstStep,
                           int width, int height);

/// Y, U and V of analogue television (ITU-R BT.601 weights), as chains of products that run from
/// plane to plane, every step rounded to single precision, nothing clipped:
///
///     r' = 0.299 R    Y = g' + r'           with  g' = 0.587 G          and likewise for B with
///                     U = g'' + -0.147 R          g'' = -0.49233389 g'  0.114, 3.8245614 and
///                     V = g''' + 0.615 R          g''' = 1.7820069 g''  -0.22935781
///
/// No two images overlap.
int primRGBToYUV_32f_C3P3R(const float* src, int srcStep, float* y, int yStep, float* u, int uStep,
                           float* v, int vStep, int width, int height);
/// The way back, not an exact inverse: R = Y + 1.14 V, G = Y + -0.394 (U + 1.4746193 V),
/// B = Y + 2.032 U.
int primYUVToRGB_32f_P3C3R(const float* y, int yStep, const float* u, int uStep, const float* v,
                           int vStep, float* dst, int dstStep, int width, int height);

/// plane r = twist[r][0] * p0 + twist[r][1] * p1 + twist[r][2] * p2 + twist[r][3], in place on
/// three separate planes with one step, p0 to p2 being the pixel's values before the call.
///
/// Single precision from left to right; any NaN comes out as the positive quiet one. The planes do
/// not overlap. Also kStatusNullPtr for a plane or the matrix, kStatusBadStep for a step below 1.
int primColorTwist_32f_P3IR(float* const* planes, int step, int width, int height,
                            const float (*twist)[4]);

}  // namespace vx::prim
