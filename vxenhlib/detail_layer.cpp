#include "vxenhlib/detail_curve.h"

#include "prim/arith.h"
#include "prim/tone.h"

namespace vx {
namespace {

// No detail at all keeps the sign 0 instead of dividing 0 by 0.
constexpr float kLeastMagnitude = 1e-12f;

// A slot's memory as rows of the size of others.
PlaneView band(const PerSlot<float>& memory, int slot, const PlaneView& like) {
  return {memory.at(slot), like.width * static_cast<int>(sizeof(float)), like.width, like.height};
}

}  // namespace

bool DetailCurve::reserve(int width, int rows) {
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(rows);
  return detail_.reserve(pixels) && size_.reserve(pixels);
}

void DetailCurve::setCurve(const Peak& peak, float exponent) {
  // Rounding is monotone: the peak of |D| + c is that of |D|, plus c.
  curve_ = PowerCurve(peak.any() ? peak.value() + kLeastMagnitude : 0.0f, exponent);
  curved_ = true;
}

void DetailCurve::part(const PlaneView& plane, const PlaneView& base, int slot) const {
  const PlaneView detail = band(detail_, slot, plane);
  if (!curved_) {
    prim::primSub_32f_C1R(base.data, base.step, plane.data, plane.step, detail.data, detail.step,
                          plane.width, plane.height);
    return;
  }
  const PlaneView size = band(size_, slot, plane);
  for (int y = 0; y < plane.height; ++y)
    prim::primvDetailPart_32f(kLeastMagnitude, plane.row(y), base.row(y), detail.row(y),
                              size.row(y), plane.width);
  curve_.apply(size);
}

void DetailCurve::join(float gain, const PlaneView& layer, const PlaneView& plane, int slot) const {
  const PlaneView detail = band(detail_, slot, plane);
  if (!curved_) {
    prim::primMulC_32f_C1IR(gain, detail.data, detail.step, plane.width, plane.height);
    prim::primAdd_32f_C1R(detail.data, detail.step, layer.data, layer.step, plane.data, plane.step,
                          plane.width, plane.height);
    return;
  }
  const PlaneView size = band(size_, slot, plane);
  for (int y = 0; y < plane.height; ++y)
    prim::primvDetailJoin_32f(gain, detail.row(y), size.row(y), layer.row(y), plane.row(y),
                              plane.width);
}

void addMagnitudes(const PlaneView& plane, const PlaneView& base, float* scratch, Peak& peak) {
  const PlaneView row(scratch, plane.step, plane.width, 1);
  for (int y = 0; y < plane.height; ++y) {
    prim::primvDetailSize_32f(plane.row(y), base.row(y), scratch, plane.width);
    peak.add(row);
  }
}

}  // namespace vx
