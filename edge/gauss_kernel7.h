#pragma once

namespace vx {

constexpr int kGaussTaps = 7;
constexpr int kGaussReach = 3;  ///< pixels on each side of the centre

/// The seven taps, symmetric, of the tabulated Gaussian for a sigma in pixels: row
/// trunc((sigma - 0.54) * 10) of a table in steps of 0.1 from 0.5 to 2.4, limited to its ends; so
/// the kernel's sigma lies 0.04 to 0.14 below the one asked for. NaN takes the first row.
///
/// The taps carry four decimals and their sums differ from 1 by up to 0.0002.
const float* gaussKernel7(float sigma);

}  // namespace vx
