#pragma once

#include "frame/img.h"
#include "frame/row_at.h"

namespace vx {

/// Rows of floats inside memory that somebody else owns: a plane, some rows of one, or one of the
/// planes that lie side by side in the rows of a wider image.
struct PlaneView {
  float* data = nullptr;
  int step = 0;  ///< bytes from one row to the next
  int width = 0;
  int height = 0;

  PlaneView() = default;
  PlaneView(float* start, int rowStep, int w, int h)
      : data(start), step(rowStep), width(w), height(h) {}
  /// The region of interest of a plane; a plane without memory gives an empty view.
  explicit PlaneView(const GIMG<float>& plane)
      : data(plane.data), step(plane.step), width(plane.roiWidth), height(plane.roiHeight) {}

  bool empty() const { return data == nullptr || width < 1 || height < 1; }
  float* row(int y) const { return rowAt(data, step, y); }
  PlaneView rows(int y, int count) const { return {row(y), step, width, count}; }
};

}  // namespace vx
