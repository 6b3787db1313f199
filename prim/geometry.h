#pragma once

#include "prim/types.h"

namespace vx::prim {

/// Codes of primResize_32f_C1R.
enum ResizeMethod : int {
  kResizeNearest = 1,
  kResizeLinear = 2,
  kResizeCubic = 4,
  kResizeArea = 8,  ///< both factors at most 1
  kResizeLanczos = 16
};

/// Transposes a square image in place, in blocks of 16 by 16.
///
/// @return -8; -6 also when width and height differ; -14
int primTranspose_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);

/// Resamples a region of the source into the whole destination.
///
/// The region is the rectangle roiX, roiY, roiWidth, roiHeight as far as it lies in the image; no
/// pixel outside it is read, and n samples below are its width or height. Pixel d of the
/// destination lies at p = (d + 0.5) / factor - 0.5, limited to 0..n - 1 (in double), so a
/// destination larger than the factor asks for repeats the edge. Separable, in single precision:
/// the source rows that are needed along x, then along y. An axis with factor 1 is copied to the
/// bit.
///
/// With i the integer part of p:
/// - kResizeNearest: the sample at the integer part of p + 0.5, at most n - 1.
/// - kResizeLinear: p0 + t * (p1 - p0) over the samples at i and i + 1.
/// - kResizeCubic: the cubic through p0..p3 at i - 1..i + 2, with t = p - i: d1 = p1 - p0,
///   d2 = (p2 - p1) - d1, d3 = (p3 + ((p1 - p2) - p2)) - d2, and
///   p0 + (t + 1) * d1 + (t * (t + 1) * 0.5) * d2 + ((t - 1) * (t * (t + 1) * 0.5) / 3) * d3.
/// - kResizeLanczos: six samples at i - 2..i + 3 weighted by sinc(x) * sinc(x / 3) of their
///   distance x, divided by the sum of the weights (Duchon, 1979, Lanczos filtering in one and two
///   dimensions).
/// - kResizeArea: the mean over the stretch d / factor .. (d + 1) / factor, its end samples
///   weighted by the part that they have in it.
/// A window that would reach outside the region is moved inside, and t with it (from -1 to 2 in the
/// cubic); a Lanczos sample that is then 3 or more away weighs nothing.
/// A region with a side below 8 turns kResizeLanczos into kResizeCubic, below 4 kResizeCubic into
/// kResizeLinear, below 2 every code into kResizeNearest. Source and destination must not overlap.
///
/// @param srcWidth,srcHeight  the image, whose first pixel src addresses
/// @param srcStep,dstStep     at least 4 * srcWidth, 4 * dstWidth
/// @param xFactor,yFactor     destination size over source size
/// @return -8; -6 also for a region that misses the image; -14; -23 for a factor that is not finite
/// and above 0; -22 for another code, or kResizeArea with a factor above 1
int primResize_32f_C1R(const float* src, int srcWidth, int srcHeight, int srcStep, int roiX,
                       int roiY, int roiWidth, int roiHeight, float* dst, int dstStep, int dstWidth,
                       int dstHeight, double xFactor, double yFactor, int interpolation);

}  // namespace vx::prim
