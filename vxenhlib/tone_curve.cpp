#include "vxenhlib/tone_curve.h"

#include <cmath>

#include "prim/lut.h"
#include "prim/stats.h"

namespace vx {
namespace {

bool anyComparable(const PlaneView& rows) {
  for (int y = 0; y < rows.height; ++y) {
    const float* row = rows.row(y);
    for (int x = 0; x < rows.width; ++x)
      if (row[x] == row[x]) return true;
  }
  return false;
}

}  // namespace

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
  if (prim::primMax_32f_C1R(rows.data, rows.step, rows.width, rows.height, &largest) != 0) return;
  // 0 also stands for rows of nothing but NaN.
  if (largest == 0.0f && !anyComparable(rows)) return;
  if (!any_ || largest > largest_) largest_ = largest;
  any_ = true;
}

void Peak::add(const Peak& other) {
  if (!other.any_) return;
  if (!any_ || other.largest_ > largest_) largest_ = other.largest_;
  any_ = true;
}

}  // namespace vx
