#pragma once

#include <cstdint>

#include "vxenhlib/grid/grid_history.h"
#include "vxenhlib/grid/grid_reader.h"
#include "vxenhlib/grid/grid_shape.h"
#include "vxenhlib/grid/sliding_blur.h"
#include "vxenhlib/vxrc.h"

namespace vx {

/// An edge-preserving smoother for one plane. The plane is splatted into a coarse grid over x, y
/// and the value of a guide, the grid is blurred by a fixed kernel and normalised, and each pixel
/// is read back by trilinear interpolation at its place and guide value. The guide decides in which
/// cell a pixel falls; it may be the plane itself.
///
/// Method: J. Chen, S. Paris, F. Durand, "Real-time edge-aware image processing with the bilateral
/// grid", 2007.
///
/// Cost: one pass over the pixels to splat and one to read; the grid work is proportional to the
/// pixels over spatialSample squared. A guide value exactly at rangeMax with 1 / rangeSample whole
/// falls into the layer of cells that the blur overwrites: a flat plane of exactly 1.0 does not
/// come back, one below does.
///
/// Belongs to one thread, which splats, blurs the grid row by row while it grows, and opens the
/// parallel loop of the read.
class BilateralFilter {
 public:
  int gridWidth = 0;   ///< cells along x, padding included; 0 without a grid
  int gridHeight = 0;  ///< cells along y
  int gridDepth = 0;   ///< cells along the value, at most 260: bins end at 255
  int imageWidth = 0;
  int imageHeight = 0;
  float rangeMin = 0.0f;  ///< guide values are clipped to rangeMin..rangeMax
  float rangeMax = 0.0f;
  int spatialSample = 0;     ///< pixels per cell along x and along y
  float rangeSample = 0.0f;  ///< guide values per cell
  int temporal = 0;          ///< nonzero: the grid is blended with that of the last call
  int firstFrame = 1;        ///< nonzero until the first filter() after setupGrid() has finished
  int bandHeight = 0;        ///< rows that filter() takes at a time; 0: by the width

  BilateralFilter() = default;
  BilateralFilter(const BilateralFilter&) = delete;
  BilateralFilter& operator=(const BilateralFilter&) = delete;

  /// Fixes the geometry. Memory is kept when the grid keeps its size and the plane its own.
  ///
  /// @return kVxrcBadSetup for a spatialSample below 2, with nothing changed; kVxrcNoMemory when
  ///   the grid cannot be had, also for a range without cells: the sizes are 0 and filter() answers
  ///   kVxrcSizeMismatch
  int setupGrid(int width, int height, float rangeMin, float rangeMax, int spatialSample,
                float rangeSample, int temporal);

  /// Replaces `data` by its smoothed version. With `temporal`, temporalBlend (0..1) is the share of
  /// the grid that the last call left.
  ///
  /// @return kVxrcSizeMismatch when the planes differ in size from each other or from the set-up,
  ///   kVxrcNoMemory; nothing is changed then
  int filter(GIMG<float>& data, GIMG<float>& guide, float temporalBlend);

  /// Frees all memory. The next setupGrid() allocates afresh.
  void releaseGrid();

  // The steps of filter(), for stages that do other work on the same rows while they are in cache:
  // startSplat(), splatRows() from the top row down, endSplat(), then readRows() for any rows.

  /// True when a splat may follow.
  bool startSplat();
  /// Adds rows y to y + values.height - 1 of the plane to the grid. The guide has the same size.
  void splatRows(int y, const PlaneView& values, const PlaneView& guide);
  /// Completes the grid, which is blurred and normalised by then.
  void endSplat(float temporalBlend);
  /// out = the result for row `y`; `out` may be `guide`.
  void readRows(int y, const PlaneView& guide, const PlaneView& out, int slot) {
    reader_.readRows(y, guide, out, slot);
  }
  /// Ends a filter() made of steps.
  void endRead() { firstFrame = 0; }

 private:
  struct Sums {
    float value;
    float weight;
  };

  GridShape shape() const { return {gridWidth, gridHeight, gridDepth}; }
  bool allocate();
  void flushGridRow();

  AlignedArray<float> valueGrid_;  // normalised
  GridHistory history_;
  AlignedArray<Sums> rowSums_;  // of the grid row being splatted, and of what bins reach beyond it
  AlignedArray<std::uint8_t> bins_;
  SlidingBlur blur_;
  prim::GridAxis splatAxis_{};
  bool columnsApart_ = false;
  int gridRow_ = 0;
  GridReader reader_;
};

}  // namespace vx
