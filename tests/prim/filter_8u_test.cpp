#include <climits>
#include <cmath>

#include "prim/filter.h"
#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

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

struct Case {
  int width, height, kernelWidth, kernelHeight, anchorX, anchorY, limit;
};

void checkFilters(const Case& c, int divisor, std::mt19937& rng) {
  SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << ", kernel " << c.kernelWidth
                                  << "x" << c.kernelHeight << ", divisor " << divisor);
  Plane<std::uint8_t> src(c.width, c.height, 9, 9), dst(c.width, c.height, 2, 1, 5);
  src.randomise(rng, 0, 255);
  std::vector<int> kernel(static_cast<std::size_t>(c.kernelWidth * c.kernelHeight));
  for (int& k : kernel)
    k = c.limit == INT_MAX
            ? static_cast<int>(rng())
            : static_cast<int>(rng() % static_cast<unsigned>(2 * c.limit + 1)) - c.limit;
  const auto check = [&](int columns, int rows, int anchorX, int anchorY) {
    expectPlane<std::uint8_t>(dst, 7, [&](int x, int y) {
      std::int64_t sum = 0;
      for (int j = 0; j < rows; ++j)
        for (int i = 0; i < columns; ++i)
          sum += std::int64_t{kernel[static_cast<std::size_t>(j * columns + i)]} *
                 src.at(x + anchorX - i, y + anchorY - j);
      return expectedByte(sum, divisor);
    });
  };
  dst.fill(7);
  ASSERT_EQ(primFilter_8u_C1R(src.data(), src.step, dst.data(), dst.step, c.width, c.height,
                              kernel.data(), c.kernelWidth, c.kernelHeight, c.anchorX, c.anchorY,
                              divisor),
            0);
  check(c.kernelWidth, c.kernelHeight, c.anchorX, c.anchorY);
  dst.fill(7);
  ASSERT_EQ(primFilterRow_8u_C1R(src.data(), src.step, dst.data(), dst.step, c.width, c.height,
                                 kernel.data(), c.kernelWidth, c.anchorX, divisor),
            0);
  check(c.kernelWidth, 1, c.anchorX, 0);
  dst.fill(7);
  ASSERT_EQ(primFilterColumn_8u_C1R(src.data(), src.step, dst.data(), dst.step, c.width, c.height,
                                    kernel.data(), c.kernelHeight, c.anchorY, divisor),
            0);
  check(1, c.kernelHeight, 0, c.anchorY);
}

TEST(FilterBytes, roundsEveryKindOfDivisor) {
  std::mt19937 rng(88);
  onEveryVariant([&] {
    for (int divisor : {1, 2, 4, 64, 1 << 20, 3, 7, 10, 100, 571, -1, -2, -9}) {
      checkFilters({37, 4, 3, 5, 1, 2, 40}, divisor, rng);
      checkFilters({300, 3, 5, 1, 2, 0, 3}, divisor, rng);
      checkFilters({1, 1, 8, 8, 0, 7, 200}, divisor, rng);
      checkFilters({17, 2, 7, 2, 3, 1, 32768}, divisor, rng);
    }
    // Sums wrap, and quotients of the largest ones are still rounded without overflow.
    for (int divisor : {1, 1 << 24, 1 << 30, INT_MIN})
      checkFilters({50, 3, 3, 3, 1, 1, INT_MAX}, divisor, rng);
  });
}

TEST(FilterBytes, tiesGoToEven) {
  const std::uint8_t src[] = {1, 2, 3, 5, 6, 7};
  const int one = 1;
  onEveryVariant([&] {
    std::uint8_t dst[6];
    ASSERT_EQ(primFilterRow_8u_C1R(src, 6, dst, 6, 6, 1, &one, 1, 0, 2), 0);
    EXPECT_EQ(std::vector<int>(dst, dst + 6), (std::vector<int>{0, 1, 2, 2, 3, 4}));
    ASSERT_EQ(primFilterRow_8u_C1R(src, 6, dst, 6, 6, 1, &one, 1, 0, 4), 0);
    EXPECT_EQ(std::vector<int>(dst, dst + 6), (std::vector<int>{0, 0, 1, 1, 2, 2}));
  });
}

TEST(FilterBytes, refusesInTheDocumentedOrder) {
  const std::uint8_t src[16] = {};
  const int kernel[3] = {};
  std::uint8_t dst[16];
  for (auto filter : {primFilterRow_8u_C1R, primFilterColumn_8u_C1R}) {
    EXPECT_EQ(filter(nullptr, 0, dst, 0, 0, 0, kernel, 0, 0, 0), -8);
    EXPECT_EQ(filter(src, 0, nullptr, 0, 0, 0, kernel, 0, 0, 0), -8);
    EXPECT_EQ(filter(src, 0, dst, 0, 0, 0, nullptr, 0, 0, 0), -8);
    EXPECT_EQ(filter(src, 0, dst, 0, 0, 1, kernel, 3, 0, 0), -6);
    EXPECT_EQ(filter(src, 0, dst, 0, 1, 0, kernel, 3, 0, 0), -6);
    EXPECT_EQ(filter(src, 0, dst, 0, 1, 1, kernel, 0, 0, 0), -6);
    EXPECT_EQ(filter(src, 16, dst, 3, 4, 1, kernel, 3, 1, 0), -14);
    EXPECT_EQ(filter(src, 16, dst, 4, 4, 1, kernel, 3, 1, 0), -51);
  }
  EXPECT_EQ(primFilterRow_8u_C1R(src, 5, dst, 4, 4, 1, kernel, 3, 1, 1), -14);
  EXPECT_EQ(primFilterColumn_8u_C1R(src, 3, dst, 4, 4, 1, kernel, 3, 1, 1), -14);
  EXPECT_EQ(primFilter_8u_C1R(src, 0, dst, 0, 1, 1, kernel, 3, 0, 1, 1, 0), -6);
  EXPECT_EQ(primFilter_8u_C1R(src, 5, dst, 4, 4, 1, kernel, 3, 1, 1, 0, 0), -14);
  EXPECT_EQ(primFilter_8u_C1R(src, 6, dst, 4, 4, 1, kernel, 3, 1, 1, 0, 0), -51);
}

}  // namespace
