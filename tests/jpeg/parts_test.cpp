// What encoder, decoder and round trip share, so that comparing them does not show it.

#include <gtest/gtest.h>

#include <numeric>

#include "jpeg/samples.h"
#include "jpeg/tables.h"

namespace {

using namespace vx;

TEST(QuantTables, followTheQuality) {
  EXPECT_EQ(jpegQuantTable(false, 50)[0], 16);
  EXPECT_EQ(jpegQuantTable(true, 50), jpegQuantTable(true, 0));
  EXPECT_EQ(jpegQuantTable(false, 15)[0], 53);
  EXPECT_EQ(jpegQuantTable(true, 1)[63], 255);
  for (const int quality : {100, 101, 255}) {
    const JpegQuantTable table = jpegQuantTable(false, quality);
    EXPECT_EQ(std::accumulate(table.begin(), table.end(), 0), 64);
  }
}

// Over the rows, whose rounding alternates, and all remainders of a sum no mean is lost or won.
TEST(ReduceRow, keepsTheMean) {
  for (const bool pairs : {false, true}) {
    const int samples = pairs ? 2 : 4;
    int drift = 0;
    for (int i = 0; i < 256; ++i) {
      const std::int16_t v[] = {
          static_cast<std::int16_t>(i % 4), static_cast<std::int16_t>(i / 4 % 4),
          static_cast<std::int16_t>(i / 16 % 4), static_cast<std::int16_t>(-i / 64)};
      for (const int bias : {0, 1}) {
        std::int16_t mean;
        jpegReduceRow(v, pairs ? nullptr : v + 2, bias, 1, &mean);
        const int error = samples * mean - std::accumulate(v, v + samples, 0);
        EXPECT_LE(std::abs(error), samples / 2);
        drift += error;
      }
    }
    EXPECT_EQ(drift, 0) << samples;
  }
}

}  // namespace
