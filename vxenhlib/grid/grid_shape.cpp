#include "vxenhlib/grid/grid_shape.h"

#include <algorithm>
#include <climits>

#include "frame/to_int.h"

namespace vx {
namespace {

std::int64_t cellsAlong(int size, int spatialSample) {
  const int begun = size / spatialSample + (size % spatialSample > 0 ? 1 : 0);
  return std::int64_t{begun} + 2 + 2 * kSpatialPad;
}

std::int64_t cellsOfRange(float span, float rangeSample) {
  const int whole = toInt(span / rangeSample);
  const int begun = static_cast<float>(whole) * rangeSample < span ? 1 : 0;
  return std::int64_t{whole} + begun + 2 + 2 * kRangePad;
}

// The blur works on the inner cells of every axis.
constexpr std::int64_t kSmallest = 4;

}  // namespace

GridShape gridShape(int width, int height, float rangeMin, float rangeMax, int spatialSample,
                    float rangeSample, int deepest) {
  const std::int64_t x = cellsAlong(width, spatialSample);
  const std::int64_t y = cellsAlong(height, spatialSample);
  const std::int64_t z =
      std::min<std::int64_t>(cellsOfRange(rangeMax - rangeMin, rangeSample), deepest);
  // Indices of a plane, with the cells that a bin may reach beyond it, stay ints.
  constexpr std::int64_t kMostPlaneCells = INT_MAX - 4 * kSpareCells;
  if (x < kSmallest || y < kSmallest || z < kSmallest || z > kMostPlaneCells / x) return {};
  if (y > INT_MAX) return {};
  return {static_cast<int>(x), static_cast<int>(y), static_cast<int>(z)};
}

prim::GridAxis gridAxis(float rangeMin, float rangeMax, float rangeSample, float offset,
                        bool clip) {
  return {.clip = clip,
          .low = rangeMin,
          .high = rangeMax,
          .origin = rangeMin,
          .scale = (rangeMax - rangeMin) / rangeSample,
          .offset = offset,
          .topCell = 255};
}

GridPosition gridPosition(int i, int spatialSample, int cells) {
  const float at = static_cast<float>(kSpatialPad) + 0.5f +
                   static_cast<float>(i) / static_cast<float>(spatialSample);
  const int cell = static_cast<int>(at);
  const float fraction = at - static_cast<float>(cell);
  // Only the rounding of coordinates beyond 2^24 could leave the grid.
  return {std::min(cell, cells - 3), fraction};
}

bool GridColumns::reserve(int width) {
  const auto count = static_cast<std::size_t>(std::max(width, 1));
  return offset_.reserve(count) && fraction_.reserve(count);
}

void GridColumns::fill(int width, int spatialSample, const GridShape& shape, int depth) {
  for (int x = 0; x < width; ++x) {
    const GridPosition at = gridPosition(x, spatialSample, shape.width);
    const auto i = static_cast<std::size_t>(x);
    offset_[i] = at.cell * depth;
    fraction_[i] = at.fraction;
  }
}

}  // namespace vx
