#include <algorithm>
#include <cmath>
#include <cstddef>

#include "frame/parallel.h"
#include "jpeg/samples.h"
#include "lqlib/src/stream_bound.h"

namespace vx {
namespace {

// What lies around the picture in the larger image, whole MCUs included; a little more only raises
// the bound.
constexpr int kBefore = 8, kBehind = 24;
constexpr int kBandRows = 64;

// Rows of samples of one picture row, edges repeated.
class SampleRow {
 public:
  explicit SampleRow(int width)
      : length_(kBefore + width + kBehind),
        samples_(3 * static_cast<std::size_t>(length_)),
        rows_{row(0), row(1), row(2)} {}
  void read(const ImageBuffer<std::uint8_t, 3>& source, int y, bool useYcc) {
    jpegSampleRow(source.row(std::clamp(y, 0, source.height - 1)), source.width, useYcc, kBefore,
                  length_, rows_);
  }
  int length() const { return length_; }
  std::int16_t* row(int c) { return samples_.data() + std::ptrdiff_t{c} * length_; }

 private:
  int length_;
  std::vector<std::int16_t> samples_;
  std::int16_t* rows_[3];
};

// Moving sums over bw x bh windows: for every place the sum and the sum of squares of the window
// that begins there.
class Windows {
 public:
  Windows(int length, int windowWidth)
      : width_(windowWidth),
        sum_(static_cast<std::size_t>(length)),
        square_(static_cast<std::size_t>(length)),
        work_(static_cast<std::size_t>(length) + 16),
        other_(static_cast<std::size_t>(length) + 16) {}

  void add(const std::int16_t* row, int sign) {
    for (std::size_t x = 0; x < sum_.size(); ++x) {
      const int v = row[x];
      sum_[x] += sign * v;
      square_[x] += sign * v * v;
    }
  }
  // Adds the energies to those of the sixteen phases of the grid.
  void collect(int windowHeight, std::array<double, 16>& phases) {
    const std::size_t count = sum_.size() - 15;
    box(sum_, work_);
    box(square_, other_);
    const float scale = 1.0f / static_cast<float>(width_ * windowHeight);
    std::array<float, 16> energy{};
    for (std::size_t x = 0; x + 16 <= count; x += 16)
      for (std::size_t i = 0; i < 16; ++i) {
        const float s = static_cast<float>(work_[x + i]);
        energy[i] += static_cast<float>(other_[x + i]) - s * s * scale;
      }
    for (std::size_t x = count - count % 16; x < count; ++x) {
      const float s = static_cast<float>(work_[x]);
      energy[x % 16] += static_cast<float>(other_[x]) - s * s * scale;
    }
    for (std::size_t i = 0; i < 16; ++i) phases[i] += static_cast<double>(energy[i]);
  }

 private:
  // Sums of `width_` neighbours by doubling.
  void box(const std::vector<int>& in, std::vector<int>& out) const {
    const std::size_t n = in.size();
    std::copy(in.begin(), in.end(), out.begin());
    for (std::size_t reach = 1; reach < static_cast<std::size_t>(width_); reach *= 2) {
      int* p = out.data();
      const int* ahead = p + reach;
#pragma GCC ivdep
      for (std::size_t x = 0; x < n; ++x) p[x] += ahead[x];
    }
  }

  int width_;
  std::vector<int> sum_, square_, work_, other_;
};

}  // namespace

ComponentEnergies roughEnergies(const JpegCoding& coding,
                                const ImageBuffer<std::uint8_t, 3>& source) {
  const int bands = (source.height - 1) / kBandRows + 1;
  struct Sums {
    std::array<double, 3> sum{}, square{};
  };
  std::vector<Sums> parts(static_cast<std::size_t>(bands));
  parallelFor(0, bands, [&](int band) {
    SampleRow samples(source.width);
    Sums& part = parts[static_cast<std::size_t>(band)];
    const int last = std::min(source.height, (band + 1) * kBandRows);
    for (int y = band * kBandRows; y < last; ++y) {
      samples.read(source, y, coding.useYcc);
      // The repeated rows above and below.
      const double weight = 1.0 + (y == 0 ? kBefore : 0) + (y == source.height - 1 ? kBehind : 0);
      for (int c = 0; c < 3; ++c) {
        const std::int16_t* row = samples.row(c);
        std::int64_t sum = 0, square = 0;
        constexpr int kPart = 8192;  // of which squares stay within 32 bits
        for (int start = 0; start < samples.length(); start += kPart) {
          int partSum = 0, partSquare = 0;
          const int end = std::min(start + kPart, samples.length());
          for (int x = start; x < end; ++x) {
            partSum += row[x];
            partSquare += row[x] * row[x];
          }
          sum += partSum;
          square += partSquare;
        }
        part.sum[static_cast<std::size_t>(c)] += weight * static_cast<double>(sum);
        part.square[static_cast<std::size_t>(c)] += weight * static_cast<double>(square);
      }
    }
  });
  const double count = (static_cast<double>(source.width) + kBefore + kBehind) *
                       (static_cast<double>(source.height) + kBefore + kBehind);
  ComponentEnergies energies{};
  for (std::size_t c = 0; c < 3; ++c) {
    double sum = 0, square = 0;
    for (const Sums& part : parts) {
      sum += part.sum[c];
      square += part.square[c];
    }
    energies[c] = std::max(0.0, square - sum * sum / count);
  }
  return energies;
}

ShiftEnergies shiftEnergies(const JpegCoding& coding, const ImageBuffer<std::uint8_t, 3>& source) {
  // Regions of the picture begin at rows -7 to height + 15.
  const int starts = source.height + 23;
  const int bands = (starts - 1) / kBandRows + 1;
  std::vector<ShiftEnergies> parts(static_cast<std::size_t>(bands));
  parallelFor(0, bands, [&](int band) {
    SampleRow entering(source.width), leaving(source.width);
    const int first = band * kBandRows - 7;
    const int last = std::min(first + kBandRows, starts - 7);
    const int v = coding.vFactor;
    Windows windows[3] = {{entering.length(), 8},
                          {entering.length(), 8 * coding.hFactor},
                          {entering.length(), 8 * coding.hFactor}};
    // Row y enters the windows of luma and, v times as high, those of chroma.
    const auto enter = [&](int y, bool luma, bool chroma) {
      entering.read(source, y, coding.useYcc);
      for (int c = luma ? 0 : 1; c < (chroma ? 3 : 1); ++c) windows[c].add(entering.row(c), 1);
    };
    for (int y = first; y < first + 8 * v - 1; ++y) enter(y, y < first + 7, true);
    for (int start = first; start < last; ++start) {
      enter(start + 8 * v - 1, v == 1, true);
      if (v > 1) enter(start + 7, true, false);
      for (std::size_t c = 0; c < 3; ++c) {
        const int high = c == 0 ? 8 : 8 * v, wide = c == 0 ? 8 : 8 * coding.hFactor;
        const int top = (2 * high - start) & (high - 1);
        if (top > 7) continue;
        std::array<double, 16> phases{};
        windows[c].collect(high, phases);
        // Place i lies at column i - kBefore; regions begin at columns -left + wide * j.
        for (int i = 0; i < 16; ++i) {
          const int left = (32 + kBefore - i) & (wide - 1);
          if (left < 8)
            parts[static_cast<std::size_t>(band)][static_cast<std::size_t>(top)]
                 [static_cast<std::size_t>(left)][c] += phases[static_cast<std::size_t>(i)];
        }
      }
      leaving.read(source, start, coding.useYcc);
      windows[0].add(leaving.row(0), -1);
      windows[1].add(leaving.row(1), -1);
      windows[2].add(leaving.row(2), -1);
    }
  });
  ShiftEnergies energies{};
  for (const ShiftEnergies& part : parts)
    for (std::size_t top = 0; top < 8; ++top)
      for (std::size_t left = 0; left < 8; ++left)
        for (std::size_t c = 0; c < 3; ++c) energies[top][left][c] += part[top][left][c];
  return energies;
}

}  // namespace vx
