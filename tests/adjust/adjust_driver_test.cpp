#include "adjust/adjust_driver.h"

#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "tests/adjust/host.h"
#include "tests/support/images.h"

namespace {

using vx::AdjustSettings;
using namespace vx::test;

constexpr AdjustSettings kBrighter = {.lumaGamma = 1.0f};
constexpr NoiseProfile kProfile = {0.3f, 0.05f, 0.0f, 0.3f, 0.02f, 0.0f};

Picture adjusted(Picture p, const AdjustSettings& settings) {
  EXPECT_EQ(adjust(p, settings), 1);
  return p;
}

// Neutral settings give 8-bit samples back exactly: the trip through hue, lightness and saturation
// moves a float by some 1e-7 and the nearest rounding edge is 4e-5 away. At 16 bits it is 3e-7.
int tolerance(int format) { return deep(format) ? 1 : 0; }

TEST(AdjustDriver, neutralSettingsLeaveAPictureAlone) {
  for (const int format : kFormats)
    for (const auto& [w, h] : {std::pair(64, 48), {2304, 10}, {3100, 40}, {40, 4200}}) {
      Picture p(format, w, h, 7), before(p);
      p.randomise(21, deep(format) ? 32767 : 254);
      before = p;
      ASSERT_EQ(adjust(p), 1);
      EXPECT_LE(p.distance(before), tolerance(format)) << format << " " << w << "x" << h;
      // All but the colour: slack, extra channel.
      p.forEachSample([&](int x, int y, int c) { return before.get(x, y, c); });
      EXPECT_TRUE(p.bytes == before.bytes) << format << " " << w << "x" << h;
    }
}

TEST(AdjustDriver, oddLastColumnAndRowOfOnePieceStay) {
  for (const int format : kFormats) {
    Picture p(format, 31, 17);
    p.forEachSample([&](int, int, int) { return deep(format) ? 9000 : 90; });
    ASSERT_EQ(adjust(p, kBrighter), 1);
    const int old = deep(format) ? 9000 : 90;
    for (int y = 0; y < 17; ++y)
      for (int x = 0; x < 31; ++x)
        EXPECT_EQ(p.get(x, y, 1) == old, x == 30 || y == 16) << x << " " << y;
  }
}

// The single tile of an odd axis sits at its far end.
TEST(AdjustDriver, firstRowOrColumnOfAnOddAxisWithOneTileBecomesBlack) {
  for (const auto& [w, h] : {std::pair(3000, 101), {101, 2304}}) {
    Picture p(1, w, h);
    p.forEachSample([](int, int, int c) { return 100 + c; });
    ASSERT_EQ(adjust(p), 1);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const bool black = (h == 101 && y == 0) || (w % 2 == 1 && x == 0);
        ASSERT_EQ(p.get(x, y, 2), black ? 0 : 102) << x << " " << y;
      }
  }
}

// One call is what a call for each stage gives, but for the rounding between them; grain comes back
// as it was taken out, whatever the curves did.
TEST(AdjustDriver, stagesRunInTheirOrder) {
  AdjustSettings all = {.lumaGamma = 1.5f,
                        .denoiseStrength = 0.6f,
                        .noiseProfile = &kProfile,
                        .unblockStrength = 0.7f};
  Picture p(3, 96, 64);
  p.randomise(31, 6000);
  p.forEachSample(
      [&](int x, int y, int c) { return p.get(x, y, c) + (x / 16 + y / 16) % 2 * 4000; });
  Picture unblocked = adjusted(p, {.unblockStrength = 0.7f});
  Picture smooth = adjusted(unblocked, {.denoiseStrength = 0.6f, .noiseProfile = &kProfile});
  Picture bright = adjusted(smooth, {.lumaGamma = 1.5f}), whole = adjusted(p, all);
  all.grainRestore = 0.5f;
  Picture grainy = adjusted(p, all);
  int apart = 0, apartWithGrain = 0;
  bright.forEachSample([&](int x, int y, int c) {
    const int value = bright.get(x, y, c);
    const int grain = (unblocked.get(x, y, c) - smooth.get(x, y, c)) / 2;
    apart = std::max(apart, std::abs(whole.get(x, y, c) - value));
    apartWithGrain = std::max(apartWithGrain, std::abs(grainy.get(x, y, c) - value - grain));
    return value;
  });
  EXPECT_GT(p.distance(unblocked), 500);
  EXPECT_GT(unblocked.distance(smooth), 500);
  EXPECT_GT(smooth.distance(bright), 500);
  EXPECT_LE(apart, 8);  // is 4; another order makes more than 1000
  EXPECT_LE(apartWithGrain, 8);
}

TEST(AdjustDriver, noiseFilterAndGrainBeginAtTheirThresholds) {
  Picture p(3, 64, 48);
  p.randomise(32, 6000);
  const auto filtered = [&](float strength, float grain) {
    return adjusted(
        p, {.denoiseStrength = strength, .noiseProfile = &kProfile, .grainRestore = grain});
  };
  Picture plain = filtered(0.0f, 0.0f), smooth = filtered(0.6f, 0.0f);
  EXPECT_EQ(filtered(0.001f, 1.0f).distance(plain), 0);
  EXPECT_GT(filtered(0.0011f, 0.0f).distance(plain), 10);
  EXPECT_EQ(filtered(0.6f, 0.01f).distance(smooth), 0);
  EXPECT_GT(filtered(0.6f, 0.0101f).distance(smooth), 10);
}

// In one piece the cut of format 6 runs over three words for each pixel of the even size, from the
// start of the row: over extra words too, and not over all colour.
TEST(AdjustDriver, extraWordsOfFormat6AreCutInOnePieceAlone) {
  for (const int w : {31, 2401}) {
    Picture p(6, w, 5);
    p.randomise(6, 20000);
    const auto extra = [&](int x, int y) { return p.at(x, y, 0) - 2; };
    for (int x = 0; x < w; ++x)
      for (int y = 0; y < 5; ++y) std::fill_n(extra(x, y), 2, std::uint8_t{0xFF});
    ASSERT_EQ(adjust(p), 1);
    for (int x = 0; x < w; ++x)
      for (int y = 0; y < 5; ++y) {
        const bool cut = w == 31 && 4 * x < 3 * 30 && y < 4;
        EXPECT_EQ(extra(x, y)[0] + 256 * extra(x, y)[1], cut ? 32768 : 65535) << x << " " << y;
      }
  }
}

TEST(AdjustDriver, sizeLimitDecidesBetweenOnePieceAndTiles) {
  const auto reports = [](int w, int h) {
    Picture p(1, w, h);
    Host host;
    EXPECT_EQ(adjust(p, {}, &host), 1);
    return host.positions;
  };
  EXPECT_EQ(reports(2303, 4), (std::vector{1}));
  EXPECT_EQ(reports(2304, 100), (std::vector{1, 46, 91}));
  EXPECT_EQ(reports(2, 2304), (std::vector{1, 31, 61, 91}));
  EXPECT_EQ(reports(2764, 2), (std::vector{1, 46, 91}));
  EXPECT_EQ(reports(2765, 2), (std::vector{1, 31, 61, 91}));
  EXPECT_EQ(reports(2, 2764), (std::vector{1, 31, 61, 91}));
  EXPECT_EQ(reports(2, 2765), (std::vector{1, 23, 45, 67, 89}));
  EXPECT_EQ(reports(2304, 1728), (std::vector{1, 23, 45, 67, 89}));
  const auto many = reports(110000, 2);
  ASSERT_GT(many.size(), 101u);
  EXPECT_EQ(many[1], 2);
  EXPECT_EQ(many.back(), static_cast<int>(many.size())) << "one by one, past 100";
}

TEST(AdjustDriver, cancellingLeavesThePictureAlone) {
  for (const int w : {50, 3000})
    for (const bool lend : {false, true}) {
      Picture p(1, w, 20), before(p);
      p.randomise(4, 255);
      before = p;
      Host count;
      Picture copy = p;
      ASSERT_EQ(adjust(copy, kBrighter, &count, lend), 1);
      for (int at = 0; at < count.reports; ++at) {
        Host host;
        host.cancelAt = at;
        EXPECT_EQ(adjust(p, kBrighter, &host, lend), 0);
        EXPECT_EQ(host.reports, at + 1);
        EXPECT_EQ(host.live, 0);
        EXPECT_EQ(host.asked, lend && at > 0 ? 4 : 0) << "nothing is allocated before the first";
        EXPECT_TRUE(p.bytes == before.bytes);
      }
    }
}

TEST(AdjustDriver, hostileArgumentsDoNothing) {
  std::vector<std::uint8_t> block(2400 * 8 * 4, 99);
  const auto before = block;
  void* const own = block.data();
  const std::tuple<void*, int, int, int, int, int> cases[] = {
      {nullptr, 1, 30, 10, 10, 1},   {nullptr, 6, 65536 * 8, 65536, 65536, 1},
      {nullptr, 2, 30, 10, 10, -2},  {nullptr, 5, 30, 5000, 1, 1},
      {own, 1, 30, 0, 10, 1},        {own, 1, 30, 10, 0, 1},
      {own, 5, 30, -10, 10, 1},      {own, 6, 30, INT_MIN, INT_MIN, 1},
      {own, 3, 30, 1, 1, 1},         {own, 9, 30, 0, 0, -2},
      {own, 1, 30, 5000, 1, -1},     {own, 1, 30, 1, 5000, -1},
      {own, 5, 30, INT_MAX, -1, -1}, {own, 1, 30, INT_MAX, 2, -1},
      {own, 1, 0, 10, 10, 1},        {own, 3, -30, 10, 10, 1},
      {own, 3, 0, 2400, 4, 1},       {own, 1, INT_MIN, 50, 50, 1},
      {own, 0, 160, 20, 4, -2},      {own, 4, 9600, 2400, 4, -2},
      {own, INT_MAX, 9, 2400, 4, -2}};
  for (const auto& [pixels, format, rowStep, width, height, result] : cases) {
    Host host;
    EXPECT_EQ(adjust(pixels, format, rowStep, width, height, kBrighter, &host, true), result)
        << format << " " << rowStep << " " << width << "x" << height;
    EXPECT_EQ(host.reports, 1) << "the first report comes before every check";
    EXPECT_EQ(host.live, 0);
    EXPECT_TRUE(host.asked == 0 || format == 4 || format == INT_MAX);
  }
  EXPECT_EQ(block, before);
}

// Bottom-up rows in the formats that read by channel, padded rows, 16-bit rows at odd addresses.
TEST(AdjustDriver, anyRowStepGivesTheSamePixels) {
  const std::tuple<int, int, bool> cases[] = {
      {5, 0, true}, {6, 2, true}, {1, 5, false}, {3, 7, false}, {6, 7, false}};
  for (const auto& [format, extra, bottomUp] : cases)
    for (const int w : {30, 2400}) {
      Picture p(format, w, 12);
      p.randomise(2, deep(format) ? 20000 : 150);
      const int step = p.step + extra;
      std::vector<std::uint8_t> block(1 + static_cast<std::size_t>(12 * step));
      const auto rowAt = [&](int y) { return block.data() + 1 + (bottomUp ? 11 - y : y) * step; };
      const auto bytes = static_cast<std::size_t>(p.step);
      for (int y = 0; y < 12; ++y) std::memcpy(rowAt(y), p.bytes.data() + y * p.step, bytes);
      ASSERT_EQ(adjust(p, kBrighter), 1);
      ASSERT_EQ(adjust(rowAt(0), format, bottomUp ? -step : step, w, 12, kBrighter), 1);
      for (int y = 0; y < 12; ++y)
        EXPECT_EQ(std::memcmp(rowAt(y), p.bytes.data() + y * p.step, bytes), 0) << format;
    }
}

// Rows that overlap are read as they are and written in their order, whole row after whole row, by
// whatever number of threads; nothing beyond the last row is touched.
TEST(AdjustDriver, rowsThatOverlapAreWrittenInTheirOrder) {
  const std::tuple<int, int, int> cases[] = {
      {600, 200, 7}, {600, 200, 1201}, {30, 200, 1}, {2400, 9, 2000}, {30, 2304, 7}};
  for (const int format : kFormats)
    for (const auto& [w, h, step] : cases) {
      const int rowBytes = w * vx::bytesPerPixel(format);
      std::vector<std::uint8_t> memory(static_cast<std::size_t>((h - 1) * step + rowBytes));
      for (std::size_t i = 0; i < memory.size(); ++i)
        memory[i] = static_cast<std::uint8_t>(i * i / 61 % (deep(format) ? 100 : 230));
      Picture p(format, w, h);
      for (int y = 0; y < h; ++y)
        std::memcpy(p.bytes.data() + y * p.step, memory.data() + y * step,
                    static_cast<std::size_t>(rowBytes));
      ASSERT_EQ(adjust(p, kBrighter), 1);
      std::vector<std::uint8_t> wanted = memory;
      for (int y = 0; y < h; ++y) {
        for (int i = 0; i < 3 * w; ++i) {
          const int at = static_cast<int>(p.at(i / 3, y, i % 3) - p.bytes.data());
          std::memcpy(wanted.data() + y * step + at % p.step, p.bytes.data() + at,
                      deep(format) ? 2 : 1);
        }
        // The cut of format 6 in one piece.
        for (int i = 0; format == 6 && w < 2304 && h < 2304 && i < 3 * w; ++i) {
          std::uint8_t* const word = wanted.data() + y * step + 2 * i;
          if (word[1] >= 128) word[0] = 0, word[1] = 128;
        }
      }
      for (const int threads : {1, 2, 7}) {
        const Threads team(threads);
        std::vector<std::uint8_t> bytes = memory;
        EXPECT_EQ(adjust(bytes.data(), format, step, w, h, kBrighter), 1);
        EXPECT_TRUE(bytes == wanted) << format << ", " << w << "x" << h << ", step " << step << ", "
                                     << threads << " threads";
      }
    }
}

}  // namespace
