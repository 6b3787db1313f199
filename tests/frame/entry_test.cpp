#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "vxicore26.h"

namespace {

// What these functions will do is not there yet: they say so, and change nothing.
TEST(Entry, functionsWithoutTheirWorkLeaveEverythingAlone) {
  std::uint8_t pixels[300];
  std::memset(pixels, 42, sizeof pixels);
  NoiseProfile profile = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(vxUnblock(0, pixels, 3, 30, 10, 10, 80, 1, 1, 0), 0);
  EXPECT_EQ(vxDenoiseEstNoise(pixels, 1, 30, 10, 10, &profile), 0);
  EXPECT_EQ(vxDenoiseEstNoise(nullptr, 99, -1, -1, -1, nullptr), 0);
  for (const std::uint8_t byte : pixels) ASSERT_EQ(byte, 42);
  EXPECT_EQ(profile.lumaNoise, 2.0f);
  EXPECT_EQ(profile.chromaReserved, 6.0f);
}

}  // namespace
