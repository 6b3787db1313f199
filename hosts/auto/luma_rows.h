// The luma of a picture row by row, whatever its samples.
#pragma once

#include "hosts/auto/auto_picture.h"

namespace vx::automatic {

/// Luma 0.299 R + 0.587 G + 0.114 B (ITU-R BT.601) on a scale of 0 to 255.
class LumaRows {
 public:
  explicit LumaRows(const VxAutoPicture& picture);

  int width() const { return picture_.width; }
  int height() const { return picture_.height; }

  /// Reads row y: `luma`, and in `clipped` 1 where a channel is within two levels of black or white
  /// (noise was cut off there), 0 elsewhere. Each receives width() values.
  void read(int y, float* luma, float* clipped) const;

 private:
  template <class Sample>
  void readAs(int y, float* luma, float* clipped) const;

  VxAutoPicture picture_;
  float scale_;
};

}  // namespace vx::automatic
