#include "prim/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

#include "tests/prim/paged_image.h"

namespace {

using namespace vx::prim;

constexpr int kHeight = 3;

// Calls body(column, width, odd) for every code body and for widths around all vector lengths.
template <class Body>
void forShapes(Body body) {
  forEachBody([&](int column) {
    for (int width = 1; width <= 140 && !::testing::Test::HasFailure(); width = nextWidth(width))
      body(column, width, width / 2 % 2);
  });
}

// Odd widths from the bottom up.
int stepOf(int rowBytes, int gap, int width) {
  return width % 2 != 0 ? -(rowBytes + gap) : rowBytes + gap;
}

template <class T>
using Copy = int (*const (&)[kColumnCount])(const T*, int, T*, int, int, int);
template <class T>
using MaskedCopy = int (*const (&)[kColumnCount])(const T*, int, T*, int, int, int,
                                                  const std::uint8_t*, int);
template <class T>
using Border = int (*const (&)[kColumnCount])(const T*, int, int, int, T*, int, int, int, int, int);

template <class T>
void expectSamePixels(Copy<T> row, int channels) {
  std::mt19937 rng(1);
  forShapes([&](int column, int width, int odd) {
    const int bytes = width * channels * static_cast<int>(sizeof(T));
    const int shift = sizeof(T) == 2 ? odd : 0;
    const int gap = width % 5 * static_cast<int>(sizeof(T));
    PagedImage src(bytes, kHeight, stepOf(bytes, gap + shift, width), rng);
    PagedImage dst(bytes, kHeight, stepOf(bytes, gap, width / 2), rng, shift);
    PagedImage expected = dst;
    for (int y = 0; y < kHeight; ++y)
      for (int i = 0; i < bytes; ++i) expected.set(i, y, src.get<std::uint8_t>(i, y));
    ASSERT_EQ(row[column](src.data<T>(), src.step, dst.data<T>(), dst.step, width, kHeight), 0);
    ASSERT_TRUE(dst == expected) << columnName(column) << ", width " << width;
  });
}

TEST(Memory, copiesTheRectangleAndNothingElse) {
  expectSamePixels<std::uint8_t>(table::primCopy_8u_C1R, 1);
  expectSamePixels<std::uint8_t>(table::primCopy_8u_C3R, 3);
  expectSamePixels<std::int16_t>(table::primCopy_16s_C1R, 1);
  expectSamePixels<float>(table::primCopy_32f_C1R, 1);
  expectSamePixels<float>(table::primCopy_32f_C3R, 3);
}

// A mask of runs, with all nonzero values.
PagedImage randomMask(int width, std::mt19937& rng) {
  PagedImage mask(width, kHeight, stepOf(width, 7, width / 4), rng);
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < width; ++x)
      if (rng() % 2 != 0) mask.set<std::uint8_t>(x, y, 0);
  return mask;
}

template <class T>
void expectCopyUnderMask(MaskedCopy<T> row) {
  std::mt19937 rng(2);
  forShapes([&](int column, int width, int) {
    const int bytes = width * static_cast<int>(sizeof(T));
    PagedImage src(bytes, kHeight, stepOf(bytes, 12, width), rng);
    PagedImage dst(bytes, kHeight, stepOf(bytes, 24, width / 2), rng);
    PagedImage mask = randomMask(width, rng), expected = dst;
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < width; ++x)
        if (mask.get<std::uint8_t>(x, y) != 0) expected.set(x, y, src.get<T>(x, y));
    ASSERT_EQ(row[column](src.data<T>(), src.step, dst.data<T>(), dst.step, width, kHeight,
                          mask.data<std::uint8_t>(), mask.step),
              0);
    ASSERT_TRUE(dst == expected) << columnName(column) << ", width " << width;
  });
}

TEST(Memory, copiesOnlyUnderTheMask) {
  expectCopyUnderMask<std::uint8_t>(table::primCopy_8u_C1MR);
  expectCopyUnderMask<float>(table::primCopy_32f_C1MR);
}

TEST(Memory, setsOnlyUnderTheMask) {
  std::mt19937 rng(3);
  forShapes([&](int column, int width, int odd) {
    PagedImage dst(width * 2, kHeight, stepOf(width * 2, 10 + odd, width), rng, odd);
    PagedImage mask = randomMask(width, rng), expected = dst;
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < width; ++x)
        if (mask.get<std::uint8_t>(x, y) != 0) expected.set<std::int16_t>(x, y, -12345);
    ASSERT_EQ(table::primSet_16s_C1MR[column](-12345, dst.data<std::int16_t>(), dst.step, width,
                                              kHeight, mask.data<std::uint8_t>(), mask.step),
              0);
    ASSERT_TRUE(dst == expected) << columnName(column) << ", width " << width;
  });
}

TEST(Memory, setsTheRectangle) {
  std::mt19937 rng(4);
  forShapes([&](int column, int width, int) {
    PagedImage bytes(width, kHeight, stepOf(width, 5, width), rng), expectedBytes = bytes;
    PagedImage floats(width * 4, kHeight, stepOf(width * 4, 8, width), rng), expected = floats;
    PagedImage pixels(width * 12, kHeight, stepOf(width * 12, 8, width), rng), expected3 = pixels;
    const float values[] = {-0.0f, 1e-40f, 3.5f};
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < width; ++x) {
        expectedBytes.set<std::uint8_t>(x, y, 201);
        expected.set(x, y, -0.0f);
        for (int c = 0; c < 3; ++c) expected3.set(x * 3 + c, y, values[c]);
      }
    ASSERT_EQ(
        table::primSet_8u_C1R[column](201, bytes.data<std::uint8_t>(), bytes.step, width, kHeight),
        0);
    ASSERT_EQ(
        table::primSet_32f_C1R[column](-0.0f, floats.data<float>(), floats.step, width, kHeight),
        0);
    ASSERT_EQ(
        table::primSet_32f_C3R[column](values, pixels.data<float>(), pixels.step, width, kHeight),
        0);
    ASSERT_TRUE(bytes == expectedBytes) << columnName(column) << ", width " << width;
    ASSERT_TRUE(floats == expected) << columnName(column) << ", width " << width;
    ASSERT_TRUE(pixels == expected3) << columnName(column) << ", width " << width;
  });
}

TEST(Memory, threeChannelValueMayLieInTheDestination) {
  float pixels[] = {9, 1, 2, 3, 9, 9};
  ASSERT_EQ(primSet_32f_C3R(pixels + 1, pixels, 24, 2, 1), 0);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(pixels[i], static_cast<float>(i % 3 + 1));
}

template <class T>
void expectNearestPixel(Border<T> row, int channels) {
  std::mt19937 rng(6);
  const struct {
    int srcWidth, srcHeight, left, top, right, bottom;
  } kShapes[] = {{1, 1, 0, 0, 0, 0}, {1, 1, 9, 4, 0, 0},  {5, 3, 0, 0, 7, 5},
                 {4, 1, 2, 3, 1, 0}, {70, 4, 8, 8, 7, 7}, {3, 2, 65, 0, 66, 1}};
  const int pixelBytes = channels * static_cast<int>(sizeof(T));
  forEachBody([&](int column) {
    for (const auto& s : kShapes) {
      const int width = s.left + s.srcWidth + s.right, height = s.top + s.srcHeight + s.bottom;
      PagedImage src(s.srcWidth * pixelBytes, s.srcHeight, (s.srcWidth + 2) * pixelBytes, rng);
      PagedImage dst(width * pixelBytes, height, (width + 3) * pixelBytes, rng), expected = dst;
      for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
          for (int c = 0; c < channels; ++c)
            expected.set(x * channels + c, y,
                         src.get<T>(std::clamp(x - s.left, 0, s.srcWidth - 1) * channels + c,
                                    std::clamp(y - s.top, 0, s.srcHeight - 1)));
      ASSERT_EQ(row[column](src.data<T>(), src.step, s.srcWidth, s.srcHeight, dst.data<T>(),
                            dst.step, width, height, s.top, s.left),
                0);
      ASSERT_TRUE(dst == expected) << columnName(column) << ", source width " << s.srcWidth;
    }
  });
}

TEST(Memory, borderRepeatsTheNearestPixel) {
  expectNearestPixel<float>(table::primCopyReplicateBorder_32f_C1R, 1);
  expectNearestPixel<std::uint8_t>(table::primCopyReplicateBorder_8u_C3R, 3);
}

template <class T>
void expectBorderRefusals(int (*border)(const T*, int, int, int, T*, int, int, int, int, int)) {
  const T src[3] = {};
  T dst[3] = {7, 7, 7};
  struct Refusal {
    const T* src;
    int srcStep, srcWidth, srcHeight;
    T* dst;
    int dstStep, dstWidth, dstHeight, top, left, status;
  };
  const Refusal refusals[] = {{nullptr, 0, 0, 0, dst, 99, 1, 1, 0, 0, kStatusNullPtr},
                              {src, 99, 1, 1, nullptr, 0, 1, 0, 0, 0, kStatusNullPtr},
                              {src, 0, 0, 1, dst, 99, 1, 1, 0, 0, kStatusBadSize},
                              {src, 99, 1, 0, dst, 99, 1, 1, 0, 0, kStatusBadSize},
                              {src, 99, 1, 1, dst, 99, 0, 1, 0, 0, kStatusBadSize},
                              {src, 99, 1, 1, dst, 99, 1, -1, 0, 0, kStatusBadSize},
                              {src, 99, 1, 1, dst, 0, 2, 2, -1, 0, kStatusBadSize},
                              {src, 99, 1, 1, dst, 99, 2, 2, 0, -1, kStatusBadSize},
                              {src, 99, 1, 1, dst, 99, 1, 1, 1, 0, kStatusBadSize},
                              {src, 99, 1, 1, dst, 99, 1, 1, 0, INT_MAX, kStatusBadSize},
                              {src, 99, 2, 1, dst, 99, 1, 9, 0, 0, kStatusBadSize},
                              {src, 0, 1, 1, dst, 99, 1, 1, 0, 0, kStatusBadStep},
                              {src, 99, 1, 1, dst, -99, 1, 1, 0, 0, kStatusBadStep}};
  for (const Refusal& r : refusals)
    EXPECT_EQ(border(r.src, r.srcStep, r.srcWidth, r.srcHeight, r.dst, r.dstStep, r.dstWidth,
                     r.dstHeight, r.top, r.left),
              r.status)
        << "row " << &r - refusals;
  for (T v : dst) EXPECT_EQ(v, T{7});
}

TEST(Memory, borderRefusesWhatDoesNotFit) {
  expectBorderRefusals(primCopyReplicateBorder_32f_C1R);
  expectBorderRefusals(primCopyReplicateBorder_8u_C3R);
}

// call(src, dst, mask, width, height): the primitive on one of its images
template <class T, class Call>
void expectRefusals(const char* name, bool hasSrc, bool hasMask, Call call) {
  SCOPED_TRACE(name);
  const T src[3] = {};
  T dst[3] = {1, 1, 1};
  const std::uint8_t mask[1] = {1};
  if (hasSrc) {
    EXPECT_EQ(call(nullptr, dst, mask, 0, 1), kStatusNullPtr);
  }
  if (hasMask) {
    EXPECT_EQ(call(src, dst, nullptr, 1, 0), kStatusNullPtr);
  }
  EXPECT_EQ(call(src, nullptr, mask, 0, 0), kStatusNullPtr);
  EXPECT_EQ(call(src, dst, mask, 0, 1), kStatusBadSize);
  EXPECT_EQ(call(src, dst, mask, 1, -1), kStatusBadSize);
  EXPECT_EQ(dst[0], T{1});
  EXPECT_EQ(call(src, dst, mask, 1, 1), kStatusOk) << "steps are not looked at";
  EXPECT_EQ(dst[0], T{0});
}

TEST(Memory, refusesNullBeforeSizeAndTakesAnyStep) {
  using Byte = std::uint8_t;
#define VX_COPY(T, name)                                                             \
  expectRefusals<T>(#name, true, false, [](auto src, auto dst, auto, int w, int h) { \
    return name(src, 0, dst, -1, w, h);                                              \
  })
  VX_COPY(Byte, primCopy_8u_C1R);
  VX_COPY(Byte, primCopy_8u_C3R);
  VX_COPY(std::int16_t, primCopy_16s_C1R);
  VX_COPY(float, primCopy_32f_C1R);
  VX_COPY(float, primCopy_32f_C3R);
#undef VX_COPY
  expectRefusals<Byte>("primCopy_8u_C1MR", true, true, [](auto s, auto d, auto m, int w, int h) {
    return primCopy_8u_C1MR(s, 0, d, -1, w, h, m, 0);
  });
  expectRefusals<float>("primCopy_32f_C1MR", true, true, [](auto s, auto d, auto m, int w, int h) {
    return primCopy_32f_C1MR(s, 0, d, -1, w, h, m, 0);
  });
  expectRefusals<Byte>("primSet_8u_C1R", false, false, [](auto, auto d, auto, int w, int h) {
    return primSet_8u_C1R(0, d, 0, w, h);
  });
  expectRefusals<float>("primSet_32f_C1R", false, false, [](auto, auto d, auto, int w, int h) {
    return primSet_32f_C1R(0.0f, d, -1, w, h);
  });
  expectRefusals<std::int16_t>(
      "primSet_16s_C1MR", false, true,
      [](auto, auto d, auto m, int w, int h) { return primSet_16s_C1MR(0, d, -1, w, h, m, 0); });
  expectRefusals<float>("primSet_32f_C3R", true, false, [](auto s, auto d, auto, int w, int h) {
    return primSet_32f_C3R(s, d, 0, w, h);
  });
}

}  // namespace
