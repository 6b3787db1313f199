#include "lqlib/src/roughness_map.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "frame/parallel.h"
#include "jpeg/samples.h"

namespace vx {
namespace {

constexpr int kPart = RoughnessMap::kPart;

// Squares along an axis: blocks begin up to 15 samples behind the picture, and reach 16 further.
int partsOf(int picture) {
  constexpr int kCell = RoughnessMap::kCell, kReach = 16;
  const int cells = (RoughnessMap::kBefore + picture + 15) / kCell + 1;
  return (cells * kCell + kReach) / kPart;
}

// Adds the squares of a row's differences to the next sample and to the row below.
void addSquares(const std::int16_t* row, const std::int16_t* below, int parts, int* sums) {
  for (int part = 0; part < parts; ++part, row += kPart, below += kPart) {
    int sum = 0;
    for (int x = 0; x < kPart; ++x) {
      const auto right = static_cast<std::int16_t>(row[x] - row[x + 1]);
      const auto down = static_cast<std::int16_t>(row[x] - below[x]);
      sum += right * right + down * down;
    }
    sums[part] += sum;
  }
}

}  // namespace

RoughnessMap::RoughnessMap(const JpegCoding& coding, const ImageBuffer<std::uint8_t, 3>& source)
    : columns(partsOf(source.width)), rows(partsOf(source.height)) {
  for (auto& sums : squares) {
    sums.resize(columns, rows);
    std::fill_n(sums.data, std::ptrdiff_t{sums.step} / std::ptrdiff_t{sizeof(int)} * rows, 0);
  }
  const int length = columns * kPart + 1;
  constexpr int kRowsOfParts = 8;
  const int bands = (rows - 1) / kRowsOfParts + 1;
  parallelFor(0, bands, [&](int band) {
    std::vector<std::int16_t> memory(std::size_t{6} * static_cast<std::size_t>(length));
    const auto row = [&](int y, int c) {
      return memory.data() + std::ptrdiff_t{length} * (3 * (y & 1) + c);
    };
    const auto read = [&](int y) {
      std::int16_t* const samples[] = {row(y, 0), row(y, 1), row(y, 2)};
      jpegSampleRow(source.row(std::clamp(y - kBefore, 0, source.height - 1)), source.width,
                    coding.useYcc, kBefore, length, samples);
    };
    const int first = band * kRowsOfParts * kPart;
    const int last = std::min(rows, (band + 1) * kRowsOfParts) * kPart;
    read(first);
    for (int y = first; y < last; ++y) {
      read(y + 1);
      for (int c = 0; c < 3; ++c)
        addSquares(row(y, c), row(y + 1, c), columns, squares[c].row(y / kPart));
    }
  });
}

}  // namespace vx
