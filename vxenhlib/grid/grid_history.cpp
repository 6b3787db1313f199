#include "vxenhlib/grid/grid_history.h"

#include <cstring>

#include "prim/vector.h"

namespace vx {

void GridHistory::blend(float* grid, const GridShape& shape, float share, bool first) {
  const float positive = share > 0.0f ? share : 0.0f;  // NaN becomes 0
  const float past = positive < 1.0f ? positive : 1.0f;
  const std::size_t plane = shape.planeCells();
  const int length = static_cast<int>(plane);
  for (std::size_t at = 0; !first && at < shape.cells(); at += plane) {
    prim::primvMulC_32f_I(past, grid_.data() + at, length);
    prim::primvMulC_32f_I(1.0f - past, grid + at, length);
    prim::primvAdd_32f_I(grid_.data() + at, grid + at, length);
  }
  std::memcpy(grid_.data(), grid, shape.cells() * sizeof(float));
}

}  // namespace vx
