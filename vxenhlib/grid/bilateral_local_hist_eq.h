#pragma once

#include <cstdint>

#include "vxenhlib/grid/grid_history.h"
#include "vxenhlib/grid/grid_reader.h"
#include "vxenhlib/grid/grid_shape.h"
#include "vxenhlib/vxrc.h"

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
class BilateralLocalHistEq {
 public:
  int gridWidth = 0;   ///< cells along x, padding included; 0 without a grid
  int gridHeight = 0;  ///< cells along y
  int gridDepth = 0;   ///< bins of a histogram, padding included
  int imageWidth = 0;
  int imageHeight = 0;
  float rangeMin = 0.0f;
  float rangeMax = 0.0f;
  int spatialSample = 0;      ///< pixels per cell along x and along y
  float rangeSample = 0.0f;   ///< values per bin
  float clipScale = 1.0f;     ///< share of the clip limit, of the last equalize()
  float peakGain = 0.0f;      ///< above 0: bins near peakPosition count more; below 0: less
  float peakPosition = 0.5f;  ///< centre of the emphasis, as a share of gridDepth
  float outLow = 0.05f;       ///< lowest output of a curve
  float outScale = 0.95f;     ///< scale of a curve above outLow
  float peakWidth = 0.3f;     ///< width of the emphasis, as a share of the way to the range's end
  float clipFactor = 12.0f;   ///< clip limit in multiples of the mean bin
  int temporal = 0;           ///< nonzero: the curves are blended with those of the last call
  int firstFrame = 1;         ///< nonzero until the first equalize() after setupGrid() has finished
  int bandHeight = 0;         ///< rows that equalize() takes at a time; 0: by the width

  BilateralLocalHistEq() = default;
  BilateralLocalHistEq(const BilateralLocalHistEq&) = delete;
  BilateralLocalHistEq& operator=(const BilateralLocalHistEq&) = delete;

  /// Fixes the geometry and the form of the curves. Memory is kept as in BilateralFilter.
  ///
  /// @return kVxrcBadSetup for a spatialSample below 2, with nothing changed; kVxrcNoMemory when
  ///   the grid cannot be had: the sizes are 0 and equalize() answers kVxrcSizeMismatch
  int setupGrid(int width, int height, float rangeMin, float rangeMax, int spatialSample,
                float rangeSample, float outLow, float outScale, float peakGain, float peakPosition,
                int temporal);

  /// Replaces `image` by its equalised version.
  ///
  /// @param strength       0 leaves the plane almost as it was, 1 equalises fully
  /// @param temporalBlend  with `temporal`, the share (0..1) of the curves that the last call left
  /// @param newClipScale   0 makes every histogram flat, 1 cuts off nothing above clipFactor means
  /// @return kVxrcSizeMismatch when the size is not that of the set-up, kVxrcNoMemory; nothing is
  ///   changed then
  int equalize(GIMG<float>& image, float strength, float temporalBlend, float newClipScale);

  /// Frees all memory. The next setupGrid() allocates afresh.
  void releaseGrid();

  // The steps of equalize(), for stages that do other work on the same rows while they are in
  // cache: startCount(), countRows() from the top row down, endCount(), then readRows() for any
  // rows.

  /// True when a count may follow.
  bool startCount();
  /// Counts rows y to y + image.height - 1.
  void countRows(int y, const PlaneView& image);
  /// Makes the curves.
  void endCount(float strength, float temporalBlend, float newClipScale);
  /// out = the result for row `y`; `out` may be `image`.
  void readRows(int y, const PlaneView& image, const PlaneView& out, int slot) {
    reader_.readRows(y, image, out, slot);
  }
  /// Ends an equalize() made of steps.
  void endRead() { firstFrame = 0; }

 private:
  GridShape shape() const { return {gridWidth, gridHeight, gridDepth}; }
  bool allocate();
  void flushGridRow();
  void fillEmphasis();

  AlignedArray<float> histGrid_;
  AlignedArray<float> scratchGrid_;
  GridHistory history_;
  AlignedArray<std::uint32_t> rowCounts_;  // of the grid row being counted
  AlignedArray<std::uint8_t> bins_;
  AlignedArray<float> emphasis_;
  prim::GridAxis countAxis_{};
  int gridRow_ = 0;
  GridReader reader_;
};

}  // namespace vx
