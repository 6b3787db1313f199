#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <type_traits>

#include "frame/image_buffer.h"
#include "frame/img.h"
#include "prim/alloc.h"

namespace {

using vx::GIMG;
using vx::ImageBuffer;
using vx::IMG;
using vx::IMG3;

static_assert(!std::is_copy_constructible_v<IMG3<float>> &&
              !std::is_move_assignable_v<IMG3<float>>);
static_assert(!std::is_copy_constructible_v<ImageBuffer<float, 3>>);
static_assert(sizeof(IMG3<float>) == sizeof(IMG<float, 3>), "the derived forms add no field");

template <class Image>
void expectRows(int bytesPerPixel) {
  Image image(11, 3);
  EXPECT_EQ(image.step % 32, 0);
  EXPECT_GE(image.step, 11 * bytesPerPixel);
  EXPECT_LT(image.step, 11 * bytesPerPixel + 32);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image.data) % 32, 0u);
  EXPECT_EQ(image.status, 1);
}

TEST(Img, rowsArePaddedTo32Bytes) {
  expectRows<IMG3<float>>(12);
  expectRows<GIMG<float>>(4);
  expectRows<IMG3<unsigned char>>(3);
  expectRows<GIMG<unsigned char>>(1);
  expectRows<GIMG<unsigned short>>(2);
  expectRows<GIMG<short>>(2);
  expectRows<IMG3<short>>(6);
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
  const vx::prim::MemHooks saved = vx::prim::primMemHooks;
  vx::prim::primMemHooks.allocate = [](std::size_t) -> void* { return nullptr; };
  {
    GIMG<float> failed(5, 5);
    EXPECT_EQ(failed.data, nullptr);
    EXPECT_EQ(failed.step, 0);
    EXPECT_EQ(failed.width, 5);
    failed.offset(1, 1);
    EXPECT_EQ(failed.data, nullptr);
    EXPECT_THROW((ImageBuffer<float, 3>(5, 5)), vx::BException);
  }
  vx::prim::primMemHooks = saved;
  for (const auto& [w, h] : {std::pair(0, 5), {5, 0}, {-3, 5}, {INT_MIN, INT_MIN}}) {
    const IMG3<float> empty(w, h);
    EXPECT_EQ(empty.data, nullptr);
  }
  const IMG3<float> rowTooLong(INT_MAX / 12 + 1, 1);
  EXPECT_EQ(rowTooLong.data, nullptr);
  EXPECT_EQ(rowTooLong.step, 0);
}

TEST(ImageBuffer, emptySizesHoldNothingAndRaiseNothing) {
  for (const auto& [w, h] : {std::pair(0, 0), {0, 7}, {7, 0}, {-1, 7}}) {
    const ImageBuffer<unsigned char> empty(w, h);
    EXPECT_EQ(empty.data, nullptr);
    EXPECT_EQ(empty.step, 0);
  }
  EXPECT_THROW((ImageBuffer<float, 3>(INT_MAX / 12 + 1, 1)), vx::MemoryException);
}

TEST(ImageBuffer, resizeReplacesAndAFailedOneLeavesNothing) {
  ImageBuffer<unsigned char, 3> buffer(11, 2);
  EXPECT_EQ(buffer.step, 64);
  buffer.resize(30, 4);
  EXPECT_EQ(buffer.step, 96);
  EXPECT_EQ(buffer.width, 30);
  const vx::prim::MemHooks saved = vx::prim::primMemHooks;
  vx::prim::primMemHooks.allocate = [](std::size_t) -> void* { return nullptr; };
  EXPECT_THROW(buffer.resize(5, 5), vx::MemoryException);
  vx::prim::primMemHooks = saved;
  EXPECT_EQ(buffer.data, nullptr);
  EXPECT_EQ(buffer.step, 0);
  EXPECT_EQ(buffer.width, 0);
  buffer.release();
  buffer.resize(1, 1);
  EXPECT_NE(buffer.data, nullptr);
}

}  // namespace
