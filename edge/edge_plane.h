#pragma once

#include <utility>

#include "edge/enh_edge.h"
#include "frame/row_at.h"
#include "prim/memory.h"

namespace vx {

/// Address of pixel (x, y) of a plane whose rows are `step` bytes apart.
template <class T>
T* at(T* data, int step, int x, int y) {
  return rowAt(data, step, y) + x;
}
inline float* at(const EdgePlane& plane, int x, int y) { return plane.row(y) + x; }

inline void swapPlanes(EdgePlane& a, EdgePlane& b) {
  std::swap(a.data, b.data);
  std::swap(a.step, b.step);
  std::swap(a.width, b.width);
  std::swap(a.height, b.height);
}

inline void ensureSize(EdgePlane& plane, int width, int height) {
  if (plane.width != width || plane.height != height) plane.resize(width, height);
}

/// Copies the first and last bh rows of a rectangle, then its first and last bw columns.
inline void copyFrame(const float* src, int srcStep, float* dst, int dstStep, int width, int height,
                      int bw, int bh) {
  const int rows = bh < height ? bh : height;
  const int columns = bw < width ? bw : width;
  prim::primCopy_32f_C1R(src, srcStep, dst, dstStep, width, rows);
  prim::primCopy_32f_C1R(src, srcStep, dst, dstStep, columns, height);
  if (src == nullptr || dst == nullptr || width < 1 || height < 1) return;
  prim::primCopy_32f_C1R(at(src, srcStep, 0, height - rows), srcStep,
                         at(dst, dstStep, 0, height - rows), dstStep, width, rows);
  prim::primCopy_32f_C1R(at(src, srcStep, width - columns, 0), srcStep,
                         at(dst, dstStep, width - columns, 0), dstStep, columns, height);
}

/// Calls work(x0, y0, x1, y1) for the tiles that cover the columns from left to below right and the
/// rows from top to below bottom.
template <class Work>
void forTiles(int left, int top, int right, int bottom, int tileWidth, int tileHeight,
              const Work& work) {
  for (int y = top; y < bottom;) {
    const int y1 = tileHeight < bottom - y ? y + tileHeight : bottom;
    for (int x = left; x < right;) {
      const int x1 = tileWidth < right - x ? x + tileWidth : right;
      work(x, y, x1, y1);
      x = x1;
    }
    y = y1;
  }
}

}  // namespace vx
