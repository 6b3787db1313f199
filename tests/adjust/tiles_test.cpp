#include "adjust/plan_tiles.h"
#include "adjust/tile_blend.h"
#include "tests/support/picture.h"
#include "tests/support/test.h"

namespace {

struct Plan {
  int count, size, step;
  bool operator==(const Plan&) const = default;
};

Plan plan(int size, int target) {
  int tile, step;
  const int count = vx::planTiles(size, target, 0.4f, tile, step);
  return {count, tile, step};
}

TEST(PlanTiles, knownPlans) {
  const std::tuple<int, int, Plan> cases[] = {
      {2304, 1536, {2, 1918, 1152}}, {2764, 1536, {2, 2300, 922}},  {2765, 1536, {3, 1532, 717}},
      {4096, 1536, {4, 1704, 853}},  {4096, 1152, {5, 1364, 710}},  {8000, 1536, {8, 1664, 916}},
      {2304, 1152, {3, 1280, 597}},  {2764, 1152, {3, 1532, 717}},  {2765, 1152, {4, 1148, 576}},
      {8000, 1152, {11, 1208, 683}}, {1727, 1152, {1, 1726, 1726}}, {1, 1152, {1, 0, 0}}};
  for (const auto& [size, target, wanted] : cases) EXPECT_EQ(plan(size, target), wanted) << size;
  EXPECT_EQ(plan(1728, 1152).count, 2);
}

// Every axis that two or more tiles share is covered without a gap, from start to end, by even
// tiles inside it. An axis with one tile lacks its first pixel when odd.
TEST(PlanTiles, tilesCoverTheAxisUpToTheDocumentedLimit) {
  for (const int target : {1152, 1536}) {
    for (int size = 2; size <= 318776; ++size) {
      const Plan p = plan(size, target);
      ASSERT_EQ(p.size % 2, 0) << size;
      if (p.count == 1) {
        ASSERT_EQ(p.size, size & ~1) << size;
        continue;
      }
      ASSERT_GT(p.step, 0) << size;
      ASSERT_LE(p.step, p.size) << size;                         // no gap between neighbours
      ASSERT_LE((p.count - 2) * p.step + p.size, size) << size;  // none beyond the edge
      ASSERT_LE(size - p.size, (p.count - 2) * p.step + p.size) << size;  // none before the last
    }
  }
}

TEST(PlanTiles, hugeAxesStayDefined) {
  for (const int size : {318777, 1 << 24, INT_MAX / 4, INT_MAX - 1, INT_MAX})
    EXPECT_TRUE(plan(size, 1536).size > 1500 && plan(size, 1536).step > 500) << size;
}

// Each pixel is the mean of the tiles over it, weighted by a triangle along both sides of a tile
// and 1e-6, which is all that its edge has. Tiles of two rows count alike; under no tile it is
// black.
TEST(TileBlend, weighsTilesByTriangles) {
  const vx::prim::FloatModeGuard floatMode;
  const vx::HostCallbacks host(nullptr, nullptr, nullptr, nullptr, floatMode);
  for (const auto& [w, h] : {std::pair{200, 100}, {31, 7}, {3, 40}, {40, 2}}) {
    const int starts[][2] = {{0, 0}, {w / 2, 0}, {0, h - 1}, {w - 2, h / 2}};
    vx::test::Picture p(3, 2 * w - 1, 2 * h - 1);
    vx::TileBlend blend(host, p.width, p.height);
    ASSERT_TRUE(blend.acquire(w, h) && blend.prepare());
    const auto value = [](int tile, int c) { return 0.25f * static_cast<float>(tile % 3 + c) / 2; };
    for (int i = 0; i < 4; ++i) {
      vx::IMG3<float> tile(w, h);
      for (int y = 0; y < h; ++y)
        for (int s = 0; s < 3 * w; ++s) tile.row(y)[s] = value(i, s % 3);
      for (int y = 0; y < h; y += h / 2 + 1)  // in two runs of rows
        blend.add({tile.row(y), tile.step, w, std::min(h / 2 + 1, h - y)}, y, starts[i][0],
                  starts[i][1]);
    }
    blend.writeTo({p.bytes.data(), 3, p.step, p.width, p.height});
    const auto triangle = [](int i, int n) { return 1 - std::abs(2.0 * i / (n - 1) - 1); };
    for (int i = 0; i < 3 * p.width * p.height; ++i) {
      const int c = i % 3, x = i / 3 % p.width, y = i / 3 / p.width;
      double sum = 0, weights = 1e-24;
      for (int t = 0; t < 4; ++t) {
        const int tx = x - starts[t][0], ty = y - starts[t][1];
        if (tx < 0 || ty < 0 || tx >= w || ty >= h) continue;
        const double weight = 1e-6 + (h < 3 ? 1 : triangle(tx, w) * triangle(ty, h));
        sum += weight * double{value(t, c)};
        weights += weight;
      }
      ASSERT_NEAR(p.get(x, y, c), 32768 * sum / weights, 0.51)
          << w << "x" << h << ": " << x << ", " << y;
    }
  }
}

}  // namespace
