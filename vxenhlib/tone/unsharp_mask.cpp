#include "vxenhlib/tone/unsharp_mask.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "frame/bands.h"
#include "frame/plane_ops.h"
#include "prim/filter.h"
#include "prim/tone.h"
#include "vxenhlib/replicate_border.h"

namespace vx {
namespace {

// Rows of `width` floats, padded as images are; empty when memory is short.
PlaneView allocateRows(AlignedArray<float>& memory, int width, int rows) {
  const std::int64_t step = (std::int64_t{width} + 7) / 8 * 32;
  if (step > INT_MAX || !memory.reserve(static_cast<std::size_t>(step) / sizeof(float) *
                                        static_cast<std::size_t>(rows)))
    return {};
  return {memory.data(), static_cast<int>(step), width, rows};
}

}  // namespace

bool UnsharpMask::active() const { return std::fabs(amount - 1.0f) > 0.001f && sigma > 0.4f; }

int UnsharpMask::apply(GIMG<float>& image, int rows) const {
  const PlaneView plane(image);
  if (!active() || plane.empty()) return 0;
  const int bandHeight = bandRows(rows, plane.width, plane.height);
  UnsharpRows unsharp;
  if (!unsharp.begin(*this, plane.width, plane.height, bandHeight)) return 0;
  forEachBand(plane.height, bandHeight, [&](int y, int count) {
    copy(plane.rows(y, count), unsharp.input(count));
    int first = 0;
    unsharp.advance(plane, &first);
  });
  return 0;
}

bool UnsharpRows::begin(const UnsharpMask& mask, int width, int height, int rows) {
  float sum = 0.0f;
  for (int i = -kReach; i <= kReach; ++i) {
    const float tap =
        std::exp(-static_cast<float>(i * i) / (mask.sigma * 2.0f * mask.sigma + 1e-14f));
    kernel_[i + kReach] = tap;
    sum += tap;
  }
  for (float& tap : kernel_) tap /= sum;
  amount_ = mask.amount;
  width_ = width;
  height_ = height;
  arrived_ = pending_ = finished_ = firstKept_ = 0;
  if (width > INT_MAX / 4 - 4 * kReach) return false;
  // Rows above the plane, kept rows and late rows; the last band also has rows below the plane.
  const int most = std::min(rows, height);
  window_ = allocateRows(windowMemory_, width, most + 3 * kReach + std::min(kSlack, height));
  column_ = allocateRows(columnMemory_, width + 2 * kReach, most + kReach);
  blur_ = allocateRows(blurMemory_, width, most + kReach);
  return !window_.empty() && !column_.empty() && !blur_.empty();
}

PlaneView UnsharpRows::input(int count) {
  pending_ = count;
  if (arrived_ == 0) return window_.rows(kReach, count);  // the rows above the plane come first
  const int needed = finished_ - kReach;
  const int drop = needed - firstKept_;
  const int kept = arrived_ - needed;
  if (arrived_ - firstKept_ + count + kReach > window_.height && drop > 0) {
    // Rows that no result needs any more make way.
    for (int i = 0; i < kept; ++i) copy(window_.rows(i + drop, 1), window_.rows(i, 1));
    firstKept_ = needed;
  }
  return window_.rows(arrived_ - firstKept_, count);
}

int UnsharpRows::advance(const PlaneView& plane, int* first) {
  if (arrived_ == 0) {
    firstKept_ = -kReach;
    for (int i = 0; i < kReach; ++i) copy(window_.rows(kReach, 1), window_.rows(i, 1));
  }
  arrived_ += pending_;
  pending_ = 0;
  int last = arrived_ - kReach;
  if (arrived_ == height_) {
    const int below = arrived_ - firstKept_;
    for (int i = 0; i < kReach; ++i) copy(window_.rows(below - 1, 1), window_.rows(below + i, 1));
    last = height_;
  }
  *first = finished_;
  const int count = last - finished_;
  if (count < 1) return 0;

  const PlaneView in = window_.rows(finished_ - firstKept_, count);
  const PlaneView wide = column_.rows(0, count);
  float* inner = wide.data + kReach;
  prim::primFilterColumn_32f_C1R(in.data, in.step, inner, wide.step, width_, count, kernel_, kTaps,
                                 kReach);
  replicateBorder_32f(wide.data, wide.step, wide.width, count, 0, 0, kReach, kReach);
  prim::primFilterRow_32f_C1R(inner, wide.step, blur_.data, blur_.step, width_, count, kernel_,
                              kTaps, kReach);
  const PlaneView out = plane.rows(finished_, count);
  for (int i = 0; i < count; ++i)
    prim::primvSharpen_32f(amount_, in.row(i), blur_.row(i), out.row(i), width_);
  finished_ = last;
  return count;
}

}  // namespace vx
