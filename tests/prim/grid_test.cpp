#include "tests/prim/plane.h"

namespace {

using namespace vx::prim;

constexpr int kDepth = 40, kColumns = 9, kLength = 700;  // more than one strip

double coordinate(const GridAxis& axis, double v) {
  return ((axis.clip ? std::clamp(v, double{axis.low}, double{axis.high}) : v) -
          double{axis.origin}) *
             double{axis.scale} +
         double{axis.offset};
}

// On an axis that limits the values and on one that they leave on both sides. Scales are powers of
// two, so that every coordinate is exact.
TEST(Grid, countsCellsAndReadsTrilinearly) {
  std::mt19937 rng(41);
  const int cells = kDepth * (kColumns - 1) + 257;
  std::vector<float> near(std::size_t(cells + kDepth)), far(near), packed(std::size_t(4 * cells));
  for (float& v : near) v = static_cast<float>(rng() % 1000);
  for (float& v : far) v = static_cast<float>(rng() % 1000);
  ASSERT_EQ(primvGridPack_32f(near.data(), far.data(), kDepth, packed.data(), cells), 0);
  Plane<float> guide(kLength, 1), read(kLength, 1), fraction(kLength, 1);
  Plane<int> column(kLength, 1);
  Plane<U8> cell(kLength, 1);
  guide.randomise(rng, -100, 1200);
  fraction.set([&](int, int) { return static_cast<float>(rng() % 64) / 64; });
  column.set([](int x, int) { return x % (kColumns - 1) * kDepth; });
  for (const GridAxis& axis :
       {GridAxis{true, 8, 200, 8, 0.125f, 2, 20}, GridAxis{false, 0, 0, 0.5f, 0.25f, -1, 255}}) {
    const auto z = [&](int x, double top) {
      return int(std::clamp(coordinate(axis, guide.at(x, 0)), 0.0, top));
    };
    ASSERT_EQ(call(primvGridCells_32f8u, guide.data(), cell.data(), kLength, &axis), 0);
    expectPlane(cell, [&](int x, int) { return z(x, axis.topCell); });
    ASSERT_EQ(call(primvGridRead_32f, guide.data(), read.data(), kLength, &axis, packed,
                   column.data(), fraction.data(), 0.375f),
              0);
    const auto expected = [&](int x, int) {
      const int below = z(x, 255);
      const double fz = coordinate(axis, guide.at(x, 0)) - below, fx = fraction.at(x, 0);
      double sum = 0;
      for (int corner = 0; corner < 8; ++corner) {
        const int right = corner & 1, above = corner >> 1 & 1, across = corner >> 2;
        const auto at = std::size_t(column.at(x, 0) + right * kDepth + below + above);
        sum += (right ? fx : 1 - fx) * (above ? fz : 1 - fz) * (across ? 0.375 : 0.625) *
               double{across ? far[at] : near[at]};
      }
      return sum;
    };
    expectNear(read, expected, 0.05, 1e-6);
  }
  const GridAxis axis{false, 0, 0, 0, 1, 9, 255};
  ASSERT_EQ(primvGridCells_32f8u(&kNan, cell.data(), 1, &axis), 0);
  EXPECT_EQ(cell.at(0, 0), 0);
}

}  // namespace
