#include "prim/jpeg.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numbers>
#include <random>
#include <vector>

#include "jpeg/tables.h"
#include "tests/support/variants.h"

namespace {

using namespace vx;
using namespace vx::prim;

constexpr int kPairs = 65536;

// Calls convert(first, outputs) in every body, for 256 values of `first` beside every pair of bytes
// (i & 255, i >> 8), and expects wanted(channel, first, i & 255, i >> 8) in the three outputs,
// whose elements begin as `start`.
template <class T, class Convert, class Wanted>
void expectForAllBytes(T start, Convert convert, Wanted wanted) {
  std::vector<T> expected[3], outputs[3];
  for (int c = 0; c < 3; ++c) expected[c].resize(kPairs), outputs[c].resize(kPairs);
  for (int first = 0; first < 256; ++first) {
    for (int c = 0; c < 3; ++c)
      for (int i = 0; i < kPairs; ++i)
        expected[c][std::size_t(i)] = static_cast<T>(wanted(c, first, i & 255, i >> 8));
    test::onEveryVariant([&] {
      for (auto& row : outputs) std::fill(row.begin(), row.end(), start);
      ASSERT_EQ(convert(first, outputs), kStatusOk);
      for (int c = 0; c < 3; ++c) ASSERT_TRUE(outputs[c] == expected[c]) << first << ", " << c;
    });
  }
}

// The vector bodies work in 16-bit lanes: every Y, Cb and Cr.
TEST(Jpeg, coloursAreThoseOfTheFormulasForAllBytes) {
  std::vector<std::uint8_t> y(kPairs), cb(kPairs), cr(kPairs);
  for (std::size_t i = 0; i < kPairs; ++i) {
    cb[i] = static_cast<std::uint8_t>(i);
    cr[i] = static_cast<std::uint8_t>(i >> 8);
  }
  expectForAllBytes(
      std::uint16_t{16065},
      [&](int luma, auto& sums) {
        std::fill(y.begin(), y.end(), static_cast<std::uint8_t>(luma));
        return primJpegAddYcc_8u16u(y.data(), cb.data(), cr.data(), sums[0].data(), sums[1].data(),
                                    sums[2].data(), kPairs);
      },
      [](int channel, int luma, int blue, int red) {
        const int chroma = channel == 0   ? 91881 * red - 11760828
                           : channel == 1 ? -22554 * blue - 46802 * red + 8877496
                                          : 116130 * blue - 14864613;
        return std::clamp(luma + (chroma >> 16), 0, 255) + 16065;
      });
}

TEST(Jpeg, samplesAreThoseOfTheFormulasForAllPixels) {
  std::vector<std::uint8_t> rgb(3 * kPairs);
  expectForAllBytes(
      std::int16_t{0},
      [&](int r, auto& samples) {
        for (std::size_t i = 0; i < kPairs; ++i) {
          rgb[3 * i] = static_cast<std::uint8_t>(r);
          rgb[3 * i + 1] = static_cast<std::uint8_t>(i);
          rgb[3 * i + 2] = static_cast<std::uint8_t>(i >> 8);
        }
        return primJpegYcc_8u16s(rgb.data(), samples[0].data(), samples[1].data(),
                                 samples[2].data(), kPairs);
      },
      [](int channel, int r, int g, int b) {
        return (channel == 0   ? 77 * r + 150 * g + 29 * b - 32640
                : channel == 1 ? -43 * r - 85 * g + 128 * b + 128
                               : 128 * r - 107 * g - 21 * b + 128) >>
               8;
      });
}

TEST(Jpeg, upsamplingIsTheTriangleWithAlternatingRounding) {
  constexpr int kLength = 300;
  std::mt19937 rng(5);
  std::vector<std::uint8_t> near(kLength + 2), far(kLength + 2), row(2 * kLength), rows(row);
  std::vector<std::uint16_t> sums(2 * kLength, 65500);
  for (auto& v : near) v = static_cast<std::uint8_t>(rng());
  for (auto& v : far) v = static_cast<std::uint8_t>(rng());
  ASSERT_EQ(primJpegUpsample_8u(&near[1], row.data(), kLength), kStatusOk);
  ASSERT_EQ(primJpegUpsampleRows_8u(&near[1], &far[1], rows.data(), kLength), kStatusOk);
  ASSERT_EQ(primJpegAdd_8u16u(row.data(), sums.data(), 2 * kLength), kStatusOk);
  for (std::size_t i = 0; i < 2 * kLength; ++i) {
    const std::size_t odd = i % 2, at = i / 2 + 1, beside = odd != 0 ? at + 1 : at - 1;
    const auto both = [&](std::size_t k) { return 3u * near[k] + far[k]; };
    EXPECT_EQ(row[i], (3 * near[at] + near[beside] + 1 + odd) / 4);
    EXPECT_EQ(rows[i], (3 * both(at) + both(beside) + 8 - odd) / 16);
    EXPECT_EQ(sums[i], (65500u + row[i]) % 65536);
  }
}

// Two multiplications and shifts in place of the division, for every coefficient of samples within
// -128..128, which is at most 1024, and half a step.
TEST(Jpeg, quantisersDivideExactly) {
  for (unsigned step = 1; step <= 255; ++step) {
    JpegQuantTable table;
    table.fill(static_cast<std::uint8_t>(step));
    const JpegQuantiser q = jpegQuantiser(table);
    const unsigned divisor = step * kJpegCoefficientScale;
    ASSERT_EQ(q.half[63], divisor / 2);
    const unsigned top = kJpegCoefficientScale * 1025 + divisor / 2;
    for (unsigned m = 0; m <= top; ++m)
      ASSERT_EQ(((m * q.reciprocal[5] >> 16) * q.scale[5]) >> 16, m / divisor) << m << "/" << step;
  }
}

constexpr int kBlocks = 96;

struct Blocks {
  // eight rows of all blocks side by side
  std::int16_t samples[8][8 * kBlocks];
  std::int16_t columns[64 * kBlocks];

  explicit Blocks(std::mt19937& rng) {
    const std::int16_t* rows[8];
    for (int y = 0; y < 8; ++y) {
      rows[y] = samples[y];
      for (int x = 0; x < 8 * kBlocks; ++x) {
        const int block = x / 8, spread = block % 3 == 0 ? 6 : 128;
        const bool ends = block % 4 == 1;
        const int drawn = static_cast<int>(rng() % static_cast<unsigned>(2 * spread + 1)) - spread;
        samples[y][x] = static_cast<std::int16_t>(ends ? (drawn < 0 ? -128 : 127) : drawn);
      }
    }
    EXPECT_EQ(primJpegForward_16s(rows, columns, 8 * kBlocks), kStatusOk);
  }
};

double basis(int frequency, int place) {
  return (frequency == 0 ? std::sqrt(0.125) : 0.5) *
         std::cos((2 * place + 1) * frequency * std::numbers::pi / 16);
}

// One pass of a transform: the sum of value(i) with the rounded cosines, itself rounded half up.
template <class Weight, class Value>
int pass(double scale, int shift, Weight weight, Value value) {
  std::int64_t sum = std::int64_t{1} << (shift - 1);
  for (int i = 0; i < 8; ++i) sum += std::llround(2 * scale * weight(i)) * value(i);
  return static_cast<int>(std::clamp<std::int64_t>(sum >> shift, -32768, 32767));
}

// The integers that the header states, and so near the real numbers as it says.
TEST(Jpeg, transformsAreTheStatedIntegersWithinASixteenthOfALevel) {
  JpegQuantTable ones;
  ones.fill(1);
  const JpegQuantiser quantiser = jpegQuantiser(ones);
  test::onEveryVariant([&] {
    std::mt19937 rng(3);
    const Blocks blocks(rng);
    std::vector<std::int16_t> levels(64 * kBlocks);
    std::vector<std::uint8_t> back(64 * kBlocks);
    ASSERT_EQ(primJpegQuantise_16s(blocks.columns, levels.data(), kBlocks, &quantiser), kStatusOk);
    ASSERT_EQ(primJpegInverse_16s8u(levels.data(), back.data(), 8 * kBlocks, kBlocks), kStatusOk);
    constexpr double kMost = 0.5 + 1.0 / 16;
    for (int k = 0; k < 64 * kBlocks; ++k) {
      const int block = k / 64, u = k / 8 % 8, v = k % 8;
      const std::int16_t* level = levels.data() + 64 * block;
      const std::int16_t* columns = blocks.columns + 64 * block;
      const int column = pass(
          22528, 10, [&](int n) { return basis(v, n); },
          [&](int n) { return blocks.samples[n][8 * block + u]; });
      ASSERT_EQ(columns[8 * u + v], column);
      const int scaled = pass(
          22341.8, 16, [&](int n) { return basis(u, n); },
          [&](int n) { return columns[8 * n + v]; });
      ASSERT_EQ(level[8 * u + v], (scaled < 0 ? -1 : 1) * ((std::abs(scaled) + 15) / 30));
      const int sample = pass(
          11915.6, 20, [&](int f) { return basis(f, v); },
          [&](int f) {
            return pass(
                22528, 10, [&](int n) { return basis(n, u); },
                [&](int n) { return level[8 * n + f]; });
          });
      const int got = back[static_cast<std::size_t>(8 * kBlocks * v + 8 * block + u)];
      ASSERT_EQ(got, std::clamp(sample + 128, 0, 255));
      double exactLevel = 0, exactSample = 128;
      for (int n = 0; n < 64; ++n) {
        exactLevel += blocks.samples[n % 8][8 * block + n / 8] * basis(u, n / 8) * basis(v, n % 8);
        exactSample += level[n] * basis(n / 8, u) * basis(n % 8, v);
      }
      ASSERT_NEAR(level[8 * u + v], exactLevel, kMost);
      ASSERT_NEAR(got, std::clamp(exactSample, 0.0, 255.0), kMost);
    }
  });
}

// The round trip without a stream is quantisation and decoding, and counts levels as they are.
TEST(Jpeg, requantisingIsQuantisingAndDecoding) {
  for (const int quality : {1, 10, 50, 90, 100}) {
    const JpegQuantiser quantiser = jpegQuantiser(jpegQuantTable(quality % 2 == 0, quality));
    test::onEveryVariant([&] {
      std::mt19937 rng(static_cast<unsigned>(quality));
      const Blocks blocks(rng);
      std::vector<std::int16_t> levels(64 * kBlocks);
      std::vector<std::uint8_t> direct(64 * kBlocks), decoded(64 * kBlocks);
      double sum = 0, wanted = 0;
      primJpegRequantise_16s8u(blocks.columns, direct.data(), 8 * kBlocks, kBlocks, &quantiser);
      primJpegLevels_16s(blocks.columns, kBlocks, &quantiser, &sum);
      primJpegQuantise_16s(blocks.columns, levels.data(), kBlocks, &quantiser);
      for (std::size_t i = 0; i < levels.size(); ++i) {
        if (i % 64 != 0) wanted += std::min(8, std::abs(int{levels[i]}));
        levels[i] = static_cast<std::int16_t>(levels[i] * quantiser.step[i % 64]);
      }
      primJpegInverse_16s8u(levels.data(), decoded.data(), 8 * kBlocks, kBlocks);
      EXPECT_TRUE(direct == decoded) << quality;
      EXPECT_EQ(sum, wanted) << quality;
    });
  }
}

}  // namespace
