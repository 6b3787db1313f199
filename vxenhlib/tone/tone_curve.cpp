#include "vxenhlib/tone/tone_curve.h"

#include <algorithm>
#include <cmath>

#include "prim/lut.h"
#include "prim/stats.h"

namespace vx {
PowerCurve::PowerCurve(float top, float exponent) {
  for (int i = 0; i < kPoints; ++i) {
    const auto step = static_cast<float>(i);
    levels_[i] = (top * step) / 8.0f;
    values_[i] = std::pow(step / 8.0f, exponent) * top;
  }
}

void PowerCurve::apply(const PlaneView& rows) const {
  prim::primLUT_Cubic_32f_C1IR(rows.data, rows.step, rows.width, rows.height, values_, levels_,
                               kPoints);
}

void Peak::add(const PlaneView& rows) {
  float largest = 0.0f;
  if (prim::primMax_32f_C1R(rows.data, rows.step, rows.width, rows.height, &largest) == 0)
    value_ = std::max(value_, largest);
}

}  // namespace vx
