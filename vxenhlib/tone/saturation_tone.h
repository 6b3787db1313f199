#pragma once

#include <array>

#include "frame/img.h"

namespace vx {

/// What is done to the saturation plane: local equalisation over the whole range without clipping,
/// and one of three tone treatments. Steps below their threshold are skipped.
class SaturationTone {
 public:
  std::array<float, 256> curveValues{};  ///< output side of the five-point curve
  std::array<float, 256> curveLevels{};  ///< input side
  int curvePoints = 4;                   ///< points in use; 5 once the curve is built
  float eqStrength = 0.0f;               ///< of the equalisation; runs above 0.01
  float eqBlend = 0.05f;                 ///< without effect on single images
  int eqSample = 50;                     ///< pixels per grid cell of the equalisation
  float reserved1 = 0.03f;               ///< never read
  float detailRange = 0.0f;              ///< range step of the base filter, modes 1 and 2
  int detailSample = 16;                 ///< spatial step of the base filter
  int mode = 1;             ///< 0 gain and gamma, 1 curve, 2 curve on log2(1 + x), other: nothing
  float contrast = 1.0f;    ///< gain in mode 0, else the slope of the curve
  float brightness = 0.0f;  ///< offset of the curve's middle
  float highKnee = 0.0f;    ///< distance of the upper knee from 1
  float lowKnee = 0.0f;     ///< position of the lower knee
  float reserved2 = 0.0f;   ///< never read
  int reserved3 = 16;       ///< never read
  float reserved4 = 0.02f;  ///< never read
  float detailGain = 1.0f;  ///< gain on the detail layer, modes 1 and 2
  float gamma = 1.0f;       ///< exponent: on the plane in mode 0, else on the detail magnitude

  /// Replaces the plane, values in 0 to 1; the result may leave that range. Returns 0. A step
  /// without memory is left out.
  ///
  /// @param rows   of a band; 0: by the width. No result depends on it
  int apply(GIMG<float>& plane, int rows = 0);

  /// plane = its base layer, detail = plane - base, with the steps of this object.
  void splitBaseDetail(GIMG<float>& plane, GIMG<float>& detail) const;

  /// Fills the five-point curve: slope `contrast` between the knees, and from there to 0 and 1 for
  /// a slope below 1, or to a quarter of the knee's distance from either end.
  void buildCurve();
};

}  // namespace vx
