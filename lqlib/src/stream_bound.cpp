#include "lqlib/src/stream_bound.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vx {
namespace {

constexpr int kSizes = 11;  // magnitude categories of a coefficient
constexpr double kZeroBits = 1.0;

// Most bits of a coefficient of a category beyond the zeros in front of it, which pay for
// themselves.
std::array<double, kSizes + 1> coefficientBits(bool chroma) {
  const JpegHuffmanCodes& codes = jpegHuffmanCodes(true, chroma);
  std::array<double, kSizes + 1> bits{};
  bits[0] = kZeroBits;
  for (std::size_t size = 1; size <= 10; ++size)
    for (std::size_t run = 0; run < 16; ++run)
      bits[size] = std::max(bits[size], static_cast<double>(codes.length[run << 4 | size]) +
                                            static_cast<double>(size) -
                                            kZeroBits * static_cast<double>(run));
  bits[kSizes] = bits[10] + 1;
  return bits;
}

}  // namespace

JpegStreamBound::JpegStreamBound(const JpegCoding& coding, int width, int height) {
  const double mcus = (static_cast<double>((width - 1) / coding.mcuWidth()) + 1) *
                      (static_cast<double>((height - 1) / coding.mcuHeight()) + 1);
  const double samplesPerSample = coding.hFactor * coding.vFactor;
  for (int c = 0; c < 3; ++c) {
    Component& component = components_[static_cast<std::size_t>(c)];
    component.blocks = mcus * (c == 0 ? samplesPerSample : 1.0);
    // A mean of n samples has at most 1/n of their energy. It is rounded by at most a half, which
    // adds 64/4 per block, and by (a + b)^2 <= 1.25 a^2 + 5 b^2.
    const bool reduced = c > 0 && coding.hFactor > 1;
    component.energyShare = reduced ? 1.25 / samplesPerSample : 1.0;
    component.energyExtra = reduced ? 5.0 * 64 / 4 : 0.0;
    const bool chroma = coding.tablesOf(c) == 1;
    const auto bits = coefficientBits(chroma);
    const prim::JpegQuantiser& q = coding.quantiser[coding.tablesOf(c)];
    for (int i = 0; i < kPrices; ++i) {
      const double price = std::ldexp(1.0, -i);
      // The code and the bits of a mean, and a block's end beyond the zeros it stands for.
      double sum = 11.0 + 11.0 + 4.0;
      for (int k = 1; k < 64; ++k) {
        double most = bits[0];
        for (std::size_t size = 1; size <= kSizes; ++size) {
          // The transform is off by less than 1/8.
          const double least = std::max(
              0.0, (std::ldexp(1.0, static_cast<int>(size) - 1) - 0.5) * q.step[k] - 0.125);
          most = std::max(most, bits[size] - price * least * least);
        }
        sum += most;
      }
      component.bitsPerBlock[static_cast<std::size_t>(i)] = sum;
    }
  }
}

bool JpegStreamBound::fits(const ComponentEnergies& energies, std::int64_t room) const {
  for (int i = 0; i < kPrices; ++i) {
    double bits = 0;
    for (std::size_t c = 0; c < components_.size(); ++c) {
      const Component& component = components_[c];
      const double energy =
          energies[c] * component.energyShare + component.energyExtra * component.blocks;
      bits += component.blocks * component.bitsPerBlock[static_cast<std::size_t>(i)] +
              energy * std::ldexp(1.0, -i);
    }
    constexpr double kSlack = 1.001;  // for the rounding of the sums
    if (2.0 * (bits * kSlack / 8 + 2) <= static_cast<double>(room)) return true;
  }
  return false;
}

}  // namespace vx
