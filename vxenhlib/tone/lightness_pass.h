#pragma once

#include "vxenhlib/grid/bilateral_local_hist_eq.h"
#include "vxenhlib/tone/detail_layer.h"
#include "vxenhlib/tone/lightness_tone.h"
#include "vxenhlib/tone/tone_curve.h"

namespace vx {

/// One plane on its way through LightnessTone, in the steps of StepOrder. A histogram, a splat or a
/// maximum over the whole plane ends a pass; everything between two of them is done band by band,
/// so that the stage around it can join the ends.
class LightnessPass {
 public:
  /// The plane must stay where it is. Memory of an earlier plane is used again.
  ///
  /// @param rows   most rows of a band, 1 or more; finish() is called with no more
  void begin(const LightnessTone& tone, const PlaneView& plane, int rows);

  void collect(int y, int count);
  void process();
  void finish(int y, int count, int slot);
  void end();

 private:
  StepOrder order_;
  LightnessTone tone_;
  PlaneView plane_;
  int rows_ = 1;
  bool useGamma_ = false;
  bool useEq_ = false;
  bool useDetail_ = false;
  PowerCurve gammaCurve_{0.0f, 1.0f};
  BilateralLocalHistEq eq_;
  DetailLayer detail_;
};

}  // namespace vx
