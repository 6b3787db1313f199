#pragma once

#include <memory>

#include "frame/aligned_array.h"
#include "frame/img.h"
#include "frame/plane_view.h"
#include "vxenhlib/nonlocal/fft_plan.h"
#include "vxenhlib/nonlocal/stack_selection.h"

namespace vx {

/// The most blocks of a stack that a number of matches fills: 1, 2, 4, 8, 12 or 16. A stack has a
/// depth for which there is a plan; the matches beyond it are left out.
int stackDepth(int matches);

/// Sizes of the stacks of one filter, its transforms and its window.
class StackShape {
 public:
  static constexpr int kMostDepth = 16;

  int blockWidth;
  int blockHeight;
  int stackLimit;      ///< most blocks, 1 to 16
  int blockRowFloats;  ///< from one row of a block to the next
  int sliceFloats;     ///< from one block to the next
  int stackFloats;     ///< of a stack of stackLimit blocks

  /// A Hamming window across the block, both ways: blocks fade out where they meet others.
  AlignedArray<float> window;  ///< rows blockWidth apart

  StackShape(int width, int height, int limit);

  /// False when plans or memory could not be had.
  bool ready() const;
  const FftPlan& plan(int depth) const;

 private:
  static constexpr int kDepths = 6;
  FftPlan plans_[kDepths];
};

/// What decides about the weights.
struct StackSettings {
  float strength = 1.25f;      ///< multiplies the threshold
  float kneeRatio = 3.0f;      ///< the weight reaches 1 at that many thresholds
  float noise = 0.005f;        ///< upper limit of the local noise value
  float deviationGain = 0.0f;  ///< scales the local deviation
  float floorWeight = 0.1f;    ///< no weight goes below
};

/// Filters stacks of similar blocks: a stack is transformed in three dimensions, its coefficients
/// are weighted, and it is transformed back. What similar blocks have in common gathers in few
/// large coefficients, noise spreads over all. One object serves one thread.
///
/// After K. Dabov, A. Foi, V. Katkovnik, K. Egiazarian, "Image denoising by sparse 3-D
/// transform-domain collaborative filtering", 2007.
class StackFilter {
 public:
  explicit StackFilter(const StackShape& shape) : shape_(shape) {}

  /// False when memory is short.
  bool reserve();

  /// Computes the weights of the coefficients from the stack at the matches.
  ///
  /// Without a pilot a coefficient of magnitude |X| of `source` gets (|X| - t) / ((kneeRatio - 1) *
  /// t), from floorWeight to 1, where t is the magnitude that noise of the local sigma reaches,
  /// times the strength. With a pilot, of magnitude P, it gets the Wiener weight P^2 / (P^2 + t^2).
  /// The local sigma is what source and match 1 (or source and pilot) differ by, at most the noise.
  ///
  /// @param depth        of stackDepth()
  /// @param blockWeight  the window times depth / (sum of the weights + 1), so that a cleanly
  ///   filtered stack counts for more; rows blockWidth apart
  void weigh(const PlaneView& source, const PlaneView* pilot, const StackMatches& matches,
             int depth, const StackSettings& settings, float* blockWeight);

  /// Applies the weights to the stack of a plane at the same matches.
  ///
  /// @param fromSource  the plane is the `source` of the weigh() just before, which had no pilot:
  ///   its spectrum is still there
  /// @param blocks  the filtered blocks times blockWeight, sliceFloats and blockRowFloats apart
  void filter(const PlaneView& plane, const StackMatches& matches, bool fromSource,
              const float* blockWeight, float* blocks);

 private:
  void load(const PlaneView& plane, const StackMatches& matches);
  float meanDifference(const PlaneView& a, int ax, int ay, const PlaneView& b, int bx, int by);
  void formWeights(bool wiener, float threshold, const StackSettings& settings);

  const StackShape& shape_;
  int depth_ = 0;
  int coefficients_ = 0;
  FftBuffer stack_;
  AlignedArray<float> weights_;
  AlignedArray<float> difference_;
};

}  // namespace vx
