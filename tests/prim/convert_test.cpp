#include "prim/convert.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/prim/paged_image.h"

namespace {

using namespace vx::prim;

constexpr int kHeight = 2;
constexpr float kInf = std::numeric_limits<float>::infinity();

template <class T>
using Narrow = int (*const (&)[kColumnCount])(const float*, int, T*, int, int, int, int);
template <class T>
using Widen = int (*const (&)[kColumnCount])(const T*, int, float*, int, int, int);

// In double, where v + 0.5 is exact for every float that can be near a tie.
template <class T>
T rounded(float sample, int mode) {
  const double v = sample;
  if (std::isnan(v)) return 0;
  if (v >= std::numeric_limits<T>::max()) return std::numeric_limits<T>::max();
  if (v <= std::numeric_limits<T>::min()) return std::numeric_limits<T>::min();
  if (mode == 0) return static_cast<T>(std::trunc(v));
  if (mode == 1) return static_cast<T>(std::nearbyint(v));
  return static_cast<T>(v < 0 ? -std::floor(-v + 0.5) : std::floor(v + 0.5));
}

// Ties of every size with their neighbours, the ends of all ranges, and what is no number.
std::vector<float> sharpSamples() {
  std::vector<float> samples = {
      0.0f,   -0.0f,         kInf,           -kInf,         1e-40f,        -1e-40f,        3e38f,
      -3e38f, 2147483648.0f, -2147483648.0f, 4294967296.0f, std::nanf(""), -std::nanf("1")};
  for (int whole : {0,   1,    2,     3,     100,   127,   128,   253,   254,   255,
                    256, 4096, 16383, 32766, 32767, 32768, 65533, 65534, 65535, 65536})
    for (float near : {static_cast<float>(whole), static_cast<float>(whole) + 0.5f})
      for (float v : {near, std::nextafter(near, -kInf), std::nextafter(near, kInf)}) {
        samples.push_back(v);
        samples.push_back(-v);
      }
  return samples;
}

// Steps in bytes that leave gaps, or none; the gapped 16-bit rows alternate between even and odd
// addresses.
template <class T>
int stepOf(std::ptrdiff_t elements, bool packed) {
  constexpr int kOdd = sizeof(T) == 2 ? 1 : 0;
  return static_cast<int>((elements + (packed ? 0 : 3)) * std::ptrdiff_t{sizeof(T)}) +
         (packed ? 0 : kOdd);
}

template <class T>
void expectRounded(Narrow<T> row, int channels) {
  const std::vector<float> sharp = sharpSamples();
  std::mt19937 rng(3);
  std::uniform_real_distribution<float> any(-70000.0f, 70000.0f), small(-3.0f, 260.0f);
  forEachBody([&](int column) {
    for (int mode : {0, 1, 2, -1, INT_MIN})
      for (int width = 1; width <= 80 && !::testing::Test::HasFailure(); width = nextWidth(width)) {
        const std::ptrdiff_t count = std::ptrdiff_t{width} * channels;
        const bool packed = width % 4 == 0;
        PagedImage src(count * 4, kHeight, stepOf<float>(count, packed), rng);
        PagedImage dst(count * std::ptrdiff_t{sizeof(T)}, kHeight, stepOf<T>(count, packed), rng,
                       sizeof(T) == 2 ? width % 2 : 0);
        PagedImage expected = dst;
        for (int y = 0; y < kHeight; ++y)
          for (std::ptrdiff_t x = 0; x < count; ++x) {
            const float v = rng() % 2 != 0   ? sharp[rng() % sharp.size()]
                            : rng() % 2 != 0 ? any(rng)
                                             : small(rng);
            src.set(x, y, v);
            expected.set(x, y, rounded<T>(v, mode));
          }
        ASSERT_EQ(
            row[column](src.data<float>(), src.step, dst.data<T>(), dst.step, width, kHeight, mode),
            0);
        ASSERT_TRUE(dst == expected)
            << columnName(column) << ", width " << width << ", mode " << mode;
      }
  });
}

TEST(Convert, roundsTiesSaturatesAndTakesNanToZero) {
  expectRounded<std::uint8_t>(table::primConvert_32f8u_C1R, 1);
  expectRounded<std::uint8_t>(table::primConvert_32f8u_C3R, 3);
  expectRounded<std::uint16_t>(table::primConvert_32f16u_C1R, 1);
  expectRounded<std::uint16_t>(table::primConvert_32f16u_C3R, 3);
  expectRounded<std::int16_t>(table::primConvert_32f16s_C1R, 1);
}

TEST(Convert, documentedValues) {
  const float ties[] = {0.5f, 1.5f, 2.5f, 254.5f, 254.50002f, 255.0f, -3.0f};
  const struct {
    int mode;
    std::uint8_t bytes[7];
  } kRows[] = {{primRndZero, {0, 1, 2, 254, 254, 255, 0}},
               {primRndNear, {0, 2, 2, 254, 255, 255, 0}},
               {primRndFinancial, {1, 2, 3, 255, 255, 255, 0}}};
  for (const auto& expected : kRows) {
    std::uint8_t bytes[7];
    ASSERT_EQ(primConvert_32f8u_C1R(ties, 28, bytes, 7, 7, 1, expected.mode), 0);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(bytes[i], expected.bytes[i]) << ties[i];
  }
  const float words[] = {-32768.7f, 32767.2f, -2.5f, -1.5f};
  std::int16_t shorts[4];
  ASSERT_EQ(primConvert_32f16s_C1R(words, 16, shorts, 8, 4, 1, primRndNear), 0);
  EXPECT_EQ(shorts[0], -32768);
  EXPECT_EQ(shorts[1], 32767);
  EXPECT_EQ(shorts[2], -2);
  EXPECT_EQ(shorts[3], -2);
}

template <class T>
void expectExact(Widen<T> row, int channels) {
  std::mt19937 rng(5);
  forEachBody([&](int column) {
    for (int width = 1; width <= 80 && !::testing::Test::HasFailure(); width = nextWidth(width)) {
      const std::ptrdiff_t count = std::ptrdiff_t{width} * channels;
      const bool packed = width % 4 == 0;
      PagedImage src(count * std::ptrdiff_t{sizeof(T)}, kHeight, stepOf<T>(count, packed), rng,
                     sizeof(T) == 2 ? width % 2 : 0);
      PagedImage dst(count * 4, kHeight, stepOf<float>(count, packed), rng);
      PagedImage expected = dst;
      for (int y = 0; y < kHeight; ++y)
        for (std::ptrdiff_t x = 0; x < count; ++x)
          expected.set(x, y, static_cast<float>(static_cast<double>(src.get<T>(x, y))));
      ASSERT_EQ(row[column](src.data<T>(), src.step, dst.data<float>(), dst.step, width, kHeight),
                0);
      ASSERT_TRUE(dst == expected) << columnName(column) << ", width " << width;
    }
  });
}

TEST(Convert, wideningIsExact) {
  expectExact<std::uint8_t>(table::primConvert_8u32f_C1R, 1);
  expectExact<std::uint8_t>(table::primConvert_8u32f_C3R, 3);
  expectExact<std::uint16_t>(table::primConvert_16u32f_C1R, 1);
  expectExact<std::uint16_t>(table::primConvert_16u32f_C3R, 3);
}

template <class In, class Out, class... Mode>
void expectRefusals(int (*convert)(const In*, int, Out*, int, int, int, Mode...), Mode... mode) {
  const In in[3] = {};
  Out out[3] = {9, 9, 9};
  EXPECT_EQ(convert(nullptr, 0, out, 12, 0, 1, mode...), kStatusNullPtr);
  EXPECT_EQ(convert(in, 0, nullptr, 12, 1, 1, mode...), kStatusNullPtr);
  EXPECT_EQ(convert(in, 0, out, 12, 0, 1, mode...), kStatusBadSize);
  EXPECT_EQ(convert(in, 12, out, 0, 1, -1, mode...), kStatusBadSize);
  EXPECT_EQ(convert(in, 0, out, 12, 1, 1, mode...), kStatusBadStep);
  EXPECT_EQ(convert(in, 12, out, -12, 1, 1, mode...), kStatusBadStep);
  EXPECT_EQ(out[0], Out{9});
  EXPECT_EQ(convert(in, 1, out, 1, 1, 1, mode...), kStatusOk) << "short steps are allowed";
  EXPECT_EQ(out[0], Out{0});
}

TEST(Convert, refusesNullThenSizeThenStep) {
  for (auto convert : {primConvert_8u32f_C1R, primConvert_8u32f_C3R}) expectRefusals(convert);
  for (auto convert : {primConvert_16u32f_C1R, primConvert_16u32f_C3R}) expectRefusals(convert);
  for (auto convert : {primConvert_32f8u_C1R, primConvert_32f8u_C3R}) expectRefusals(convert, 1);
  for (auto convert : {primConvert_32f16u_C1R, primConvert_32f16u_C3R}) expectRefusals(convert, 1);
  expectRefusals(primConvert_32f16s_C1R, 1);
}

}  // namespace
