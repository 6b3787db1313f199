#include "vxenhlib/detail_curve.h"

#include "prim/arith.h"

namespace vx {
namespace {

// No detail at all keeps the sign 0 instead of dividing 0 by 0.
constexpr float kLeastMagnitude = 1e-12f;

}  // namespace

bool DetailCurve::reserve(int width, int rows) {
  return magnitude_.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(rows));
}

void DetailCurve::setCurve(const Peak& peak, float exponent) {
  // Rounding is monotone: the peak of |D| + c is that of |D|, plus c.
  curve_ = PowerCurve(peak.any() ? peak.value() + kLeastMagnitude : 0.0f, exponent);
}

void DetailCurve::apply(const PlaneView& detail) const {
  const int step = detail.width * static_cast<int>(sizeof(float));
  const PlaneView m(magnitude_.data(), step, detail.width, detail.height);
  prim::primAbs_32f_C1R(detail.data, detail.step, m.data, m.step, m.width, m.height);
  prim::primAddC_32f_C1IR(kLeastMagnitude, m.data, m.step, m.width, m.height);
  prim::primDiv_32f_C1IR(m.data, m.step, detail.data, detail.step, m.width, m.height);
  curve_.apply(m);
  prim::primMul_32f_C1IR(m.data, m.step, detail.data, detail.step, m.width, m.height);
}

void addMagnitudes(const PlaneView& detail, float* scratch, Peak& peak) {
  for (int y = 0; y < detail.height; ++y) {
    const PlaneView row(scratch, detail.step, detail.width, 1);
    prim::primAbs_32f_C1R(detail.row(y), detail.step, scratch, detail.step, detail.width, 1);
    peak.add(row);
  }
}

}  // namespace vx
