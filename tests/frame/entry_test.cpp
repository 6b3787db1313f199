#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "vxicore26.h"

namespace {

// What these functions will do is not there yet: they say so, and change nothing.
TEST(Entry, functionsWithoutTheirWorkLeaveEverythingAlone) {
  std::uint8_t pixels[300];
  std::memset(pixels, 42, sizeof pixels);
  EXPECT_EQ(vxUnblock(0, pixels, 3, 30, 10, 10, 80, 1, 1, 0), 0);
  for (const std::uint8_t byte : pixels) ASSERT_EQ(byte, 42);
}

}  // namespace
