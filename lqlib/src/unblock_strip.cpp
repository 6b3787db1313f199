#include "lqlib/src/unblock_strip.h"

#include <algorithm>
#include <cstddef>

#include "jpeg/samples.h"
#include "prim/jpeg.h"

namespace vx {
namespace {

// Columns behind the picture that the last blocks of any left may cover. A halved component has one
// block more, because the filter reads a neighbour.
constexpr int kBehind = 24;

// First column of halved components, the picture's first being at kMargin / 2.
constexpr int kReducedFrom = 4;

int roundUp(int value, int granule) { return (value + granule - 1) / granule * granule; }

}  // namespace

UnblockStrip::UnblockStrip(const UnblockPlan& plan, const ImageBuffer<std::uint8_t, 3>& source,
                           const UnblockPixels& pixels)
    : plan_(plan),
      source_(source),
      pixels_(pixels),
      mcuHeight_(plan.coding.mcuHeight()),
      sampleRows_(mcuHeight_),
      sumRows_(2 * mcuHeight_),
      length_(roundUp(kMargin + plan.width + kBehind, 16)) {
  const JpegCoding& coding = plan.coding;
  samples_.resize(length_, 3 * sampleRows_);
  // The first row of a strip is paired with one before it, which is not used.
  std::fill_n(samples_.data, std::ptrdiff_t{samples_.step} / 2 * samples_.height, std::int16_t{0});
  if (coding.hFactor == 2) reduced_.resize(length_ / 2, 8 * sampleRows_);
  for (int c = 0; c < 3; ++c) {
    const int width = halved(c) ? length_ / 2 + kMargin : length_;
    const int sets = c == 0 ? coding.vFactor : halved(c) ? kParities : 1;
    for (int i = 0; i < sets; ++i) columns_[c][i].resize(width, 8);
    decoded_[c].rows.resize(width, c == 0 ? mcuHeight_ : 8);
    std::fill_n(decoded_[c].rows.data,
                std::ptrdiff_t{decoded_[c].rows.step} * decoded_[c].rows.height, std::uint8_t{0});
  }
  wide_.resize(length_ + 2 * kMargin, 2);
  sums_.resize(plan.width, 3 * sumRows_);
  if (coding.vFactor == 2)
    for (Above& rows : above_) {
      rows.rows.resize(length_, 3);
      std::fill_n(rows.rows.data, std::ptrdiff_t{rows.rows.step} * 3, std::uint8_t{0});
    }
}

void UnblockStrip::run(int first, int last) {
  first_ = first;
  last_ = last;
  const bool vertical = plan_.coding.vFactor == 2;
  // With a vertical filter the first row of an MCU needs the one above it, and the last row the one
  // below.
  const int begin = vertical ? first - 16 : first - 7;
  const int lag = vertical ? 1 : 0;
  std::fill_n(sums_.data,
              static_cast<std::size_t>(sums_.step) / 2 * static_cast<std::size_t>(sums_.height),
              std::uint16_t{0});
  loaded_ = begin;
  for (int start = begin; start < last + lag; ++start) {
    for (; loaded_ < start + mcuHeight_; ++loaded_) loadRow(loaded_);
    const int top = topOf(start);
    if (top < 8 && start >= -top && plan_.taken[top]) mcuRow(start, top);
    const int done = start - lag;
    if (done >= first && done < last) writeRow(done);
  }
}

void UnblockStrip::loadRow(int y) {
  std::int16_t* const rows[] = {sampleRow(y, 0), sampleRow(y, 1), sampleRow(y, 2)};
  jpegSampleRow(source_.row(std::clamp(y, 0, plan_.height - 1)), plan_.width, plan_.coding.useYcc,
                kMargin, length_, rows);
  if (plan_.coding.hFactor == 2) reduceRow(y + 1 - plan_.coding.vFactor);
}

// Column k of parity p is the mean of columns 2k - p and 2k + 1 - p of the picture.
void UnblockStrip::reduceRow(int y) {
  for (int c = 1; c < 3; ++c) {
    const std::int16_t* upper = sampleRow(y, c) + 2 * kReducedFrom;
    const std::int16_t* lower =
        plan_.coding.vFactor == 1 ? nullptr : sampleRow(y + 1, c) + 2 * kReducedFrom;
    for (int bias = 0; bias < 2; ++bias)
      for (int parity = 0; parity < kParities; ++parity)
        jpegReduceRow(upper - parity, lower == nullptr ? nullptr : lower - parity, bias,
                      length_ / 2 - kReducedFrom, reducedRow(y, c, bias, parity));
  }
}

// The vertical transforms of the MCUs that begin at row `start`.
void UnblockStrip::transformRows(int start) {
  const int v = plan_.coding.vFactor;
  const std::int16_t* rows[8];
  for (int c = 0; c < 3; ++c) {
    if (!halved(c)) {
      for (int half = 0; half < (c == 0 ? v : 1); ++half) {
        for (int y = 0; y < 8; ++y) rows[y] = sampleRow(start + 8 * half + y, c);
        prim::primJpegForward_16s(rows, columns_[c][half].data, length_);
      }
      continue;
    }
    for (int parity = 0; parity < kParities; ++parity) {
      for (int y = 0; y < 8; ++y) rows[y] = reducedRow(start + v * y, c, y & 1, parity);
      prim::primJpegForward_16s(rows, columns_[c][parity].data + 8 * (kReducedFrom + kMargin / 2),
                                length_ / 2 - kReducedFrom);
    }
  }
}

void UnblockStrip::countLevels(int first, int last, TripSums& levels) {
  const JpegCoding& coding = plan_.coding;
  const int mcus = (plan_.width + 7) / coding.mcuWidth() + 1;
  loaded_ = first;
  for (int start = first; start < last; ++start) {
    for (; loaded_ < start + mcuHeight_; ++loaded_) loadRow(loaded_);
    const int top = topOf(start);
    if (top > 7 || start < -top || start + top > plan_.height + 7 || !plan_.taken[top]) continue;
    transformRows(start);
    for (int left = 0; left < 8; ++left) {
      if (!plan_.taken[left]) continue;
      for (int c = 0; c < 3; ++c) {
        const int parity = parityOf(c, left), shift = halved(c) ? left / 2 : left;
        const int halves = c == 0 ? coding.vFactor : 1;
        for (int half = 0; half < halves; ++half) {
          double sum = 0;
          prim::primJpegLevels_16s(
              columns_[c][halves > 1 ? half : parity].data + std::ptrdiff_t{8} * (kMargin - shift),
              c == 0 ? mcus * coding.hFactor : mcus, &coding.quantiser[coding.tablesOf(c)], &sum);
          levels[top][left] += sum;
        }
      }
    }
  }
}

void UnblockStrip::mcuRow(int start, int top) {
  const auto& fails = plan_.fails[top];
  bool transformed = false;
  for (int left = 0; left < 8; ++left) {
    if (!plan_.taken[left] || fails[left]) continue;
    if (!transformed) transformRows(start);
    transformed = true;
    trip(start, top, left);
  }
}

// Blocks of component c of one left, as far as rows of the picture need them.
void UnblockStrip::decode(int c, int left) {
  const int quantiser = plan_.coding.tablesOf(c);
  const int parity = parityOf(c, left);
  const int shift = halved(c) ? left / 2 : left;  // the first block begins at column -shift
  const int needed = halved(c) ? (plan_.width - 1 + parity) / 2 + 2 : plan_.width;
  const int blocks = (needed + shift + 7) / 8;
  const std::ptrdiff_t from = kMargin - shift;
  const int halves = c == 0 ? plan_.coding.vFactor : 1;
  for (int half = 0; half < halves; ++half)
    prim::primJpegRequantise_16s8u(columns_[c][halves > 1 ? half : parity].data + 8 * from,
                                   decoded_[c].row(8 * half) - shift, decoded_[c].rows.step, blocks,
                                   &plan_.coding.quantiser[quantiser]);
  if (shift == 0 && halved(c))  // the filter repeats the edge
    for (int y = 0; y < 8; ++y) decoded_[c].row(y)[-1] = decoded_[c].row(y)[0];
}

void UnblockStrip::trip(int start, int top, int left) {
  for (int c = 0; c < 3; ++c) decode(c, left);
  const auto wanted = [this](int y) { return y >= first_ && y < last_; };
  if (plan_.coding.vFactor == 1) {
    for (int y = 0; y < 8; ++y) {
      const std::uint8_t* const chroma[] = {decoded_[1].row(y), decoded_[2].row(y)};
      if (wanted(start + y)) addRow(start + y, decoded_[0].row(y), chroma, chroma, left);
    }
    return;
  }
  // The row above the MCUs waited for their first row of chroma. Their own last row waits, too.
  Above& last = above(top, left);
  const std::uint8_t* const lastChroma[] = {last.row(1), last.row(2)};
  const std::uint8_t* const firstChroma[] = {decoded_[1].row(0), decoded_[2].row(0)};
  const bool topmost = start <= 0;
  if (!topmost && wanted(start - 1)) addRow(start - 1, last.row(0), lastChroma, firstChroma, left);
  for (int y = 0; y < 15; ++y) {
    if (!wanted(start + y)) continue;
    const int at = y / 2;
    const std::uint8_t* const near[] = {decoded_[1].row(at), decoded_[2].row(at)};
    const int beyond = y % 2 == 0 ? at - 1 : at + 1;
    const std::uint8_t* const far[] = {decoded_[1].row(std::max(beyond, 0)),
                                       decoded_[2].row(std::max(beyond, 0))};
    // Above the picture the first row is its own neighbour.
    addRow(start + y, decoded_[0].row(y), near, beyond >= 0 || topmost ? far : lastChroma, left);
  }
  const int margin = kMargin / 2;
  std::copy_n(decoded_[0].row(15), plan_.width, last.row(0));
  for (int c = 1; c < 3; ++c)
    std::copy_n(decoded_[c].row(7) - margin, plan_.width / 2 + 2 + 2 * margin,
                last.row(c) - margin);
}

void UnblockStrip::addRow(int y, const std::uint8_t* luma, const std::uint8_t* const near[2],
                          const std::uint8_t* const far[2], int left) {
  const int width = plan_.width;
  const std::uint8_t* chroma[2] = {near[0], near[1]};
  if (halved(1)) {
    const int parity = parityOf(1, left);
    for (int c = 0; c < 2; ++c) {
      std::uint8_t* wide = wide_.row(c);
      const int count = (width + parity + 1) / 2;
      if (near[c] == far[c] && plan_.coding.vFactor == 1)
        prim::primJpegUpsample_8u(near[c], wide, count);
      else
        prim::primJpegUpsampleRows_8u(near[c], far[c], wide, count);
      chroma[c] = wide + parity;
    }
  }
  if (plan_.coding.useYcc) {
    prim::primJpegAddYcc_8u16u(luma, chroma[0], chroma[1], sumRow(y, 0), sumRow(y, 1), sumRow(y, 2),
                               width);
  } else {
    prim::primJpegAdd_8u16u(luma, sumRow(y, 0), width);
    prim::primJpegAdd_8u16u(chroma[0], sumRow(y, 1), width);
    prim::primJpegAdd_8u16u(chroma[1], sumRow(y, 2), width);
  }
}

void UnblockStrip::writeRow(int y) {
  std::uint16_t* const sums[] = {sumRow(y, 0), sumRow(y, 1), sumRow(y, 2)};
  if (plan_.failures > 0) {
    const std::uint8_t* in = source_.row(y);
    for (std::ptrdiff_t x = 0; x < plan_.width; ++x)
      for (std::ptrdiff_t c = 0; c < 3; ++c)
        sums[c][x] = static_cast<std::uint16_t>(sums[c][x] + plan_.failures * in[3 * x + c]);
  }
  writeUnblockRow(pixels_, y, sums, plan_.trips);
  for (std::uint16_t* sum : sums) std::fill_n(sum, plan_.width, std::uint16_t{0});
}

}  // namespace vx
