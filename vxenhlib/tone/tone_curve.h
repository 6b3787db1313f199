#pragma once

#include <algorithm>

#include "frame/plane_view.h"

namespace vx {

/// A power curve through nine points: level(i) = (top * i) / 8, value(i) = pow(i / 8, exponent) *
/// top. Between the points runs a cubic; values outside 0..top stay as they are.
class PowerCurve {
 public:
  PowerCurve(float top, float exponent);

  void apply(const PlaneView& rows) const;

 private:
  static constexpr int kPoints = 9;
  float levels_[kPoints];
  float values_[kPoints];
};

/// The largest value of a plane that is met in parts, but not below 0: a curve that ends there or
/// below changes nothing. NaN never wins.
class Peak {
 public:
  void add(const PlaneView& rows);
  void add(const Peak& other) { value_ = std::max(value_, other.value_); }

  float value() const { return value_; }

 private:
  float value_ = 0.0f;
};

}  // namespace vx
