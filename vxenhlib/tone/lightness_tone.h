#pragma once

#include "frame/img.h"

namespace vx {

/// What is done to the lightness plane: local equalisation, a gamma on the plane or on its base
/// layer, and a reshaping of the detail layer, in this order. Steps below their threshold are
/// skipped.
///
/// Method of the split: F. Durand, J. Dorsey, "Fast bilateral filtering for the display of
/// high-dynamic-range images", 2002.
class LightnessTone {
 public:
  float eqStrength = 0.0f;   ///< of the equalisation; runs above 0.01
  float eqClip = 0.05f;      ///< share of the clip limit of its histograms
  int eqSample = 50;         ///< pixels per grid cell of the equalisation; runs above 3
  float eqPeakGain = 1.0f;   ///< emphasis of the middle tones
  float gamma = 1.0f;        ///< tone exponent control, above 0 lightens; off within 0.0001 of 0
  float eqTopCut = 0.95f;    ///< 1 less the scale of the equalised tones
  float eqFloor = 0.05f;     ///< darkest equalised tone
  float detailRange = 0.0f;  ///< range step of the base filter; detail runs above 0.0001
  int detailSample = 16;     ///< spatial step of the base filter
  float detailGain = 1.0f;   ///< gain on the detail layer
  float detailGamma = 1.0f;  ///< exponent on its magnitude; below 1 lifts weak detail

  /// Replaces the plane, values in 0 to 1; the result may leave that range. Returns 0. A step
  /// without memory is left out.
  ///
  /// @param rows   of a band; 0: by the width. No result depends on it
  int apply(GIMG<float>& plane, int rows = 0) const;

  /// plane = its base layer, detail = plane - base, with the steps of this object.
  void splitBaseDetail(GIMG<float>& plane, GIMG<float>& detail) const;
};

}  // namespace vx
