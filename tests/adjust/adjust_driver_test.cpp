#include "adjust/adjust_driver.h"

#include "tests/adjust/host.h"
#include "tests/support/images.h"

namespace {

using vx::AdjustSettings;
using namespace vx::test;

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
      Picture p = randomPicture(format, w, h, deep(format) ? 32767 : 254, 7), before = p;
      ASSERT_EQ(adjust(p), 1);
      EXPECT_LE(p.distance(before), tolerance(format)) << format << " " << w << "x" << h;
      // All but the colour: slack, extra channel.
      p.forEachSample([&](int x, int y, int c) { return before.get(x, y, c); });
      EXPECT_TRUE(p.bytes == before.bytes) << format << " " << w << "x" << h;
    }
}

// Of a picture in one piece an odd last column or row stays. The single tile of an odd axis sits at
// its far end, so that the first column or row becomes black.
TEST(AdjustDriver, oddSizesLeaveAColumnOrRowOut) {
  for (const int format : kFormats)
    for (const auto& [w, h] : {std::pair(31, 17), {3000, 101}, {101, 2304}}) {
      Picture p(format, w, h);
      const int old = deep(format) ? 9000 : 90;
      p.forEachSample([&](int, int, int) { return old; });
      ASSERT_EQ(adjust(p, kBrighter), 1);
      const int bright = p.get(2, 2, 2);
      EXPECT_GT(bright, old);
      Picture wanted = p;
      wanted.forEachSample([&, w = w, h = h](int x, int y, int) {
        if (w == 31 && (x == 30 || y == 16)) return old;
        return (h == 101 && y == 0) || (w == 101 && x == 0) ? 0 : bright;
      });
      EXPECT_LE(p.distance(wanted), tolerance(format)) << format << " " << w << "x" << h;
    }
}

// One call is what a call for each stage gives, but for the rounding between them; grain comes back
// as it was taken out, whatever the curves did.
TEST(AdjustDriver, stagesRunInTheirOrder) {
  AdjustSettings all = {
      .lumaGamma = 1.5f, .denoiseStrength = 0.6f, .noiseProfile = &kNoisy, .unblockStrength = 0.7f};
  Picture p = randomPicture(3, 96, 64, 6000);
  p.forEachSample(
      [&](int x, int y, int c) { return p.get(x, y, c) + (x / 16 + y / 16) % 2 * 4000; });
  Picture unblocked = adjusted(p, {.unblockStrength = 0.7f});
  Picture smooth = adjusted(unblocked, {.denoiseStrength = 0.6f, .noiseProfile = &kNoisy});
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
  const Picture p = randomPicture(3, 64, 48, 6000);
  const auto filtered = [&](float strength, float grain) {
    return adjusted(p,
                    {.denoiseStrength = strength, .noiseProfile = &kNoisy, .grainRestore = grain});
  };
  Picture plain = filtered(0.0f, 0.0f), smooth = filtered(0.6f, 0.0f);
  EXPECT_EQ(filtered(0.001f, 1.0f).distance(plain), 0);
  EXPECT_GT(filtered(0.0011f, 0.0f).distance(plain), 10);
  EXPECT_EQ(filtered(0.6f, 0.01f).distance(smooth), 0);
  EXPECT_GT(filtered(0.6f, 0.0101f).distance(smooth), 10);
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
      Picture p = randomPicture(1, w, 20), copy = p;
      const Picture before = p;
      Host count;
      ASSERT_EQ(adjust(copy, kBrighter, &count, lend), 1);
      for (int at = 0; at < count.reports; ++at) {
        Host host = {.cancelAt = at};
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

// What rows at any distance, upwards or downwards, at odd addresses too, become is what they become
// when packed. Rows that overlap are read as they are and written in their order, whole row after
// whole row, by whatever number of threads. Nothing beside the colour is touched.
TEST(AdjustDriver, anyRowStepGivesTheSamePixels) {
  const std::tuple<int, int, int> cases[] = {{31, 13, 255},      {31, 13, -255},  {2400, 12, 19207},
                                             {2400, 12, -19207}, {600, 200, 7},   {600, 200, 1201},
                                             {30, 200, 1},       {2400, 9, 2000}, {30, 2304, 7}};
  for (const int format : kFormats)
    for (const auto& [w, h, step] : cases) {
      if (step < 0 && vx::bytesPerPixel(format) % 3 == 0) continue;  // refused
      Picture p(format, w, h);
      const auto rowBytes = static_cast<std::size_t>(p.step);
      std::vector<std::uint8_t> memory(1 + static_cast<std::size_t>((h - 1) * std::abs(step)) +
                                       rowBytes);
      for (std::size_t i = 0; i < memory.size(); ++i)
        memory[i] = static_cast<std::uint8_t>(i * i / 61 % (deep(format) ? 140 : 230));
      const std::ptrdiff_t first = 1 + (step < 0 ? (1 - h) * step : 0);
      for (int y = 0; y < h; ++y)
        std::memcpy(p.bytes.data() + y * p.step, memory.data() + first + y * step, rowBytes);
      ASSERT_EQ(adjust(p, kBrighter), 1);
      std::vector<std::uint8_t> wanted = memory;
      for (int y = 0; y < h; ++y) {
        std::uint8_t* const row = wanted.data() + first + y * step;
        for (int i = 0; i < 3 * w; ++i) {
          const std::uint8_t* const sample = p.at(i / 3, y, i % 3);
          std::memcpy(row + (sample - p.bytes.data()) % p.step, sample, deep(format) ? 2 : 1);
        }
        // In one piece the cut of format 6 runs over three words for each pixel of the even size,
        // from the start of the row: over extra words too, and not over all colour.
        const bool cut = format == 6 && w < 2304 && h < 2304 && y < (h & ~1);
        for (int i = 0; cut && i < 3 * (w & ~1); ++i)
          if (row[2 * i + 1] >= 128) row[2 * i] = 0, row[2 * i + 1] = 128;
      }
      for (const int threads : {1, 2, 7}) {
        const Threads team(threads);
        std::vector<std::uint8_t> bytes = memory;
        EXPECT_EQ(adjust(bytes.data() + first, format, step, w, h, kBrighter), 1);
        EXPECT_TRUE(bytes == wanted) << format << ", " << w << "x" << h << ", step " << step << ", "
                                     << threads << " threads";
      }
    }
}

}  // namespace
