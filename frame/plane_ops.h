#pragma once

#include "frame/plane_view.h"
#include "prim/arith.h"
#include "prim/channel.h"
#include "prim/memory.h"

namespace vx {

// The primitives that stages use most, over views instead of pointers, steps and sizes. The size is
// that of the view that is written; the others have it too. Each returns the status of its
// primitive, which refuses a view without memory.

/// to = from.
inline int copy(const PlaneView& from, const PlaneView& to) {
  return prim::primCopy_32f_C1R(from.data, from.step, to.data, to.step, to.width, to.height);
}
inline int copy(const RgbRows& from, const RgbRows& to) {
  return prim::primCopy_32f_C3R(from.data, from.step, to.data, to.step, to.width, to.height);
}

/// plane = channel 0, 1 or 2 of the pixels.
inline int takeChannel(const RgbRows& pixels, int channel, const PlaneView& plane) {
  if (pixels.data == nullptr) return prim::kStatusNullPtr;  // with an offset it would not be null
  return prim::primCopy_32f_C3C1R(pixels.data + channel, pixels.step, plane.data, plane.step,
                                  plane.width, plane.height);
}
/// Channel 0, 1 or 2 of the pixels = plane.
inline int putChannel(const PlaneView& plane, const RgbRows& pixels, int channel) {
  if (pixels.data == nullptr) return prim::kStatusNullPtr;
  return prim::primCopy_32f_C1C3R(plane.data, plane.step, pixels.data + channel, pixels.step,
                                  pixels.width, pixels.height);
}

/// out = a + b.
inline int add(const PlaneView& a, const PlaneView& b, const PlaneView& out) {
  return prim::primAdd_32f_C1R(a.data, a.step, b.data, b.step, out.data, out.step, out.width,
                               out.height);
}
/// sum += more.
inline int add(const PlaneView& more, const PlaneView& sum) {
  return prim::primAdd_32f_C1IR(more.data, more.step, sum.data, sum.step, sum.width, sum.height);
}

/// out = a - b.
inline int sub(const PlaneView& a, const PlaneView& b, const PlaneView& out) {
  return prim::primSub_32f_C1R(b.data, b.step, a.data, a.step, out.data, out.step, out.width,
                               out.height);
}
/// rest -= less.
inline int sub(const PlaneView& less, const PlaneView& rest) {
  return prim::primSub_32f_C1IR(less.data, less.step, rest.data, rest.step, rest.width,
                                rest.height);
}

/// plane *= factor.
inline int scale(float factor, const PlaneView& plane) {
  return prim::primMulC_32f_C1IR(factor, plane.data, plane.step, plane.width, plane.height);
}

}  // namespace vx
