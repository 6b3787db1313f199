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

// The vector bodies work in 16-bit lanes: every Y, Cb and Cr.
TEST(Jpeg, coloursAreThoseOfTheFormulasForAllBytes) {
  constexpr int kCount = 65536;
  std::vector<std::uint8_t> y(kCount), cb(kCount), cr(kCount);
  std::vector<std::uint16_t> wanted[3], sums[3];
  for (int c = 0; c < 3; ++c) wanted[c].resize(kCount), sums[c].resize(kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    cb[i] = static_cast<std::uint8_t>(i);
    cr[i] = static_cast<std::uint8_t>(i >> 8);
  }
  for (int luma = 0; luma < 256; ++luma) {
    std::fill(y.begin(), y.end(), static_cast<std::uint8_t>(luma));
    const auto sum = [](int v) {
      return static_cast<std::uint16_t>(std::clamp(v, 0, 255) + 16065);
    };
    for (std::size_t i = 0; i < kCount; ++i) {
      wanted[0][i] = sum(luma + ((91881 * cr[i] - 11760828) >> 16));
      wanted[1][i] = sum(luma + ((-22554 * cb[i] - 46802 * cr[i] + 8877496) >> 16));
      wanted[2][i] = sum(luma + ((116130 * cb[i] - 14864613) >> 16));
    }
    test::onEveryVariant([&] {
      for (auto& row : sums) std::fill(row.begin(), row.end(), std::uint16_t{16065});
      ASSERT_EQ(primJpegAddYcc_8u16u(y.data(), cb.data(), cr.data(), sums[0].data(), sums[1].data(),
                                     sums[2].data(), kCount),
                kStatusOk);
      for (int c = 0; c < 3; ++c) ASSERT_TRUE(sums[c] == wanted[c]) << luma << ", channel " << c;
    });
  }
}

TEST(Jpeg, samplesAreThoseOfTheFormulasForAllPixels) {
  constexpr int kCount = 65536;
  std::vector<std::uint8_t> rgb(3 * kCount);
  std::vector<std::int16_t> wanted[3], samples[3];
  for (int c = 0; c < 3; ++c) wanted[c].resize(kCount), samples[c].resize(kCount);
  for (int r = 0; r < 256; ++r) {
    for (int i = 0; i < kCount; ++i) {
      const int g = i & 255, b = i >> 8;
      const auto at = static_cast<std::size_t>(i);
      rgb[3 * at] = static_cast<std::uint8_t>(r);
      rgb[3 * at + 1] = static_cast<std::uint8_t>(g);
      rgb[3 * at + 2] = static_cast<std::uint8_t>(b);
      wanted[0][at] = static_cast<std::int16_t>((77 * r + 150 * g + 29 * b - 32640) >> 8);
      wanted[1][at] = static_cast<std::int16_t>((-43 * r - 85 * g + 128 * b + 128) >> 8);
      wanted[2][at] = static_cast<std::int16_t>((128 * r - 107 * g - 21 * b + 128) >> 8);
    }
    test::onEveryVariant([&] {
      ASSERT_EQ(primJpegYcc_8u16s(rgb.data(), samples[0].data(), samples[1].data(),
                                  samples[2].data(), kCount),
                kStatusOk);
      for (int c = 0; c < 3; ++c) ASSERT_TRUE(samples[c] == wanted[c]) << r << ", channel " << c;
    });
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

TEST(Jpeg, transformsAreExactToASixteenthOfALevel) {
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
    for (int block = 0; block < kBlocks; ++block) {
      const std::int16_t* level = &levels[static_cast<std::size_t>(64 * block)];
      for (int k = 0; k < 64; ++k) {
        double coefficient = 0, sample = 128;
        for (int n = 0; n < 64; ++n) {
          coefficient +=
              blocks.samples[n % 8][8 * block + n / 8] * basis(k / 8, n / 8) * basis(k % 8, n % 8);
          sample += level[n] * basis(n / 8, k / 8) * basis(n % 8, k % 8);
        }
        ASSERT_NEAR(level[k], coefficient, kMost);
        ASSERT_NEAR(back[static_cast<std::size_t>(8 * kBlocks * (k % 8) + 8 * block + k / 8)],
                    std::clamp(sample, 0.0, 255.0), kMost);
      }
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
