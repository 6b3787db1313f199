#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

std::vector<int> randomKernel(std::mt19937& rng, int size, int limit) {
  std::vector<int> kernel(static_cast<std::size_t>(size));
  for (int& k : kernel) k = std::uniform_int_distribution<int>(-limit, limit)(rng);
  return kernel;
}

// The taps run against the pixels, the first one at the anchor; exact on whole numbers.
template <class T>
std::int64_t convolved(const Plane<T>& src, int x, int y, const std::vector<int>& kernel,
                       int columns, int rows, int anchorX, int anchorY) {
  std::int64_t sum = 0;
  for (int j = 0; j < rows; ++j)
    for (int i = 0; i < columns; ++i)
      sum += std::int64_t{kernel[static_cast<std::size_t>(j * columns + i)]} *
             static_cast<std::int64_t>(src.at(x + anchorX - i, y + anchorY - j));
  return sum;
}

// Lengths around the groups of eight taps.
TEST(FilterFloat, convolvesRowsAndColumns) {
  std::mt19937 rng(4711);
  for (int len : {1, 2, 3, 7, 8, 9, 15, 16, 23})
    for (int anchor : {-1, 0, len / 2, len}) {
      SCOPED_TRACE(testing::Message() << len << " taps, anchor " << anchor);
      const std::vector<int> taps = randomKernel(rng, len, 50);
      const std::vector<float> kernel(taps.begin(), taps.end());
      Plane<float> src(530, 5, 24), dst(530, 5);  // more than one strip
      src.randomise(rng, -1000, 1000);
      ASSERT_EQ(call(primFilterRow_32f_C1R, src, dst, dst.size(), kernel, len, anchor), 0);
      expectPlane(dst, [&](int x, int y) { return convolved(src, x, y, taps, len, 1, anchor, 0); });
      ASSERT_EQ(call(primFilterColumn_32f_C1R, src, dst, dst.size(), kernel, len, anchor), 0);
      expectPlane(dst, [&](int x, int y) { return convolved(src, x, y, taps, 1, len, 0, anchor); });
    }
}

// 1e8 + 1 is 1e8 in single precision, so the order of the taps decides between 0 and 1.
TEST(FilterFloat, addsFromTheLastTapToTheFirstInSinglePrecision) {
  const float pixels[] = {1, 1e8f, -1e8f, 1}, ones[] = {1, 1, 1};
  float dst[2];
  ASSERT_EQ(primFilterRow_32f_C1R(pixels + 1, 16, dst, 8, 2, 1, ones, 3, 1), 0);
  EXPECT_EQ(dst[0], 0.0f) << "(1 + 1e8) - 1e8";
  EXPECT_EQ(dst[1], 1.0f) << "(1e8 - 1e8) + 1";
  ASSERT_EQ(primFilterColumn_32f_C1R(pixels + 1, 4, dst, 4, 1, 2, ones, 3, 1), 0);
  EXPECT_EQ(dst[0], 0.0f);
  EXPECT_EQ(dst[1], 1.0f);
  // Beyond the first eight taps, too: the float after 1e8 is 1e8 + 8.
  const float ten[] = {1e8f, 0, 0, 0, 0, 0, 0, 0, 4, 4}, taps[] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  ASSERT_EQ(primFilterRow_32f_C1R(ten, 40, dst, 4, 1, 1, taps, 10, 9), 0);
  EXPECT_EQ(dst[0], 1e8f) << "(1e8 + 4) + 4";
}

// The sum as a 32-bit register holds it, the quotient in 64-bit integers or, by the float of a
// reciprocal, in the 64-bit mantissa of long double.
int expectedByte(std::int64_t exactSum, int divisor) {
  const std::int64_t s = static_cast<std::int32_t>(static_cast<std::uint64_t>(exactSum));
  std::int64_t q = 0;
  if (divisor > 0 && (divisor & (divisor - 1)) == 0) {
    const std::int64_t down = (s - ((s % divisor) + divisor) % divisor) / divisor;
    const std::int64_t twiceRest = 2 * (s - down * divisor);
    q = down + (twiceRest > divisor || (twiceRest == divisor && down % 2 != 0));
  } else {
    const float reciprocal = static_cast<float>(1.0 / divisor);
    q = std::llrint(static_cast<long double>(s) * static_cast<long double>(reciprocal));
  }
  return static_cast<int>(q < 0 ? 0 : q > 255 ? 255 : q);
}

void expectBytes(int columns, int rows, int anchorX, int anchorY, int limit, int divisor,
                 std::mt19937& rng) {
  SCOPED_TRACE(testing::Message() << columns << "x" << rows << ", divisor " << divisor);
  Plane<U8> src(600, 4, 9), dst(600, 4);
  src.randomise(rng, 0, 255);
  const std::vector<int> kernel = randomKernel(rng, columns * rows, limit);
  const auto expect = [&](int status, int w, int h, int x0, int y0) {
    ASSERT_EQ(status, 0);
    expectPlane(dst, [&](int x, int y) {
      return expectedByte(convolved(src, x, y, kernel, w, h, x0, y0), divisor);
    });
  };
  const Size size = dst.size();
  expect(call(primFilter_8u_C1R, src, dst, size, kernel, Size{columns, rows}, anchorX, anchorY,
              divisor),
         columns, rows, anchorX, anchorY);
  expect(call(primFilterRow_8u_C1R, src, dst, size, kernel, columns, anchorX, divisor), columns, 1,
         anchorX, 0);
  expect(call(primFilterColumn_8u_C1R, src, dst, size, kernel, rows, anchorY, divisor), 1, rows, 0,
         anchorY);
}

TEST(FilterBytes, roundsEveryKindOfDivisor) {
  std::mt19937 rng(88);
  static constexpr int kKernels[][5] = {
      {3, 5, 1, 2, 40}, {5, 1, 2, 0, 3}, {8, 8, 0, 7, 200}, {7, 2, 3, 1, 40000}};
  for (int divisor : {1, 2, 4, 64, 1 << 20, 3, 7, 10, 100, 571, -1, -2, -9})
    for (const auto& [columns, rows, anchorX, anchorY, limit] : kKernels)
      expectBytes(columns, rows, anchorX, anchorY, limit, divisor, rng);
  // Sums wrap, and quotients of the largest ones are still rounded without overflow.
  for (int divisor : {1, 1 << 24, 1 << 30, INT_MIN}) expectBytes(3, 3, 1, 1, INT_MAX, divisor, rng);
}

TEST(FilterGauss, matchesTheKernels) {
  const std::vector<int> k33 = {1, 2, 1, 2, 4, 2, 1, 2, 1};
  const std::vector<int> k55 = {2,  7,  12, 7,  2,  7,  31, 52, 31, 7,  12, 52, 127,
                                52, 12, 7,  31, 52, 31, 7,  2,  7,  12, 7,  2};
  std::mt19937 rng(15);
  for (int width : {1, 2, 7, 44, 600})
    for (int mask : {kMask33, kMask55}) {
      Plane<float> src(width, 7, 2), dst(width, 7);
      src.randomise(rng, -9999, 9999);
      ASSERT_EQ(call(primFilterGauss_32f_C1R, src, dst, dst.size(), mask), 0);
      expectPlane(dst, [&](int x, int y) {
        const auto sum = mask == kMask33 ? convolved(src, x, y, k33, 3, 3, 1, 1)
                                         : convolved(src, x, y, k55, 5, 5, 2, 2);
        return static_cast<double>(sum) / (mask == kMask33 ? 16 : 571);
      });
    }
}

TEST(FilterGauss, mirroredImageGivesTheMirroredResult) {
  std::mt19937 rng(16);
  Plane<float> src(37, 9, 2), flipped(37, 9, 2), a(37, 9), b(37, 9);
  for (int y = -2; y < 11; ++y)
    for (int x = -2; x < 39; ++x)
      flipped.at(36 - x, 8 - y) = src.at(x, y) = static_cast<float>(rng()) * 1e-7f;
  for (int mask : {kMask33, kMask55}) {
    ASSERT_EQ(call(primFilterGauss_32f_C1R, src, a, a.size(), mask), 0);
    ASSERT_EQ(call(primFilterGauss_32f_C1R, flipped, b, b.size(), mask), 0);
    expectPlane(a, [&](int x, int y) { return b.at(36 - x, 8 - y); });
  }
}

}  // namespace
