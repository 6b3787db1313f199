#pragma once

#include "frame/aligned_array.h"
#include "frame/plane_view.h"

namespace vx {

/// Sharpens or softens a plane: blur + amount * (plane - blur), where the blur is a separable
/// Gaussian of seven taps whatever `sigma` says, with the nearest pixel beyond the edges.
class UnsharpMask {
 public:
  float amount = 1.0f;  ///< above 1 sharpens, below 1 softens
  float sigma = 0.5f;   ///< standard deviation of the blur, in pixels

  /// Replaces the plane. Leaves it alone when |amount - 1| is not above 0.001, `sigma` is not above
  /// 0.4, or memory is short. Returns 0.
  ///
  /// @param rows   of a band; 0: by the width. No result depends on it
  int apply(GIMG<float>& plane, int rows = 0) const;

  bool active() const;
};

/// The mask over rows as they arrive from the top down. Rows come out three rows late.
class UnsharpRows {
 public:
  /// Room for bands of up to `rows` rows; false when memory is short.
  bool begin(const UnsharpMask& mask, int width, int height, int rows);

  /// Where the next `count` rows of the plane are to be written.
  PlaneView input(int count);

  /// Takes the rows just written, and writes to `plane` the result for all rows that have their
  /// three rows below, or every row left after the last.
  ///
  /// @param first   receives the first row of the result
  /// @return the number of rows of the result
  int advance(const PlaneView& plane, int* first);

 private:
  static constexpr int kReach = 3;
  static constexpr int kTaps = 2 * kReach + 1;
  // Rows that the window grows by before the rows still needed move back to its start.
  static constexpr int kSlack = 24;

  float kernel_[kTaps] = {};
  float amount_ = 1.0f;
  int width_ = 0;
  int height_ = 0;
  int arrived_ = 0;    // rows of the plane written so far
  int pending_ = 0;    // rows handed out by input()
  int finished_ = 0;   // rows of the result
  int firstKept_ = 0;  // plane row in the first row of window_
  AlignedArray<float> windowMemory_;
  AlignedArray<float> columnMemory_;
  AlignedArray<float> blurMemory_;
  PlaneView window_;  // rows finished_ - 3 and below, as they arrived
  PlaneView column_;  // filtered along y, three columns wider on either side
  PlaneView blur_;
};

}  // namespace vx
