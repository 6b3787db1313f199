#include "vxenhlib/tone/detail_layer.h"

#include <cassert>
#include <climits>

#include "frame/plane_ops.h"
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

bool DetailLayer::begin(const PlaneView& plane, float rangeStep, int spatialStep, int rows) {
  const auto width = static_cast<std::size_t>(plane.width);
  if (plane.width > INT_MAX / 4 ||
      !baseMemory_.reserve(width * static_cast<std::size_t>(plane.height)))
    return false;
  plane_ = plane;
  base_ = {baseMemory_.data(), plane.width * 4, plane.width, plane.height};
  const std::size_t pixels = width * static_cast<std::size_t>(rows);
  rows_ = rows;
  order_.begin();
  return split_.begin(plane, base_, rangeStep, spatialStep, rows) && detail_.reserve(pixels) &&
         size_.reserve(pixels) && peaks_.reserve(1);
}

void DetailLayer::process() {
  order_.process();
  split_.process([](int, int, int) {});
  curved_ = false;
}

void DetailLayer::process(float exponent) {
  order_.process();
  for (int slot = 0; slot < bandSlots(); ++slot) *peaks_.at(slot) = Peak();
  split_.process([&](int y, int count, int slot) {
    for (int i = y; i < y + count; ++i) {
      const PlaneView plane = plane_.rows(i, 1);
      const PlaneView size = band(size_, slot, plane);
      prim::primvDetailSize_32f(plane.data, base_.row(i), size.data, plane.width);
      peaks_.at(slot)->add(size);
    }
  });
  Peak peak;
  for (int slot = 0; slot < bandSlots(); ++slot) peak.add(*peaks_.at(slot));
  // Rounding is monotone: the peak of |D| + c is that of |D|, plus c.
  curve_ = PowerCurve(peak.value() + kLeastMagnitude, exponent);
  curved_ = true;
}

void DetailLayer::part(int y, int count, int slot) const {
  assert(count <= rows_);
  const PlaneView plane = plane_.rows(y, count);
  const PlaneView base = base_.rows(y, count);
  const PlaneView detail = band(detail_, slot, plane);
  if (!curved_) {
    sub(plane, base, detail);
    return;
  }
  const PlaneView size = band(size_, slot, plane);
  for (int i = 0; i < count; ++i)
    prim::primvDetailPart_32f(kLeastMagnitude, plane.row(i), base.row(i), detail.row(i),
                              size.row(i), plane.width);
  curve_.apply(size);
}

void DetailLayer::join(float gain, int y, int count, int slot) const {
  const PlaneView plane = plane_.rows(y, count);
  const PlaneView base = base_.rows(y, count);
  const PlaneView detail = band(detail_, slot, plane);
  if (!curved_) {
    scale(gain, detail);
    add(detail, base, plane);
    return;
  }
  const PlaneView size = band(size_, slot, plane);
  for (int i = 0; i < count; ++i)
    prim::primvDetailJoin_32f(gain, detail.row(i), size.row(i), base.row(i), plane.row(i),
                              plane.width);
}

}  // namespace vx
