#include "frame/image_buffer.h"
#include "frame/img.h"
#include "frame/to_int.h"
#include "tests/support/heap.h"
#include "tests/support/test.h"

namespace {

using namespace vx;

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
  EXPECT_EQ(2 * (image.data - image.base), 3 * image.step + 3 * 6);
  EXPECT_TRUE(image.roiWidth == 17 && image.roiHeight == 7);
  base.reset();
  EXPECT_TRUE(image.data == image.base && image.roiWidth == 20 && image.roiHeight == 10);
}

TEST(Img, withoutMemoryDataIsNullAndNothingThrows) {
  {
    const test::Heap heap(0, true);
    GIMG<float> failed(5, 5);
    EXPECT_TRUE(failed.data == nullptr && failed.step == 0 && failed.width == 5);
    failed.offset(1, 1);
    EXPECT_EQ(failed.data, nullptr);
    EXPECT_THROW((ImageBuffer<float, 3>(5, 5)), BException);
  }
  for (const auto& [w, h] : {std::pair(0, 0), {0, 5}, {5, 0}, {-3, 5}, {INT_MIN, INT_MIN}}) {
    EXPECT_EQ((IMG3<float>(w, h).data), nullptr);
    const ImageBuffer<float> empty(w, h);
    EXPECT_TRUE(empty.data == nullptr && empty.step == 0 && empty.width == w && empty.height == h);
  }
  const IMG3<float> rowTooLong(INT_MAX / 12 + 1, 1);
  EXPECT_EQ(rowTooLong.data, nullptr);
  EXPECT_THROW((ImageBuffer<float, 3>(INT_MAX / 12 + 1, 1)), MemoryException);
}

TEST(ImageBuffer, resizeReplacesAndAFailedOneLeavesNothing) {
  ImageBuffer<unsigned char, 3> buffer;
  {
    const test::Heap heap(2, true);
    buffer.resize(11, 2);
    buffer.resize(30, 4);
    EXPECT_EQ(buffer.step, 96);
    EXPECT_EQ(test::Heap::live(), 1);
    EXPECT_THROW(buffer.resize(5, 5), MemoryException);
  }
  EXPECT_TRUE(buffer.data == nullptr && buffer.step == 0 && buffer.width == 0);
  buffer.resize(1, 1);
  EXPECT_NE(buffer.data, nullptr);
}

}  // namespace
