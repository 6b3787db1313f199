#include "vxenhlib/grid/sliding_blur.h"

#include <algorithm>

#include "prim/filter.h"
#include "vxenhlib/replicate_border.h"

namespace vx {

bool SlidingBlur::reserve(const GridShape& shape) {
  shape_ = shape;
  stride_ = (shape.planeCells() + 15) / 16 * 16;
  if (!planes_.reserve(2 * (kRaw + kBlurred) * stride_)) return false;
  // The blur writes the inner cells alone; joinAndDivide() runs over the rims too, then replaces
  // what it made there.
  std::fill(planes_.data(), planes_.data() + planes_.size(), 0.0f);
  return true;
}

void SlidingBlur::release() { planes_.release(); }

// The planes beside the first and last with samples take the blurred plane next to them.
float* SlidingBlur::blurred(int y, int kind) const {
  const int from = y == 1 ? 2 : y == shape_.height - 2 ? y - 1 : y;
  return plane(2 * (kRaw + from % kBlurred) + kind);
}

void SlidingBlur::blur(int kind) {
  const int step = shape_.depth * static_cast<int>(sizeof(float));
  const int columns = shape_.depth - 2;
  const int rows = shape_.width - 2;
  const std::ptrdiff_t inner = std::ptrdiff_t{shape_.depth} + 1;
  float* from = raw(next_, kind) + inner;
  replicateBorder_32f(from, step, columns, rows, 1, 1, 1, 1);
  if (next_ == 1 || next_ == shape_.height - 2) return;
  prim::primFilterGauss_32f_C1R(from, step, blurred(next_, kind) + inner, step, columns, rows,
                                prim::kMask33);
}

void SlidingBlur::divide(int y, float* out) const {
  const float* values = raw(y, 0);
  const float* weights = raw(y, 1);
  const std::size_t cells = shape_.planeCells();
  for (std::size_t i = 0; i < cells; ++i) out[i] = values[i] / weights[i];
}

void SlidingBlur::joinAndDivide(int y, float* out) const {
  const float* v = blurred(y, 0);
  const float* vAbove = blurred(y - 1, 0);
  const float* vBelow = blurred(y + 1, 0);
  const float* w = blurred(y, 1);
  const float* wAbove = blurred(y - 1, 1);
  const float* wBelow = blurred(y + 1, 1);
  const auto depth = static_cast<std::size_t>(shape_.depth);
  const std::size_t end = shape_.planeCells() - depth;
  for (std::size_t i = depth + 1; i < end - 1; ++i)
    out[i] = (2.0f * v[i] + vAbove[i] + vBelow[i]) / (2.0f * w[i] + wAbove[i] + wBelow[i]);

  const float* values = raw(y, 0);
  const float* weights = raw(y, 1);
  const auto keep = [&](std::size_t i) { out[i] = values[i] / weights[i]; };
  for (std::size_t i = 0; i < depth; ++i) {
    keep(i);
    keep(end + i);
  }
  for (std::size_t i = depth; i < end; i += depth) {
    keep(i);
    keep(i + depth - 1);
  }
}

void SlidingBlur::push(float* grid) {
  const auto out = [&](int y) { return grid + shape_.planeCells() * static_cast<std::size_t>(y); };
  blur(0);
  blur(1);
  if (next_ >= 2) joinAndDivide(next_ - 1, out(next_ - 1));
  if (next_ == 0 || next_ == shape_.height - 1) divide(next_, out(next_));
  ++next_;
}

}  // namespace vx
