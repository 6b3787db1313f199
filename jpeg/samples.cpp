#include "jpeg/samples.h"

#include <algorithm>
#include <cstddef>

#include "prim/jpeg.h"

namespace vx {

void jpegSampleRow(const std::uint8_t* pixels, int width, bool useYcc, int left, int length,
                   std::int16_t* const rows[3]) noexcept {
  std::int16_t* c0 = rows[0] + left;
  std::int16_t* c1 = rows[1] + left;
  std::int16_t* c2 = rows[2] + left;
  if (useYcc) {
    prim::primJpegYcc_8u16s(pixels, c0, c1, c2, width);
  } else {
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      c0[x] = static_cast<std::int16_t>(pixels[3 * x] - 128);
      c1[x] = static_cast<std::int16_t>(pixels[3 * x + 1] - 128);
      c2[x] = static_cast<std::int16_t>(pixels[3 * x + 2] - 128);
    }
  }
  for (int c = 0; c < 3; ++c) {
    std::int16_t* row = rows[c];
    std::fill(row, row + left, row[left]);
    std::fill(row + left + width, row + length, row[left + width - 1]);
  }
}

void jpegReduceRow(const std::int16_t* a, const std::int16_t* b, int bias, int length,
                   std::int16_t* dst) noexcept {
  if (b == nullptr) {
    for (std::ptrdiff_t i = 0; i < length; ++i)
      dst[i] = static_cast<std::int16_t>((a[2 * i] + a[2 * i + 1] + bias) >> 1);
  } else {
    for (std::ptrdiff_t i = 0; i < length; ++i)
      dst[i] = static_cast<std::int16_t>(
          (a[2 * i] + a[2 * i + 1] + b[2 * i] + b[2 * i + 1] + 1 + bias) >> 2);
  }
}

}  // namespace vx
