#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "frame/parallel.h"
#include "jpeg/samples.h"
#include "lqlib/src/stream_bound.h"

namespace vx {
namespace {

// Beyond the picture there are at most 7 columns and rows on one side and 8 and an MCU on the
// other, all repeating the edge: one picture row, or column, counts as so many.
constexpr int kRepeats = 32;

// Sums of the squares of the differences a - b.
std::int64_t squares(const std::int16_t* a, const std::int16_t* b, int length) {
  std::int64_t sum = 0;
  constexpr int kPart = 8192;  // of which the squares, up to 256 * 256, stay within 31 bits
  for (int start = 0; start < length; start += kPart) {
    const int end = std::min(start + kPart, length);
    int part = 0;
    for (int x = start; x < end; ++x) {
      const auto d = static_cast<std::int16_t>(a[x] - b[x]);
      part += d * d;
    }
    sum += part;
  }
  return sum;
}

}  // namespace

ComponentRoughness measureRoughness(const JpegCoding& coding,
                                    const ImageBuffer<std::uint8_t, 3>& source) {
  constexpr int kBandRows = 64;
  const int width = source.width, height = source.height;
  const int bands = (height - 1) / kBandRows + 1;
  std::vector<ComponentRoughness> parts(static_cast<std::size_t>(bands));
  parallelFor(0, bands, [&](int band) {
    std::vector<std::int16_t> memory(std::size_t{6} * static_cast<std::size_t>(width));
    std::int16_t* rows[2][3];
    for (int i = 0; i < 6; ++i) rows[i / 3][i % 3] = memory.data() + std::ptrdiff_t{i} * width;
    const int first = band * kBandRows, last = std::min(height, first + kBandRows);
    const auto read = [&](int y) {
      jpegSampleRow(source.row(y), width, coding.useYcc, 0, width, rows[y % 2]);
    };
    if (first > 0) read(first - 1);
    for (int y = first; y < last; ++y) {
      read(y);
      const double copies = 1.0 + (y == 0 ? kRepeats : 0) + (y == height - 1 ? kRepeats : 0);
      for (std::size_t c = 0; c < 3; ++c) {
        const std::int16_t* row = rows[y % 2][c];
        double sum = copies * static_cast<double>(squares(row, row + 1, width - 1));
        if (y > 0) {
          const std::int16_t* above = rows[1 - y % 2][c];
          sum += static_cast<double>(
              squares(row, above, width) +
              kRepeats * (squares(row, above, 1) + squares(row + width - 1, above + width - 1, 1)));
        }
        parts[static_cast<std::size_t>(band)][c] += sum;
      }
    }
  });
  ComponentRoughness roughness{};
  for (const ComponentRoughness& part : parts)
    for (std::size_t c = 0; c < 3; ++c) roughness[c] += part[c];
  return roughness;
}

}  // namespace vx
