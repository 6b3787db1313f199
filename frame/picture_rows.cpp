#include "frame/picture_rows.h"

#include "prim/memory.h"

namespace vx {

void ImageRows::take(int y, const RgbRows& to) {
  if (to.data == rows_.row(y)) return;
  prim::primCopy_32f_C3R(rows_.row(y), rows_.step, to.data, to.step, to.width, to.height);
}

void ImageRows::give(int y, const RgbRows& from) {
  if (from.data == rows_.row(y)) return;
  prim::primCopy_32f_C3R(from.data, from.step, rows_.row(y), rows_.step, from.width, from.height);
}

}  // namespace vx
