#pragma once

#include <cstdint>

#include "vxenhlib/grid/bilateral_grid.h"

namespace vx {

/// Equalises a plane locally: each block of pixels gets a clipped histogram in a grid over x, y and
/// value, the histograms are blurred across blocks and bins and integrated into curves, and each
/// pixel reads its new value by trilinear interpolation at its place and own value. The curves thus
/// change smoothly from place to place.
///
/// Method: the clip limit is that of S. Pizer and others, "Adaptive histogram equalization and its
/// variations", 1987; the grid that of J. Chen, S. Paris, F. Durand, "Real-time edge-aware image
/// processing with the bilateral grid", 2007.
///
/// Values belong in rangeMin..rangeMax. Those above are counted in the last bin, but read in the
/// curve of the next column; callers clip first.
///
/// Belongs to one thread, which opens the parallel loops; the counting stays on it.
class BilateralLocalHistEq : public BilateralGrid {
 public:
  float clipScale = 1.0f;     ///< share of the clip limit, of the last equalize()
  float peakGain = 0.0f;      ///< above 0: bins near peakPosition count more; below 0: less
  float peakPosition = 0.5f;  ///< centre of the emphasis, as a share of gridDepth
  float outLow = 0.05f;       ///< lowest output of a curve
  float outScale = 0.95f;     ///< scale of a curve above outLow
  float peakWidth = 0.3f;     ///< width of the emphasis, as a share of the way to the range's end
  float clipFactor = 12.0f;   ///< clip limit in multiples of the mean bin

  BilateralLocalHistEq() = default;

  /// Fixes the geometry and the form of the curves. Memory is kept as in BilateralFilter.
  ///
  /// @return kVxrcBadSetup for a spatialSample below 2, with nothing changed; kVxrcNoMemory when
  ///   the grid cannot be allocated: the sizes are 0 and equalize() answers kVxrcSizeMismatch
  int setupGrid(int width, int height, float rangeMin, float rangeMax, int spatialSample,
                float rangeSample, float outLow, float outScale, float peakGain, float peakPosition,
                int temporal);

  /// Replaces `image` by its equalised version.
  ///
  /// @param strength       0 leaves the plane almost as it was, 1 equalises fully
  /// @param temporalBlend  with `temporal`, the share (0..1) of the curves that the last call left
  /// @param newClipScale   0 makes every histogram flat, 1 cuts off nothing above clipFactor means
  /// @param rows           of a band; 0: by the width. No result depends on it
  /// @return kVxrcSizeMismatch when the size is not that of the set-up, kVxrcNoMemory; nothing is
  ///   changed then
  int equalize(GIMG<float>& image, float strength, float temporalBlend, float newClipScale,
               int rows = 0);

  /// Frees all memory. The next setupGrid() allocates afresh.
  void releaseGrid();

  // The steps of equalize(), for stages that do other work on the same rows while they are in
  // cache.

  /// False without a grid, or when memory is short.
  bool begin();
  /// Counts rows y to y + image.height - 1.
  void collect(int y, const PlaneView& image);
  /// Makes the curves.
  void process(float strength, float temporalBlend, float newClipScale);

 private:
  bool allocate();
  void releaseArrays();
  void flushGridRow();
  void fillEmphasis();

  AlignedArray<float> histGrid_;
  AlignedArray<float> scratchGrid_;
  AlignedArray<std::uint32_t> rowCounts_;  // of the grid row being counted
  AlignedArray<std::uint8_t> bins_;
  AlignedArray<float> emphasis_;
  prim::GridAxis countAxis_{};
  int gridRow_ = 0;
};

}  // namespace vx
