#include "vxenhlib/replicate_border.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "frame/plane_view.h"

namespace vx {
namespace {

bool leavesInner(int size, int before, int after) {
  return before >= 0 && after >= 0 && std::int64_t{before} + after < size;
}

}  // namespace

void replicateBorder_32f(float* data, int step, int width, int height, int top, int bottom,
                         int left, int right) {
  if (data == nullptr || width < 1 || height < 1) return;
  const PlaneView plane(data, step, width, height);
  if (leavesInner(height, top, bottom)) {
    const std::size_t bytes = static_cast<std::size_t>(width) * sizeof(float);
    for (int y = 0; y < top; ++y) std::memcpy(plane.row(y), plane.row(top), bytes);
    const int last = height - bottom - 1;
    for (int y = last + 1; y < height; ++y) std::memcpy(plane.row(y), plane.row(last), bytes);
  }
  if (leavesInner(width, left, right)) {
    for (int y = 0; y < height; ++y) {
      float* row = plane.row(y);
      std::fill(row, row + left, row[left]);
      std::fill(row + (width - right), row + width, row[width - right - 1]);
    }
  }
}

}  // namespace vx
