#include "lqlib/src/stream_bound.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace vx {
namespace {

constexpr double kLastByte = 2;  // of a scan, filled with ones
constexpr int kSizes = 10;       // magnitude categories of a coefficient

// Prices of a unit of roughness, a factor of two apart.
double priceOf(int i) { return std::ldexp(1.0, -3 - i); }

// Most bits that a symbol with its magnitude of `size` bits puts into the stream, stuffed bytes
// included.
//
// A byte of ones lies between the last zero of one code and the first zero of the next, since every
// code has a zero: a stretch of a + p ones, where a are those behind the last zero of a code with
// all of its magnitude, and p those that the next code begins with. It can hold (a + p) / 8 such
// bytes, and for any t from 1 to 8 that is at most (a + t - 1) / 8 + (p + 8 - t) / 8: each symbol
// can be charged for both of its ends without a look at its neighbours. t = 4 leaves short symbols
// free.
double symbolBits(const JpegHuffmanCodes& codes, int symbol, int size) {
  const auto index = static_cast<std::size_t>(symbol);
  const int length = codes.length[index];
  const unsigned zeros = ~unsigned{codes.code[index]} & ((1u << length) - 1);
  const int before = length - std::bit_width(zeros);
  const int behind = std::countr_zero(zeros) + size;
  constexpr int kSplit = 4;
  const int stuffed = (behind + kSplit - 1) / 8 + (before + 8 - kSplit) / 8;
  return length + size + 8 * stuffed;
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
      bits[static_cast<std::size_t>(run)][static_cast<std::size_t>(size)] =
          symbolBits(codes, run << 4 | size, size);
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

// Bits for each unit of a level's size.
double unitOf(int i) { return 5.25 + i; }

// The price of a zero with which `unit` bits for each unit of a level's size pay for every symbol.
double zeroPrice(const JpegHuffmanCodes& codes, double unit) {
  double price = symbolBits(codes, 0xF0, 0) / 16;
  for (int run = 0; run < 16; ++run)
    for (int size = 1; size <= kSizes; ++size) {
      const double unpaid =
          symbolBits(codes, run << 4 | size, size) - unit * std::min(1 << (size - 1), 8);
      if (unpaid > 0) price = std::max(price, run > 0 ? unpaid / run : 1e9);
    }
  return price;
}

double mostMeanBits(const JpegHuffmanCodes& codes) {
  double most = 0;
  for (int size = 0; size <= 11; ++size) most = std::max(most, symbolBits(codes, size, size));
  return most;
}

}  // namespace

JpegStreamBound::JpegStreamBound(const JpegCoding& coding, int width, int height) {
  const double mcus = (static_cast<double>((width - 1) / coding.mcuWidth()) + 1) *
                      (static_cast<double>((height - 1) / coding.mcuHeight()) + 1);
  const double samplesPerSample = coding.hFactor * coding.vFactor;
  for (int c = 0; c < 3; ++c) {
    Component& component = components_[static_cast<std::size_t>(c)];
    component.blocks = mcus * (c == 0 ? samplesPerSample : 1.0);
    // The difference of two means is one of sums of up to four differences: by Cauchy's inequality
    // its square takes part in at most twice their squares, halved again by the other axis.
    // Rounding changes each of the 112 differences by at most 1, and (a + b)^2 <= 1.25 a^2 + 5 b^2.
    const bool reduced = c > 0 && coding.hFactor > 1;
    component.share = reduced ? 1.25 * 2 / coding.vFactor : 1.0;
    component.extra = reduced ? 5.0 * 112 : 0.0;
    if (c == 2) {
      component.bitsPerBlock = components_[1].bitsPerBlock;
      component.zeros = components_[1].zeros;
      continue;
    }
    const bool chroma = coding.tablesOf(c) == 1;
    const double meanBits = mostMeanBits(jpegHuffmanCodes(false, chroma));
    const JpegHuffmanCodes& codes = jpegHuffmanCodes(true, chroma);
    for (int i = 0; i < kUnits; ++i)
      component.zeros[static_cast<std::size_t>(i)] =
          meanBits + symbolBits(codes, 0, 0) + 63 * zeroPrice(codes, unitOf(i));
    for (int i = 0; i < kPrices; ++i)
      component.bitsPerBlock[static_cast<std::size_t>(i)] =
          meanBits + mostBits(codes, coding.quantiser[coding.tablesOf(c)], priceOf(i));
  }
}

bool JpegStreamBound::fits(const ComponentRoughness& roughness, std::int64_t room) const {
  for (int i = 0; i < kPrices; ++i) {
    double bits = 0;
    for (std::size_t c = 0; c < components_.size(); ++c) {
      const Component& component = components_[c];
      const double rough = roughness[c] * component.share + component.extra * component.blocks;
      bits += component.blocks * component.bitsPerBlock[static_cast<std::size_t>(i)] +
              rough * priceOf(i);
    }
    constexpr double kSlack = 1.001;  // for the rounding of the sums
    if (bits * kSlack / 8 + kLastByte <= static_cast<double>(room)) return true;
  }
  return false;
}

bool JpegStreamBound::fits(double levels, std::int64_t room) const {
  for (int i = 0; i < kUnits; ++i) {
    double bits = unitOf(i) * levels;
    for (const Component& component : components_)
      bits += component.blocks * component.zeros[static_cast<std::size_t>(i)];
    if (bits / 8 + kLastByte <= static_cast<double>(room)) return true;
  }
  return false;
}

}  // namespace vx
