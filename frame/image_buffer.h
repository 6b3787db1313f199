#pragma once

#include <climits>
#include <cstdint>

#include "frame/exceptions.h"
#include "frame/row_at.h"
#include "prim/alloc.h"

namespace vx {

/// A plain owned image of `C` interleaved channels of `T`, without a region of interest. Unlike
/// IMG it throws MemoryException when memory is short. Rows as in IMG; not initialised.
///
/// A width or height below 1 is an empty buffer: `data` null, `step` 0, no exception.
template <class T, int C = 1>
class ImageBuffer {
 public:
  static constexpr int kPixelBytes = C * static_cast<int>(sizeof(T));

  T* data = nullptr;  ///< owned
  int step = 0;       ///< bytes from one row to the next
  int width = 0;      ///< pixels
  int height = 0;     ///< pixels

  ImageBuffer() = default;
  ImageBuffer(int w, int h) { allocate(w, h); }
  ImageBuffer(const ImageBuffer&) = delete;
  ImageBuffer& operator=(const ImageBuffer&) = delete;
  ~ImageBuffer() { release(); }

  /// Releases the old block, then allocates; the old samples are lost, and when this throws the
  /// buffer is empty.
  void resize(int w, int h) {
    release();
    allocate(w, h);
  }

  /// Gives the block back and clears all fields; harmless on an empty buffer.
  void release() {
    prim::primFree(data);
    data = nullptr;
    step = width = height = 0;
  }

  /// Start of row y; the buffer must not be empty.
  T* row(int y) const { return rowAt(data, step, y); }

 private:
  void allocate(int w, int h) {
    if (w > 0 && h > 0) {
      const std::int64_t rowBytes = std::int64_t{w} * kPixelBytes;
      if (rowBytes > INT_MAX) throw MemoryException();
      data = reinterpret_cast<T*>(prim::primMalloc_8u_C1(static_cast<int>(rowBytes), h, &step));
      if (data == nullptr) throw MemoryException();
    }
    width = w;
    height = h;
  }
};

}  // namespace vx
