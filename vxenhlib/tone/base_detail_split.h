#pragma once

#include <functional>

#include "frame/plane_view.h"
#include "vxenhlib/grid/bilateral_filter.h"

namespace vx {

/// Splits a plane into a base layer, smooth but for its edges, and the detail on top of it:
/// detail = plane - base.
///
/// A range step of 0.05 or more takes two passes of the bilateral grid: the first smooths the guide
/// of the second, whose range cell is four times finer, so that the edges come from a clean guide
/// while the cell stays narrow. Below that one pass, guided by the plane itself.
///
/// Runs in the steps of StepOrder, the last of which process() takes itself. The plane is left
/// alone; whoever wants the detail subtracts, and may do so where it is used.
class BaseDetailSplit {
 public:
  /// @param base   as large as the plane; also work space of the passes
  /// @param rows   of a band, 1 or more
  /// @return false when memory is short; then the plane cannot be split
  bool begin(const PlaneView& plane, const PlaneView& base, float rangeStep, int spatialStep,
             int rows);

  /// Takes rows y to y + count - 1 of the plane into the first grid.
  void collect(int y, int count);

  /// Makes the base, and calls done(y, count, slot) for each band that has it, on the team of
  /// threads; the band is still in cache.
  void process(const std::function<void(int y, int count, int slot)>& done);

 private:
  PlaneView plane_;
  PlaneView base_;
  int rows_ = 0;
  bool twoPasses_ = false;
  BilateralFilter first_;
  BilateralFilter second_;  // of the second pass
};

/// The split of whole planes, with the base in the place of the plane; without memory the plane
/// stays and the detail is 0.
void splitBaseDetail(const PlaneView& plane, const PlaneView& detail, float rangeStep,
                     int spatialStep);

}  // namespace vx
