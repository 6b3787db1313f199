#pragma once

#include <climits>

namespace vx {

/// Truncates a setting to int: saturates at the ends of the range, NaN gives 0.
constexpr int toInt(double value) noexcept {
  if (!(value == value)) return 0;
  if (value >= 2147483647.0) return INT_MAX;
  if (value <= -2147483648.0) return INT_MIN;
  return static_cast<int>(value);
}
constexpr int toInt(float value) noexcept { return toInt(static_cast<double>(value)); }

}  // namespace vx
