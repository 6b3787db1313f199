// A picture row by row as luma and colour, whatever its samples.
#pragma once

#include <vector>

#include "hosts/auto/auto_picture.h"

namespace vx::automatic {

/// A row on a scale of 0 to 255.
struct PictureRow {
  explicit PictureRow(std::size_t width) : luma(width), blue(width), red(width), clipped(width) {}

  std::vector<float> luma;       // Y = 0.299 R + 0.587 G + 0.114 B (ITU-R BT.601)
  std::vector<float> blue, red;  // B - Y and R - Y
  /// 1 where a channel is within two levels of black or white (noise was cut off there), else 0.
  std::vector<float> clipped;
};

class PictureRows {
 public:
  /// A picture without pixels has the sizes 0.
  explicit PictureRows(const VxAutoPicture& picture);

  int width() const { return picture_.width; }
  int height() const { return picture_.height; }

  /// Reads row y, mirrored at the edges of the picture.
  void read(int y, PictureRow& row) const;

 private:
  VxAutoPicture picture_;
};

}  // namespace vx::automatic
