#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "frame/image_buffer.h"
#include "frame/img.h"
#include "frame/to_int.h"
#include "tests/support/heap.h"

namespace {

using vx::GIMG;
using vx::ImageBuffer;
using vx::IMG;
using vx::IMG3;
using vx::toInt;

static_assert(!std::is_copy_constructible_v<IMG3<float>> &&
              !std::is_move_assignable_v<IMG3<float>>);
static_assert(!std::is_copy_constructible_v<ImageBuffer<float, 3>>);
static_assert(sizeof(IMG3<float>) == sizeof(IMG<float, 3>), "the derived forms add no field");

static_assert(toInt(-2.9f) == -2 && toInt(3e9f) == INT_MAX && toInt(-3e9) == INT_MIN);
static_assert(toInt(std::numeric_limits<float>::quiet_NaN()) == 0 &&
              toInt(2147483646.9) == INT_MAX - 1);

template <class Image>
void expectPaddedRows() {
  const Image image(11, 3);
  EXPECT_EQ(image.step, (11 * Image::kPixelBytes + 31) / 32 * 32);
  EXPECT_EQ(image.status, 1);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image.data) % 32, 0u);
}

TEST(Img, rowsArePaddedTo32Bytes) {
  expectPaddedRows<IMG3<float>>();
  expectPaddedRows<IMG3<unsigned char>>();
  expectPaddedRows<GIMG<unsigned short>>();
}

TEST(Img, regionOfInterestMovesAndComesBack) {
  IMG3<short> image(20, 10);
  IMG<short, 3>& base = image;
  base.offset(2, 3);
  base.offset(1, 0);
  EXPECT_EQ(
      reinterpret_cast<std::uint8_t*>(image.data) - reinterpret_cast<std::uint8_t*>(image.base),
      3 * image.step + 3 * 6);
  EXPECT_EQ(image.roiWidth, 17);
  EXPECT_EQ(image.roiHeight, 7);
  base.reset();
  EXPECT_EQ(image.data, image.base);
  EXPECT_EQ(image.roiWidth, 20);
  EXPECT_EQ(image.roiHeight, 10);
}

TEST(Img, withoutMemoryDataIsNullAndNothingThrows) {
  {
    const vx::test::Heap heap(0, true);
    GIMG<float> failed(5, 5);
    EXPECT_EQ(failed.data, nullptr);
    EXPECT_EQ(failed.step, 0);
    EXPECT_EQ(failed.width, 5);
    failed.offset(1, 1);
    EXPECT_EQ(failed.data, nullptr);
    EXPECT_THROW((ImageBuffer<float, 3>(5, 5)), vx::BException);
  }
  for (const auto& [w, h] : {std::pair(0, 0), {0, 5}, {5, 0}, {-3, 5}, {INT_MIN, INT_MIN}}) {
    EXPECT_EQ((IMG3<float>(w, h).data), nullptr);
    const ImageBuffer<float> empty(w, h);
    EXPECT_TRUE(empty.data == nullptr && empty.step == 0 && empty.width == w && empty.height == h);
  }
  const IMG3<float> rowTooLong(INT_MAX / 12 + 1, 1);
  EXPECT_EQ(rowTooLong.data, nullptr);
  EXPECT_THROW((ImageBuffer<float, 3>(INT_MAX / 12 + 1, 1)), vx::MemoryException);
}

TEST(ImageBuffer, resizeReplacesAndAFailedOneLeavesNothing) {
  ImageBuffer<unsigned char, 3> buffer;
  {
    const vx::test::Heap heap(2, true);
    buffer.resize(11, 2);
    buffer.resize(30, 4);
    EXPECT_EQ(buffer.step, 96);
    EXPECT_EQ(vx::test::Heap::live(), 1);
    EXPECT_THROW(buffer.resize(5, 5), vx::MemoryException);
  }
  EXPECT_EQ(buffer.data, nullptr);
  EXPECT_EQ(buffer.step, 0);
  EXPECT_EQ(buffer.width, 0);
  buffer.resize(1, 1);
  EXPECT_NE(buffer.data, nullptr);
}

}  // namespace
