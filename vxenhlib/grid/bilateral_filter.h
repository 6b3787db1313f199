#pragma once

#include <cstdint>

#include "vxenhlib/grid/bilateral_grid.h"
#include "vxenhlib/grid/sliding_blur.h"

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
/// Guide values are clipped to rangeMin..rangeMax, and gridDepth is at most 260: bins end at 255.
///
/// Belongs to one thread, which splats, blurs the grid row by row while it grows, and opens the
/// parallel loop of the read.
class BilateralFilter : public BilateralGrid {
 public:
  BilateralFilter() = default;

  /// Fixes the geometry. Memory is kept when the grid keeps its size and the plane its own.
  ///
  /// @return kVxrcBadSetup for a spatialSample below 2, with nothing changed; kVxrcNoMemory when
  ///   the grid cannot be allocated, also for a range without cells: the sizes are 0 and filter()
  ///   answers kVxrcSizeMismatch
  int setupGrid(int width, int height, float rangeMin, float rangeMax, int spatialSample,
                float rangeSample, int temporal);

  /// Replaces `data` by its smoothed version. With `temporal`, temporalBlend (0..1) is the share of
  /// the grid that the last call left.
  ///
  /// @param rows   of a band; 0: by the width. No result depends on it
  /// @return kVxrcSizeMismatch when the planes differ in size from each other or from the set-up,
  ///   kVxrcNoMemory; nothing is changed then
  int filter(GIMG<float>& data, GIMG<float>& guide, float temporalBlend, int rows = 0);

  /// Frees all memory. The next setupGrid() allocates afresh.
  void releaseGrid();

  // The steps of filter(), for stages that do other work on the same rows while they are in cache.

  /// False without a grid, or when memory is short.
  bool begin();
  /// Adds rows y to y + values.height - 1 of the plane to the grid. The guide has the same size.
  void collect(int y, const PlaneView& values, const PlaneView& guide);
  /// Completes the grid, which is blurred and normalised by then.
  void process(float temporalBlend);

 private:
  struct Sums {
    float value;
    float weight;
  };

  bool allocate();
  void releaseArrays();
  void flushGridRow();

  AlignedArray<float> valueGrid_;  // normalised
  AlignedArray<Sums> rowSums_;  // of the grid row being splatted, and of what bins reach beyond it
  AlignedArray<std::uint8_t> bins_;
  SlidingBlur blur_;
  prim::GridAxis splatAxis_{};
  bool columnsApart_ = false;
  int gridRow_ = 0;
};

}  // namespace vx
