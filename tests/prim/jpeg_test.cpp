#include "prim/jpeg.h"

#include "jpeg/tables.h"
#include "tests/prim/plane.h"
#include "tests/support/variants.h"

namespace {

using namespace vx;
using namespace vx::prim;

constexpr int kPairs = 65536;

// Every triple of bytes in every body, since the vector bodies work in 16-bit lanes: convert(bytes,
// outputs) turns three rows of bytes into three that begin as `start`, wanted(channel, triple)
// tells what each element becomes.
template <class T, class Convert, class Wanted>
void expectForAllBytes(T start, Convert convert, Wanted wanted) {
  std::vector<std::vector<U8>> bytes(3, std::vector<U8>(kPairs));
  std::vector<std::vector<T>> expected(3, std::vector<T>(kPairs)), outputs(3);
  for (int first = 0; first < 256; ++first) {
    for (std::size_t i = 0; i < kPairs; ++i) {
      const int triple[] = {first, static_cast<int>(i & 255), static_cast<int>(i >> 8)};
      for (std::size_t c = 0; c < 3; ++c) {
        bytes[c][i] = static_cast<U8>(triple[c]);
        expected[c][i] = static_cast<T>(wanted(c, triple));
      }
    }
    test::onEveryVariant([&] {
      outputs.assign(3, std::vector<T>(kPairs, start));
      ASSERT_EQ(convert(bytes, outputs), kStatusOk);
      ASSERT_TRUE(outputs == expected) << first;
    });
  }
}

TEST(Jpeg, coloursAreThoseOfTheFormulasForAllBytes) {
  expectForAllBytes(
      U16{16065},
      [](const auto& ycc, auto& sums) {
        return call(primJpegAddYcc_8u16u, ycc[0], ycc[1], ycc[2], sums[0], sums[1], sums[2],
                    kPairs);
      },
      [](std::size_t channel, const auto& ycc) {
        const auto& [luma, blue, red] = ycc;
        const int chroma = channel == 0   ? 91881 * red - 11760828
                           : channel == 1 ? -22554 * blue - 46802 * red + 8877496
                                          : 116130 * blue - 14864613;
        return std::clamp(luma + (chroma >> 16), 0, 255) + 16065;
      });
}

TEST(Jpeg, samplesAreThoseOfTheFormulasForAllPixels) {
  std::vector<U8> rgb(3 * kPairs);
  expectForAllBytes(
      S16{0},
      [&](const auto& bytes, auto& samples) {
        for (std::size_t i = 0; i < rgb.size(); ++i) rgb[i] = bytes[i % 3][i / 3];
        return call(primJpegYcc_8u16s, rgb, samples[0], samples[1], samples[2], kPairs);
      },
      [](std::size_t channel, const auto& pixel) {
        const auto& [r, g, b] = pixel;
        return (channel == 0   ? 77 * r + 150 * g + 29 * b - 32640
                : channel == 1 ? -43 * r - 85 * g + 128 * b + 128
                               : 128 * r - 107 * g - 21 * b + 128) >>
               8;
      });
}

TEST(Jpeg, upsamplingIsTheTriangleWithAlternatingRounding) {
  constexpr int kLength = 300;
  std::mt19937 rng(5);
  Plane<U8> near(kLength, 1, 1), far(kLength, 1, 1), row(2 * kLength, 1), rows(row);
  Plane<U16> sums(2 * kLength, 1);
  near.randomise(rng, 0, 255);
  far.randomise(rng, 0, 255);
  sums.draw([] { return 65500; });
  ASSERT_EQ(primJpegUpsample_8u(near.data(), row.data(), kLength), kStatusOk);
  ASSERT_EQ(primJpegUpsampleRows_8u(near.data(), far.data(), rows.data(), kLength), kStatusOk);
  ASSERT_EQ(primJpegAdd_8u16u(row.data(), sums.data(), 2 * kLength), kStatusOk);
  const auto both = [&](int x) { return 3 * near.at(x, 0) + far.at(x, 0); };
  const auto beside = [](int x) { return x / 2 + (x % 2 != 0 ? 1 : -1); };
  expectPlane(row, [&](int x, int) {
    return (3 * near.at(x / 2, 0) + near.at(beside(x), 0) + 1 + x % 2) / 4;
  });
  expectPlane(rows,
              [&](int x, int) { return (3 * both(x / 2) + both(beside(x)) + 8 - x % 2) / 16; });
  expectPlane(sums, [&](int x, int) { return 65500 + row.at(x, 0); });
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

// Wide, narrow and two-valued samples, eight rows of all blocks side by side.
struct Blocks {
  Plane<S16> samples{8 * kBlocks, 8};
  S16 columns[64 * kBlocks];

  explicit Blocks(unsigned seed) {
    std::mt19937 rng(seed);
    samples.set([&](int x, int) {
      const int block = x / 8, spread = block % 3 == 0 ? 6 : 128;
      const int drawn = std::uniform_int_distribution<int>(-spread, spread)(rng);
      return block % 4 != 1 ? drawn : drawn < 0 ? -128 : 127;
    });
    const S16* rows[8];
    for (int y = 0; y < 8; ++y) rows[y] = &samples.at(0, y);
    EXPECT_EQ(primJpegForward_16s(rows, columns, 8 * kBlocks), kStatusOk);
  }
};

// One pass of a transform: the sum of value(i) with the rounded cosines of frequency and place, one
// of which is i and the other given, itself rounded half up.
template <class Value>
int pass(double scale, int shift, bool forward, int given, Value value) {
  std::int64_t sum = std::int64_t{1} << (shift - 1);
  for (int i = 0; i < 8; ++i) {
    const int frequency = forward ? given : i, place = forward ? i : given;
    const double basis = (frequency == 0 ? std::sqrt(0.125) : 0.5) *
                         std::cos((2 * place + 1) * frequency * std::numbers::pi / 16);
    sum += std::llround(2 * scale * basis) * value(i);
  }
  return static_cast<int>(std::clamp<std::int64_t>(sum >> shift, -32768, 32767));
}

TEST(Jpeg, transformsAreTheStatedIntegers) {
  JpegQuantTable ones;
  ones.fill(1);
  const JpegQuantiser quantiser = jpegQuantiser(ones);
  test::onEveryVariant([&] {
    const Blocks blocks(3);
    S16 levels[64 * kBlocks];
    Plane<U8> back(8 * kBlocks, 8);
    ASSERT_EQ(primJpegQuantise_16s(blocks.columns, levels, kBlocks, &quantiser), kStatusOk);
    ASSERT_EQ(call(primJpegInverse_16s8u, levels, back, kBlocks), kStatusOk);
    for (int k = 0; k < 64 * kBlocks; ++k) {
      const int block = k / 64, u = k / 8 % 8, v = k % 8;
      const S16 *level = levels + 64 * block, *columns = blocks.columns + 64 * block;
      const int column =
          pass(22528, 10, true, v, [&](int n) { return blocks.samples.at(8 * block + u, n); });
      ASSERT_EQ(columns[8 * u + v], column);
      const int scaled = pass(22341.8, 16, true, u, [=](int n) { return columns[8 * n + v]; });
      ASSERT_EQ(level[8 * u + v], (scaled < 0 ? -1 : 1) * ((std::abs(scaled) + 15) / 30));
      const int sample = pass(11915.6, 20, false, v, [=](int f) {
        return pass(22528, 10, false, u, [=](int n) { return level[8 * n + f]; });
      });
      ASSERT_EQ(back.at(8 * block + u, v), std::clamp(sample + 128, 0, 255));
    }
  });
}

// That of vxUnblock without a stream is held to that of the codec; it counts levels as they are.
TEST(Jpeg, levelsAreCountedUpToEight) {
  for (const int quality : {1, 10, 50, 90, 100}) {
    const JpegQuantiser quantiser = jpegQuantiser(jpegQuantTable(quality % 2 == 0, quality));
    const Blocks blocks(static_cast<unsigned>(quality));
    S16 levels[64 * kBlocks];
    double sum = 0, wanted = 0;
    primJpegLevels_16s(blocks.columns, kBlocks, &quantiser, &sum);
    primJpegQuantise_16s(blocks.columns, levels, kBlocks, &quantiser);
    for (int i = 0; i < 64 * kBlocks; ++i)
      if (i % 64 != 0) wanted += std::min(8, std::abs(int{levels[i]}));
    EXPECT_EQ(sum, wanted) << quality;
  }
}

}  // namespace
