#pragma once

#include "frame/img.h"
#include "frame/picture_rows.h"
#include "vxenhlib/tone/lightness_tone.h"
#include "vxenhlib/tone/saturation_tone.h"

namespace vx {

struct ToneScratch;

/// Tone, sharpness, saturation and hue of one float RGB image. The image goes through hue,
/// lightness and saturation: lightness is sharpened and then treated by LightnessTone, saturation
/// by SaturationTone, hue is rotated.
///
/// The stage walks the image in bands of rows. Between its front pass (conversion, sharpening, and
/// what the first histograms collect) and its back pass (last curves, hue, clip, conversion) the
/// rows of the image hold three planes side by side, so that only the detail layer needs a plane
/// more.
class AdjustToneStage {
 public:
  float sharpenAmount = 1.0f;  ///< gain of the sharpening; off within 0.001 of 1
  float sharpenSigma = 0.0f;   ///< its blur in pixels; off at 0.5 and below
  float hueShift = 0.0f;       ///< turns; off within 1e-7 of 0. A shift beyond one turn is clipped
  LightnessTone lightness;
  SaturationTone saturation;

  AdjustToneStage() { saturation.mode = 0; }

  /// Replaces the image, RGB in 0 to 1 before and after. Returns 0. Without memory for a band the
  /// image stays as it is; a step without memory is left out.
  ///
  /// @param rows   of a band; 0: by the width. No result depends on it
  int apply(IMG3<float>& image, int rows = 0);

  /// The same for a picture that comes and goes row by row: no pass over memory only to bring it in
  /// or out. `work` has the picture's size, and is lost.
  int apply(IMG3<float>& work, RowSource& from, RowSink& to, ToneScratch& scratch, int rows = 0);
};

}  // namespace vx
