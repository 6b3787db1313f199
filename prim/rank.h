#pragma once

#include "prim/filter.h"

namespace vx::prim {

// Medians, and the extremes of 3x3 neighbourhoods.
//
// As with the convolutions, width and height name the region that is written, the source pixels
// around it that the mask covers must exist, and source and destination must not overlap. A median
// of n elements is the one of rank n / 2, counted from 0, in ascending order.

/// Takes the median of a rectangle of maskWidth x maskHeight pixels.
///
/// The window of (x, y) begins at (x - anchorX, y - anchorY). The masks 3x3, 5x5, 3x1, 5x1, 1x3,
/// 1x5 run as networks of minima and maxima, 1x1 copies; any other keeps the counts of a sliding
/// window (Huang, Yang and Tang, 1979, A fast two-dimensional median filtering algorithm).
/// @return -8, -6, -14; -33 for a mask side that is not positive and odd; -34 for an anchor outside
/// the mask
int primFilterMedian_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst, int dstStep,
                            int width, int height, int maskWidth, int maskHeight, int anchorX,
                            int anchorY);

/// Takes the median of a cross: five pixels for kMask33 (the centre and its four neighbours), nine
/// for kMask55 (arms of length two).
///
/// @return -8, -6, -14; -33 for another mask
int primFilterMedianCross_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                 int dstStep, int width, int height, int mask);
int primFilterMedianCross_16s_C1R(const std::int16_t* src, int srcStep, std::int16_t* dst,
                                  int dstStep, int width, int height, int mask);

/// Takes the median of three (kMask13) or five (kMask15) pixels of a column, centred.
///
/// @return -8, -6, -14; -33 for another mask
int primFilterMedianVert_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                int dstStep, int width, int height, int mask);

/// Takes the median of three (kMask31) or five (kMask51) pixels of a row, centred.
///
/// @return -8, -6, -14; -33 for another mask
int primFilterMedianHoriz_8u_C1R(const std::uint8_t* src, int srcStep, std::uint8_t* dst,
                                 int dstStep, int width, int height, int mask);

/// Takes the largest value of the 3x3 neighbourhood.
///
/// The extreme m of each column from top to bottom, then of the three columns from left to right,
/// by m = m < v ? v : m. A NaN (or zero of the other sign) therefore stays where it comes first and
/// is passed over elsewhere.
/// @param srcStep,dstStep  at least 4 * width + 8, 4 * width
/// @return -8, -6; -14 for a step below 1; -37 for one too small
int primDilate3x3_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                          int height);

/// The same with the smallest value, by m = v < m ? v : m.
int primErode3x3_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width,
                         int height);

}  // namespace vx::prim
