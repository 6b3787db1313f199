#pragma once

#include "vxenhlib/grid/bilateral_local_hist_eq.h"
#include "vxenhlib/tone/saturation_tone.h"
#include "vxenhlib/tone/tone_curve.h"

namespace vx {

/// One plane on its way through SaturationTone, in the same steps as LightnessPass.
class SaturationPass {
 public:
  /// Tone and plane must stay where they are: the curve of modes 1 and 2 stays in the tone. Memory
  /// of an earlier plane is used again.
  ///
  /// @param rows   most rows of a band, 1 or more
  void begin(SaturationTone& tone, const PlaneView& plane, int rows);

  void collect(int y, int count);
  void process();
  void finish(int y, int count);
  void end() { order_.end(); }

 private:
  void gain(const PlaneView& rows, Peak& peak) const;

  StepOrder order_;
  SaturationTone* tone_ = nullptr;
  PlaneView plane_;
  int rows_ = 1;
  bool useEq_ = false;
  bool useGamma_ = false;
  BilateralLocalHistEq eq_;
  Peak peak_;
  PerSlot<Peak> peaks_;
  PowerCurve gammaCurve_{0.0f, 1.0f};
};

}  // namespace vx
