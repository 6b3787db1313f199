#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>

#include "frame/row_at.h"
#include "prim/alloc.h"

namespace vx {

/// An owned image of `C` interleaved channels of `T` with a region of interest: what the primitives
/// are called with is `data`, `step`, `roiWidth` and `roiHeight`.
///
/// Rows start at multiples of 32 bytes and are padded to multiples of 32. The memory is not
/// initialised. Construction never throws: an image that cannot be allocated (no memory, a size
/// below 1, a row above INT_MAX bytes) holds a null `data` and a `step` of 0, and the primitives
/// refuse it; a loop written by hand tests `data` first. Sizes stay as they were asked for.
///
/// Belongs to one thread at a time. Neither copied nor moved; stages pass references.
template <class T, int C>
class IMG {
 public:
  static constexpr int kChannels = C;
  static constexpr int kPixelBytes = C * static_cast<int>(sizeof(T));

  T* base;        ///< start of the allocation, owned
  T* data;        ///< origin of the region of interest
  int step;       ///< bytes from one row to the next
  int width;      ///< of the allocation, in pixels
  int height;     ///< of the allocation, in pixels
  int roiWidth;   ///< of the region of interest, in pixels
  int roiHeight;  ///< of the region of interest, in pixels
  int status;     ///< 1, then the result of the last primitive that a caller chose to keep here

  IMG(int w, int h)
      : base(nullptr),
        data(nullptr),
        step(0),
        width(w),
        height(h),
        roiWidth(w),
        roiHeight(h),
        status(1) {
    const std::int64_t rowBytes = std::int64_t{w} * kPixelBytes;
    if (rowBytes < 1 || rowBytes > INT_MAX) return;
    base = reinterpret_cast<T*>(prim::primMalloc_8u_C1(static_cast<int>(rowBytes), h, &step));
    data = base;
  }
  IMG(const IMG&) = delete;
  IMG& operator=(const IMG&) = delete;

  /// Moves the origin of the region of interest by (dx, dy) and shrinks it by as much. The bounds
  /// are not tested; successive calls add up.
  virtual void offset(int dx, int dy) {
    if (data != nullptr) data = row(dy) + std::ptrdiff_t{dx} * C;
    roiWidth -= dx;
    roiHeight -= dy;
  }

  /// Makes the whole image the region of interest again.
  virtual void reset() {
    data = base;
    roiWidth = width;
    roiHeight = height;
  }

  virtual ~IMG() { prim::primFree(base); }

  /// Start of row y of the region of interest; the image must have memory.
  T* row(int y) const { return rowAt(data, step, y); }
};

/// An image of three interleaved channels; channel c is reached at `data` + c.
template <class T>
class IMG3 : public IMG<T, 3> {
 public:
  using IMG<T, 3>::IMG;
};

/// An image of one channel.
template <class T>
class GIMG : public IMG<T, 1> {
 public:
  using IMG<T, 1>::IMG;
};

}  // namespace vx
