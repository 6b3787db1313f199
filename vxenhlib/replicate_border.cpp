#include "vxenhlib/replicate_border.h"

#include <algorithm>

#include "frame/plane_ops.h"

namespace vx {
namespace {

bool fits(int band, int size) { return band > 0 && band < size; }

}  // namespace

void replicateBorder_32f(float* data, int step, int width, int height, int top, int bottom,
                         int left, int right) {
  if (data == nullptr || width < 1 || height < 1) return;
  const PlaneView plane(data, step, width, height);
  for (int y = 0; fits(top, height) && y < top; ++y) copy(plane.rows(top, 1), plane.rows(y, 1));
  for (int y = height - bottom; fits(bottom, height) && y < height; ++y)
    copy(plane.rows(height - bottom - 1, 1), plane.rows(y, 1));
  for (int y = 0; y < height; ++y) {
    float* row = plane.row(y);
    if (fits(left, width)) std::fill(row, row + left, row[left]);
    if (fits(right, width)) std::fill(row + (width - right), row + width, row[width - right - 1]);
  }
}

}  // namespace vx
