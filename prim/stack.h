#pragma once

// The collaborative filter of one stack: `depth` square blocks of `size` samples a side, one behind
// the other, are transformed in three dimensions, their coefficients are multiplied by weights, and
// they are transformed back. Blocks have 8, 12 or 16 samples a side, stacks 1, 2, 4, 8, 12 or 16
// blocks. For all of them:
//
// - `blocks` are the addresses of the first samples of each block, the rows of all of them `step`
//   bytes apart.
// - Single precision at every step, in one order: every body gives the same bits. A coefficient is
//   off by at most a few roundings of the largest one.
// - Errors: kStatusNullPtr for any null pointer, kStatusBadSize for another size or depth.
//
// After K. Dabov, A. Foi, V. Katkovnik, K. Egiazarian, "Image denoising by sparse 3-D
// transform-domain collaborative filtering", 2007.

#include "prim/types.h"

namespace vx::prim {

inline constexpr int kStackMostSize = 16;
inline constexpr int kStackMostDepth = 16;

/// The weight of a coefficient by its magnitude m, never below `floor`.
struct StackRule {
  bool wiener;      ///< m^2 / (m^2 + threshold^2), else (m - threshold) * gain, at most 1
  float threshold;  ///< magnitude of the noise
  float gain;       ///< rise of the weight above the threshold
  float floor;      ///< what 0 / 0 gives too
};

/// Floats that hold the weights of a stack.
constexpr int stackWeights(int size, int depth) {
  const int rows = depth * size / 2;  // of complex coefficients, some of them padding
  return (rows + 15) / 16 * 16 * size + 4 * (size / 2 + 1);
}

/// Computes the weights of a stack, and with `dst` filters the stack by them.
///
/// @param weights  stackWeights() floats, for primStackFilter_32f; their order is its secret
/// @param sum      of the weights of the coefficients (kx, ky, kz) with kx up to size / 2, the half
///   that a transform of real samples stores
/// @param dst      the filtered blocks, rows and blocks one behind the other; null for the weights
///   alone
int primStackWeigh_32f(const float* const* blocks, int step, int size, int depth,
                       const StackRule* rule, float* weights, float* sum, float* dst);

/// Filters a stack by the weights that another one of the same size and depth was given.
int primStackFilter_32f(const float* const* blocks, int step, int size, int depth,
                        const float* weights, float* dst);

/// Adds a filtered stack to planes of sums, at the places of its blocks:
/// total += src * window, and weight += window.
///
/// @param src            blocks as the filter leaves them, `size` by `size` each
/// @param window         weight of each sample of a block
/// @param totals,weights  for each block the address in the plane that its first sample is added
///   to; rows are `step` bytes apart. Blocks may overlap, the planes do not. Without `weights` only
///   the totals grow
int primStackAdd_32f(const float* src, const float* window, int size, int depth,
                     float* const* totals, float* const* weights, int step);

/// mean = the mean absolute difference of two blocks, of 8, 12 or 16 samples a side.
int primStackDifference_32f(const float* src1, int src1Step, const float* src2, int src2Step,
                            int size, float* mean);

}  // namespace vx::prim
