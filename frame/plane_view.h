#pragma once

#include "frame/img.h"
#include "frame/row_at.h"

namespace vx {

/// Rows of `C` interleaved float channels inside memory that somebody else owns: an image, some
/// rows of one, or a plane that lies beside others in the rows of a wider image.
template <int C>
struct PixelRows {
  float* data = nullptr;
  int step = 0;   ///< bytes from one row to the next
  int width = 0;  ///< pixels
  int height = 0;

  PixelRows() = default;
  PixelRows(float* start, int rowStep, int w, int h)
      : data(start), step(rowStep), width(w), height(h) {}
  /// The region of interest; an image without memory gives rows without memory.
  // NOLINTNEXTLINE(google-explicit-constructor): images stand for their views, as vectors for spans
  PixelRows(const IMG<float, C>& image)
      : data(image.data), step(image.step), width(image.roiWidth), height(image.roiHeight) {}

  bool empty() const { return data == nullptr || width < 1 || height < 1; }
  float* row(int y) const { return rowAt(data, step, y); }
  PixelRows rows(int y, int count) const { return {row(y), step, width, count}; }
};

using PlaneView = PixelRows<1>;
using RgbRows = PixelRows<3>;

}  // namespace vx
