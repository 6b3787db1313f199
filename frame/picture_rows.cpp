#include "frame/picture_rows.h"

#include "frame/plane_ops.h"

namespace vx {

void ImageRows::take(int y, const RgbRows& to) {
  if (to.data != rows_.row(y)) copy(rows_.rows(y, to.height), to);
}

void ImageRows::give(int y, const RgbRows& from) {
  if (from.data != rows_.row(y)) copy(from, rows_.rows(y, from.height));
}

}  // namespace vx
