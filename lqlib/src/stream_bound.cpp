#include "lqlib/src/stream_bound.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace vx {
namespace {

constexpr double kLastByte = 2;  // of a scan, filled with ones
constexpr int kSizes = 10;       // magnitude categories of a coefficient

// Prices of a unit of roughness, a factor of two apart.
double priceOf(int i) { return std::ldexp(1.0, -2 - i); }

// Most bits that a symbol with its magnitude of `size` bits puts into the stream, stuffed bytes
// included.
//
// A byte of ones lies between the last zero of one code and the first zero of the next, since every
// code has a zero: a stretch of a + p ones, where a are those behind the last zero of a code with
// all of its magnitude, and p those that the next code begins with. It can hold (a + p) / 8 such
// bytes, and for any t from 1 to 8 that is at most (a + t - 1) / 8 + (p + 8 - t) / 8: each symbol
// can be charged for both of its ends without a look at its neighbours. The mean of two such
// charges is a bound too; that of t = 2 and t = 3 was the tightest on photographs.
double symbolBits(const JpegHuffmanCodes& codes, int symbol, int size) {
  const auto index = static_cast<std::size_t>(symbol);
  const int length = codes.length[index];
  const unsigned zeros = ~unsigned{codes.code[index]} & ((1u << length) - 1);
  const int before = length - std::bit_width(zeros);
  const int behind = std::countr_zero(zeros) + size;
  const auto stuffed = [&](int t) { return (behind + t - 1) / 8 + (before + 8 - t) / 8; };
  return length + size + 4.0 * (stuffed(2) + stuffed(3));
}

// Sum of squared differences of neighbours in a row of eight that is one unit of a frequency.
double roughnessOf(std::size_t frequency) {
  return 2.0 - 2.0 * std::cos(static_cast<double>(frequency) * std::numbers::pi / 8);
}

// The most that "bits - price * roughness" of the 63 higher coefficients of a block can be, by
// dynamic programming over their order in the stream: best[i] is the most with coefficient i not
// zero and nothing beyond it coded yet.
double mostBits(const JpegHuffmanCodes& codes, const prim::JpegQuantiser& q, double price) {
  std::array<std::array<double, kSizes + 1>, 16> bits;
  for (int run = 0; run < 16; ++run)
    for (int size = 1; size <= kSizes; ++size)
      bits[run][size] = symbolBits(codes, run << 4 | size, size);
  const double sixteenZeros = symbolBits(codes, 0xF0, 0), end = symbolBits(codes, 0, 0);
  std::array<double, 64> best{};
  double most = end;
  for (std::size_t i = 1; i < 64; ++i) {
    const std::size_t place = kJpegZigzag[i];
    const double weight = roughnessOf(place / 8) + roughnessOf(place % 8);
    std::array<double, kSizes + 1> cost;
    for (std::size_t size = 1; size <= kSizes; ++size) {
      // The transform is off by less than 1/8.
      const double least =
          (std::ldexp(1.0, static_cast<int>(size) - 1) - 0.5) * q.step[place] - 0.125;
      cost[size] = price * weight * least * least;
    }
    best[i] = -1e30;
    for (std::size_t j = 0; j < i; ++j) {
      const std::size_t run = i - j - 1;
      const double start = best[j] + sixteenZeros * static_cast<double>(run / 16);
      for (std::size_t size = 1; size <= kSizes; ++size)
        best[i] = std::max(best[i], start + bits[run % 16][size] - cost[size]);
    }
    most = std::max(most, best[i] + (i < 63 ? end : 0.0));
  }
  return most;
}

// Prices of a place of a block, a quarter of a bit apart.
double placeOf(int i) { return 1.25 + 0.25 * i; }

// Bits for each unit of a level's size with which the places of a run of zeros and of the level
// behind it, at their price, pay for every symbol; none when the price is too low for 16 zeros.
double unitFor(const JpegHuffmanCodes& codes, double place) {
  if (symbolBits(codes, 0xF0, 0) > 16 * place) return std::numeric_limits<double>::infinity();
  double unit = 0;
  for (int run = 0; run < 16; ++run)
    for (int size = 1; size <= kSizes; ++size) {
      const double unpaid = symbolBits(codes, run << 4 | size, size) - place * (run + 1);
      unit = std::max(unit, unpaid / std::min(1 << (size - 1), 8));
    }
  return unit;
}

double mostMeanBits(const JpegHuffmanCodes& codes) {
  double most = 0;
  for (int size = 0; size <= 11; ++size) most = std::max(most, symbolBits(codes, size, size));
  return most;
}

}  // namespace

JpegStreamBound::JpegStreamBound(const JpegCoding& coding, int width, int height)
    : width_(width), height_(height), mcuWidth_(coding.mcuWidth()), mcuHeight_(coding.mcuHeight()) {
  for (int c = 0; c < 3; ++c) {
    Component& component = components_[c];
    const bool reduced = c > 0 && coding.hFactor > 1;
    component.blockWidth = reduced ? mcuWidth_ : 8;
    component.blockHeight = reduced ? mcuHeight_ : 8;
    // The difference of two means is one of sums of up to four differences: by Cauchy's inequality
    // its square takes part in at most twice their squares, halved again by the other axis.
    // Rounding changes each of the 112 differences by at most 1, and (a + b)^2 <= 1.25 a^2 + 5 b^2.
    component.share = reduced ? 1.25 * 2 / coding.vFactor : 1.0;
    component.extra = reduced ? 5.0 * 112 : 0.0;
    const bool chroma = coding.tablesOf(c) == 1;
    const JpegHuffmanCodes& codes = jpegHuffmanCodes(true, chroma);
    component.meanBits = mostMeanBits(jpegHuffmanCodes(false, chroma));
    component.endBits = symbolBits(codes, 0, 0);
    for (int i = 0; i < kPlaces; ++i) {
      double& unit = units_[i];
      unit = std::max(unit, unitFor(codes, placeOf(i)));
    }
    for (int i = 0; i < kPrices; ++i)
      component.bitsPerBlock[i] =
          c == 2 ? components_[1].bitsPerBlock[i]
                 : component.meanBits +
                       mostBits(codes, coding.quantiser[coding.tablesOf(c)], priceOf(i));
  }
}

bool JpegStreamBound::fits(const RoughnessMap& map, std::int64_t room) const {
  constexpr int kCell = RoughnessMap::kCell, kParts = kCell / RoughnessMap::kPart;
  // How many blocks of a size can begin inside cell i of an axis: from 7 before the picture on, to
  // the last that a whole MCU around its last row or column wants.
  const auto blocksIn = [](int i, int picture, int block, int mcu) {
    const int start = i * kCell - RoughnessMap::kBefore;
    const int first = std::max(start, -7);
    const int behind = std::min(start + kCell, picture + 8 + mcu - block);
    return (std::max(behind - first, 0) + block - 1) / block;
  };
  double bits = 0;
  for (std::size_t c = 0; c < components_.size(); ++c) {
    const Component& component = components_[c];
    // Blocks that begin in a cell reach beyond it by less than their size.
    const int partsX = kParts + component.blockWidth / RoughnessMap::kPart;
    const int partsY = kParts + component.blockHeight / RoughnessMap::kPart;
    for (int row = 0; (row + 1) * kParts < map.rows; ++row)
      for (int column = 0; (column + 1) * kParts < map.columns; ++column) {
        double rough = 0;
        for (int y = row * kParts; y < std::min(row * kParts + partsY, map.rows); ++y)
          for (int x = column * kParts; x < std::min(column * kParts + partsX, map.columns); ++x)
            rough += map.squares[c].row(y)[x];
        const double blocks = blocksIn(column, width_, component.blockWidth, mcuWidth_) *
                              blocksIn(row, height_, component.blockHeight, mcuHeight_);
        rough = rough * component.share + component.extra * blocks;
        double least = std::numeric_limits<double>::infinity();
        for (int i = 0; i < kPrices; ++i)
          least = std::min(least, blocks * component.bitsPerBlock[i] + rough * priceOf(i));
        bits += least;
      }
  }
  constexpr double kSlack = 1.001;  // for the rounding of the sums
  return bits * kSlack / 8 + kLastByte <= static_cast<double>(room);
}

bool JpegStreamBound::fits(double levels, std::int64_t room) const {
  const double mcus = (static_cast<double>((width_ + 7) / mcuWidth_) + 1) *
                      (static_cast<double>((height_ + 7) / mcuHeight_) + 1);
  for (int i = 0; i < kPlaces; ++i) {
    double bits = units_[i] * levels;
    for (const Component& component : components_)
      bits += mcus * (mcuWidth_ / component.blockWidth) * (mcuHeight_ / component.blockHeight) *
              (component.meanBits + component.endBits + 63 * placeOf(i));
    if (bits / 8 + kLastByte <= static_cast<double>(room)) return true;
  }
  return false;
}

}  // namespace vx
