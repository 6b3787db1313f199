#pragma once

#include "frame/aligned_array.h"
#include "frame/plane_view.h"
#include "prim/stack.h"
#include "vxenhlib/nonlocal/stack_selection.h"

namespace vx {

/// The most blocks of a stack that a number of matches fills: 1, 2, 4, 8, 12 or 16. The matches
/// beyond it are left out.
int stackDepth(int matches);

/// What decides about the weights.
struct StackSettings {
  float strength = 1.25f;      ///< multiplies the threshold
  float kneeRatio = 3.0f;      ///< the weight reaches 1 at that many thresholds
  float noise = 0.005f;        ///< upper limit of the local noise value
  float deviationGain = 0.0f;  ///< scales the local deviation
  float floorWeight = 0.1f;    ///< no weight goes below
};

/// A Hamming window across a block, both ways: blocks fade out where they meet others.
class BlockWindow {
 public:
  /// `size` by `size` values, rows one behind the other; null when memory is short.
  explicit BlockWindow(int size);
  const float* data() const { return values_.data(); }
  int size() const { return size_; }

 private:
  AlignedArray<float> values_;
  int size_;
};

/// Filters stacks of similar blocks: a stack is transformed in three dimensions, its coefficients
/// are weighted, and it is transformed back (prim/stack.h). What similar blocks have in common
/// gathers in few large coefficients, noise spreads over all.
///
/// The stack of `source` at the matches, or with a pilot that of the pilot, gives the weights. With
/// d the mean absolute difference that tells the local noise, n samples in the stack and t =
/// sqrt(n)
/// * min(noise, d * deviationGain + 0.0001) * strength, a coefficient of magnitude |X| gets
///
///     without a pilot   (|X| - t) / ((kneeRatio - 1) * t), from floorWeight to 1;
///                       d = 0.71 * |source at match 0 - source at match 1|: both are noisy
///     with a pilot      |X|^2 / (|X|^2 + t^2), from floorWeight on;
///                       d = |source - pilot| at match 0
///
/// One object serves one thread.
class StackFilter {
 public:
  explicit StackFilter(const BlockWindow& window) : window_(window) {}

  /// @param planes       the weights serve all of them
  /// @param pilot        empty, or the picture already filtered
  /// @param depth        of stackDepth()
  /// @param blockWeight  the window times depth / (sum of the weights + 1), so that a cleanly
  ///   filtered stack counts for more
  /// @param blocks       the filtered blocks, plane by plane, `planeFloats` apart
  void filter(const PlaneView& source, const PlaneView& pilot, const PlaneView* planes,
              int planeCount, const StackMatches& matches, int depth, const StackSettings& settings,
              float* blockWeight, float* blocks, std::ptrdiff_t planeFloats);

 private:
  prim::StackRule ruleOf(const PlaneView& source, const PlaneView& pilot,
                         const StackMatches& matches, int depth,
                         const StackSettings& settings) const;

  const BlockWindow& window_;
  alignas(64) float weights_[prim::stackWeights(prim::kStackMostSize, prim::kStackMostDepth)];
};

}  // namespace vx
