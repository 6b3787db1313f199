#include "prim/channel.h"

#include <gtest/gtest.h>

#include "tests/prim/paged_image.h"

namespace {

using namespace vx::prim;

template <class T>
using Row = int (*const (&)[kColumnCount])(const T*, int, T*, int, int, int);

constexpr int kHeight = 3;

// The images end with the wanted element of the last pixel, so that touching the rest of a pixel
// faults; the other channels belong to what must not change.
template <class T>
void expectEveryNth(Row<T> row, int from, int to) {
  constexpr int kBytes = sizeof(T);
  std::mt19937 rng(7);
  forEachBody([&](int column) {
    for (int width = 1; width <= 140 && !::testing::Test::HasFailure(); width = nextWidth(width))
      for (int odd = 0; odd < (kBytes == 4 ? 1 : 2); ++odd) {
        const int fromBytes = ((width - 1) * from + 1) * kBytes;
        const int toBytes = ((width - 1) * to + 1) * kBytes;
        const int gap = kBytes * (2 + width % 5) + odd;
        PagedImage src(fromBytes, kHeight, width % 2 != 0 ? fromBytes + gap : -fromBytes - gap, rng,
                       odd);
        PagedImage dst(toBytes, kHeight, width % 3 != 0 ? toBytes + gap : -toBytes - gap, rng);
        PagedImage expected = dst;
        for (int y = 0; y < kHeight; ++y)
          for (int x = 0; x < width; ++x)
            expected.set<T>(std::ptrdiff_t{x} * to, y, src.get<T>(std::ptrdiff_t{x} * from, y));
        ASSERT_EQ(row[column](src.data<T>(), src.step, dst.data<T>(), dst.step, width, kHeight), 0);
        ASSERT_TRUE(dst == expected)
            << columnName(column) << ", width " << width << ", odd " << odd;
      }
  });
}

TEST(Channel, takesOneChannelAndReadsNothingBeyondIt) {
  expectEveryNth<std::uint8_t>(table::primCopy_8u_C3C1R, 3, 1);
  expectEveryNth<std::uint8_t>(table::primCopy_8u_C4C1R, 4, 1);
  expectEveryNth<std::int16_t>(table::primCopy_16s_C3C1R, 3, 1);
  expectEveryNth<std::uint16_t>(table::primCopy_16u_C3C1R, 3, 1);
  expectEveryNth<std::int16_t>(table::primCopy_16s_C4C1R, 4, 1);
  expectEveryNth<std::uint16_t>(table::primCopy_16u_C4C1R, 4, 1);
  expectEveryNth<float>(table::primCopy_32f_C3C1R, 3, 1);
}

TEST(Channel, putsOneChannelAndWritesNothingBesideIt) {
  expectEveryNth<std::uint8_t>(table::primCopy_8u_C1C3R, 1, 3);
  expectEveryNth<std::uint8_t>(table::primCopy_8u_C1C4R, 1, 4);
  expectEveryNth<std::int16_t>(table::primCopy_16s_C1C3R, 1, 3);
  expectEveryNth<std::uint16_t>(table::primCopy_16u_C1C3R, 1, 3);
  expectEveryNth<std::int16_t>(table::primCopy_16s_C1C4R, 1, 4);
  expectEveryNth<std::uint16_t>(table::primCopy_16u_C1C4R, 1, 4);
  expectEveryNth<float>(table::primCopy_32f_C1C3R, 1, 3);
}

template <class T>
void expectRefusals(int (*copy)(const T*, int, T*, int, int, int)) {
  T src[1] = {1}, dst[1] = {2};
  EXPECT_EQ(copy(nullptr, 4, dst, 4, 0, 1), kStatusNullPtr);
  EXPECT_EQ(copy(src, 4, nullptr, 4, 1, 0), kStatusNullPtr);
  EXPECT_EQ(copy(src, 4, dst, 4, 0, 1), kStatusBadSize);
  EXPECT_EQ(copy(src, 4, dst, 4, 65536, -65536), kStatusBadSize);
  EXPECT_EQ(dst[0], T{2});
  EXPECT_EQ(copy(src, 0, dst, -1, 1, 1), kStatusOk) << "steps are not looked at";
  EXPECT_EQ(dst[0], T{1});
}

TEST(Channel, refusesNullBeforeSizeAndTakesAnyStep) {
  for (auto copy : {primCopy_8u_C3C1R, primCopy_8u_C4C1R, primCopy_8u_C1C3R, primCopy_8u_C1C4R})
    expectRefusals(copy);
  for (auto copy : {primCopy_16s_C3C1R, primCopy_16s_C4C1R, primCopy_16s_C1C3R, primCopy_16s_C1C4R})
    expectRefusals(copy);
  for (auto copy : {primCopy_16u_C3C1R, primCopy_16u_C4C1R, primCopy_16u_C1C3R, primCopy_16u_C1C4R})
    expectRefusals(copy);
  for (auto copy : {primCopy_32f_C3C1R, primCopy_32f_C1C3R}) expectRefusals(copy);
}

}  // namespace
