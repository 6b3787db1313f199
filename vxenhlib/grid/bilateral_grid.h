#pragma once

#include "frame/step_order.h"
#include "vxenhlib/grid/grid_history.h"
#include "vxenhlib/grid/grid_reader.h"
#include "vxenhlib/grid/grid_shape.h"
#include "vxenhlib/vxrc.h"

namespace vx {

/// What the two classes over bilateral grids share: the geometry, the history of grids that are
/// blended from call to call, and the read of the finished grid. Both work in the steps of
/// StepOrder.
class BilateralGrid {
 public:
  int gridWidth = 0;   ///< cells along x, padding included; 0 without a grid
  int gridHeight = 0;  ///< cells along y
  int gridDepth = 0;   ///< cells along the value
  int imageWidth = 0;
  int imageHeight = 0;
  float rangeMin = 0.0f;
  float rangeMax = 0.0f;
  int spatialSample = 0;     ///< pixels per cell along x and along y
  float rangeSample = 0.0f;  ///< values per cell
  int temporal = 0;          ///< nonzero: the grid is blended with that of the last call
  int firstFrame = 1;        ///< nonzero until the first round after the set-up has ended

  BilateralGrid(const BilateralGrid&) = delete;
  BilateralGrid& operator=(const BilateralGrid&) = delete;

  /// out = the result for the rows from `y` on, read at the values of `guide`, which has as many
  /// rows; `out` may be `guide`. Slots may run at the same time.
  void finish(int y, const PlaneView& guide, const PlaneView& out, int slot) {
    order_.finish();
    reader_.readRows(y, guide, out, slot);
  }
  /// Ends a round.
  void end() {
    order_.end();
    firstFrame = 0;
  }

 protected:
  enum class SetUp { kRefused, kKept, kRenewed };

  BilateralGrid() = default;
  ~BilateralGrid() = default;

  /// Takes the geometry over. Refuses a spatialSample below 2, with nothing changed. Keeps
  /// the memory of the grid when neither the grid nor the plane changes its size; otherwise the
  /// caller allocates, unless there is no grid at all.
  SetUp fixGeometry(int width, int height, float newRangeMin, float newRangeMax,
                    int newSpatialSample, float newRangeSample, int newTemporal, int deepest);

  GridShape shape() const { return {gridWidth, gridHeight, gridDepth}; }

  bool reserveHistory() { return temporal == 0 || history_.reserve(shape()); }
  void releaseShared();

  /// Opens a round; false without a grid, or without memory for its read.
  bool beginRound();
  /// Blends the finished grid with its history and makes it ready to be read.
  void beginRead(float* grid, float temporalBlend, float offset, bool clip);

  StepOrder order_;

 private:
  GridHistory history_;
  GridReader reader_;
};

}  // namespace vx
