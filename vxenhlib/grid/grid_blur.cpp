#include "vxenhlib/grid/grid_blur.h"

#include <cstring>

#include "frame/parallel.h"
#include "prim/filter.h"
#include "vxenhlib/replicate_border.h"

namespace vx {

void blurGrid(float* grid, float* scratch, const GridShape& shape) {
  const std::size_t plane = shape.planeCells();
  const int step = shape.depth * static_cast<int>(sizeof(float));
  const int columns = shape.depth - 2;
  const int rows = shape.width - 2;
  const std::size_t inner = static_cast<std::size_t>(shape.depth) + 1;
  const auto planeOf = [plane](float* cells, int y) {
    return cells + plane * static_cast<std::size_t>(y);
  };

  parallelFor(0, shape.height, [&](int y) {
    float* from = planeOf(grid, y) + inner;
    replicateBorder_32f(from, step, columns, rows, 1, 1, 1, 1);
    prim::primFilterGauss_32f_C1R(from, step, planeOf(scratch, y) + inner, step, columns, rows,
                                  prim::kMask33);
  });
  const auto copyPlane = [&](int from, int to) {
    std::memcpy(planeOf(scratch, to), planeOf(scratch, from), plane * sizeof(float));
  };
  copyPlane(2, 1);
  copyPlane(shape.height - 3, shape.height - 2);
  parallelFor(1, shape.height - 1, [&](int y) {
    for (int x = 0; x < rows; ++x) {
      const std::size_t at =
          inner + static_cast<std::size_t>(x) * static_cast<std::size_t>(shape.depth);
      const float* mid = planeOf(scratch, y) + at;
      const float* above = planeOf(scratch, y - 1) + at;
      const float* below = planeOf(scratch, y + 1) + at;
      float* out = planeOf(grid, y) + at;
      for (int z = 0; z < columns; ++z) out[z] = 2.0f * mid[z] + above[z] + below[z];
    }
  });
}

}  // namespace vx
