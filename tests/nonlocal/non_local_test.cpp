#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "prim/float_mode.h"
#include "prim/prims.h"
#include "tests/nonlocal/reference_non_local.h"
#include "vxenhlib/nonlocal/nl_im_dn_cn.h"

namespace {

using namespace vx;
using namespace vx::test;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// Searched in a tile, and carried on to the ones beside it.
TEST(NonLocal, costsAreSumsOfSquaredDifferences) {
  const prim::FloatModeGuard floatMode;
  for (const auto& [block, search] : {std::pair(8, 32), {12, 48}, {16, 64}, {5, 21}}) {
    const int w = search + 25, h = search + 14;
    Plane guide[2] = {{w, h}, {w, h}}, sums[2] = {{w, h}, {w, h}};
    PlaneView planes[2], integrals[2];
    for (unsigned p = 0; p < 2; ++p) {
      fillUnits(guide[p], p, 1.0f / 64.0f, 0.3f, 0.2f);
      paint(sums[p], [&](int x, int y) { return at(guide[p], x, y) * at(guide[p], x, y); });
      integrate(PlaneView(sums[p]));
      planes[p] = PlaneView(guide[p]);
      integrals[p] = PlaneView(sums[p]);
    }
    const SearchShape shape = {block, block, search, search};
    const SearchTransform transform(shape);
    BlockMatcher matcher;
    ASSERT_TRUE(matcher.reserve(shape, 2, planes, integrals));
    Plane upper(search, search), lower(search, search);
    const Plane* const costs[2] = {&upper, &lower};
    const PlaneView maps[2] = {PlaneView(upper), PlaneView(lower)};

    const auto check = [&](const BlockPair& pair, const Tile& tile) {
      // Rounding of a transform of n samples is some log2(n) units of the norms' product, and both
      // blocks share one.
      double norms = 0.0, worst = 0.0;
      for (int p = 0; p < 2; ++p)
        norms += std::sqrt((boxSum(integrals[p], pair.x, pair.y[0], block, block) +
                            boxSum(integrals[p], pair.x, pair.y[1], block, block)) *
                           boxSum(integrals[p], tile.x, tile.y, tile.width, tile.height));
      for (int j = 0; j < 2; ++j)
        for (int v = 0; v <= tile.height - block; ++v)
          for (int u = 0; u <= tile.width - block; ++u)
            raise(worst, std::abs(at(*costs[j], u, v) - blockDistance({&guide[0], &guide[1]},
                                                                      pair.x, pair.y[j], tile.x + u,
                                                                      tile.y + v, block)));
      EXPECT_LT(worst, 0x1p-24 * std::log2(search * search) * norms)
          << block << ", tile at " << tile.x << ", blocks at " << pair.x;
    };
    const BlockPair pair = {7, {2, 6}};
    EXPECT_EQ(matcher.energy(7, 6),
              boxSum(integrals[0], 7, 6, block, block) + boxSum(integrals[1], 7, 6, block, block));
    for (Tile tile : {Tile{0, 0, search, search}, {2, 1, 20, 19}, {25, 14, search, search}}) {
      matcher.setTile(transform, tile);
      matcher.search(transform, pair, maps);
      check(pair, tile);
      for (const int shift : {0, 1, 4, 7}) {
        if (tile.x + shift + tile.width > w || shift > tile.width - block) break;
        tile.x += shift;
        matcher.setTile(transform, tile);
        const auto least = matcher.extend(shift, pair);
        for (int j = 0; j < 2; ++j) {
          matcher.slide(shift, j, maps[j]);
          float wanted = kInfinity;
          for (int v = 0; v <= tile.height - block; ++v)
            for (int u = tile.width - block + 1 - shift; u <= tile.width - block; ++u)
              wanted = std::min(wanted, at(*costs[j], u, v));
          EXPECT_EQ(least[static_cast<std::size_t>(j)], wanted) << block << ", by " << shift;
        }
        check(pair, tile);
      }
    }
  }
}

// The rounding of the sums is part of the result: this order, and no fused operations.
TEST(NonLocal, integralImagesKeepTheirOrder) {
  Plane plane(37, 29), wanted(37, 29);
  fill(plane, 3);
  paint(wanted, [&](int x, int y) {
    volatile float sum = 0.0f;
    if (x > 0) sum = at(wanted, x - 1, y);
    if (y > 0) sum = sum + at(wanted, x, y - 1);
    if (x > 0 && y > 0) sum = sum - at(wanted, x - 1, y - 1);
    return at(plane, x, y) + sum;
  });
  integrate(PlaneView(plane));
  EXPECT_TRUE(sameBits(wanted, plane));
}

// Against the primitive that looks at the whole map each time, on maps full of equal costs.
TEST(NonLocal, selectionTakesTheFirstSmallestEachTime) {
  std::mt19937 random(5);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  StackSelection selection;
  ASSERT_TRUE(selection.reserve(70));
  for (int turn = 0; turn < 4000; ++turn) {
    const bool small = turn % 2 == 0;
    Plane costs(1 + below(small ? 6 : 70), 1 + below(small ? 6 : 70));
    const int levels = 1 + below(60), odd = below(4), all = turn % 50;
    paint(costs, [&](int, int) {
      if (all < 2) return all == 0 ? kNan : kInfinity;
      if (odd == 1 && below(3) == 0) return kInfinity;
      if (odd == 2 && below(2) == 0) return kNan;
      return static_cast<float>(below(levels) - 2);
    });
    Plane map(costs.width, costs.height);
    copyImage(costs, map);
    const int u = below(costs.width), v = below(costs.height), limit = 1 + below(16);
    const int exclusionX = below(4), exclusionY = below(4);
    const float thresholds[] = {0.0f, 3.0f, 1e6f, kInfinity, kNan};
    const float threshold = thresholds[below(5)];
    const auto blank = [&](int cx, int cy) {
      paint(map, [&](int x, int y) {
        const bool near = std::abs(x - cx) <= exclusionX && std::abs(y - cy) <= exclusionY;
        return near ? 1e20f : at(map, x, y);
      });
    };
    StackMatches wanted{}, found{};
    wanted.x[0] = wanted.x[1] = 100 + u;
    wanted.y[0] = wanted.y[1] = 200 + v;
    blank(u, v);
    int count = 1, filled = limit > 1 ? 1 : 2;
    for (bool refused = false; count < limit && !refused;) {
      int x = 0, y = 0;
      float& cost = wanted.cost[count];
      prim::primMinIndex_32f_C1R(map.data, map.step, map.width, map.height, &cost, &x, &y);
      blank(x, y);
      wanted.x[count] = 100 + x;
      wanted.y[count] = 200 + y;
      filled = count + 1;
      refused = cost > threshold;
      count += refused ? 0 : 1;
    }
    const int got = selection.select(PlaneView(costs), u, v, 100, 200, limit, exclusionX,
                                     exclusionY, threshold, found);
    ASSERT_EQ(got, count) << turn;
    for (int i = 0; i < filled; ++i)
      ASSERT_TRUE(found.x[i] == wanted.x[i] && found.y[i] == wanted.y[i] &&
                  found.cost[i] == wanted.cost[i])
          << turn << ", match " << i;
    ASSERT_TRUE(sameBits(map, costs)) << turn;
  }
}

// Of two choices for a block the first one has not seen what the second one has.
TEST(NonLocal, aBlockIsKnownByItsLastChoice) {
  const StackShape shape(8, 8, 8);
  StackMatches seesFar{};
  seesFar.x[0] = seesFar.y[0] = 30;
  seesFar.leftmost = 20;
  seesFar.bound = 1.0f;
  StackMatches seesNear = seesFar, another = seesFar;
  seesNear.leftmost = 10;
  another.x[1] = 10;
  another.leftmost = 10;
  for (const bool sameBlocks : {true, false}) {
    FilteredStacks stacks;
    ASSERT_TRUE(stacks.reserve(shape, 1));
    stacks.replaceOldest(seesFar, 2);
    EXPECT_NE(stacks.find(30, 30, 15, 2.0f), nullptr);
    EXPECT_EQ(stacks.find(30, 30, 15, 1.0f), nullptr);
    EXPECT_EQ(stacks.find(30, 30, 21, 2.0f), nullptr);
    if (sameBlocks)
      EXPECT_NE(stacks.find(seesNear, 2), nullptr);
    else
      stacks.replaceOldest(another, 2);
    EXPECT_EQ(stacks.find(30, 30, 15, 2.0f), nullptr);
    EXPECT_NE(stacks.find(30, 30, 10, 2.0f), nullptr);
  }
}

// A filter of blocks of 8, its planes, and the slow evaluation of the same pass.
struct PassCheck {
  Plane source, guide, other, pilot, out[2];
  CNLImDnCn& filter;
  std::size_t limit;

  PassCheck(CNLImDnCn& f, int w, int h, unsigned seed, std::size_t stackLimit = 8)
      : source(w, h),
        guide(w, h),
        other(w, h),
        pilot(w, h),
        out{{w, h}, {w, h}},
        filter(f),
        limit(stackLimit) {
    constexpr float kUnit = 0x1p-11f;
    fillUnits(source, seed, kUnit, 0.025f, 0.02f);
    fillUnits(guide, seed + 1, kUnit, 0.02f, 0.015f);
    fillUnits(pilot, seed + 2, kUnit, 0.03f, 0.012f);
    fill(other, seed + 3);
  }

  // The largest difference to the slow evaluation, whose choices must all be clear ones.
  double run(bool withPilot, std::vector<int>& stacks) {
    filter.clearImages();
    filter.setFilterParams(0.01f, 1.2f, 3.0f, 0.022f, 1.3f, 0.01f, 1.5f, 1);
    Plane* const steering = withPilot ? &pilot : nullptr;
    GIMG<float>* const guides[] = {withPilot ? &pilot : &source, &guide};
    GIMG<float>* const in[] = {&source, &other};
    GIMG<float>* const outs[] = {&out[0], &out[1]};
    const int guideCount = withPilot ? 1 : 2;
    EXPECT_EQ(filter.filterPlanes(guideCount, guides, &source, steering, 2, in, outs), kVxrcOk);
    const NonLocalResult wanted = referencePass(filter, limit, {guides, guides + guideCount},
                                                source, steering, {&source, &other});
    EXPECT_GE(wanted.narrowest, 0x1p-22) << "two blocks as good as each other: take another seed";
    stacks = wanted.stacks;
    double worst = 0.0;
    for (std::size_t p = 0; p < 2; ++p)
      for (std::size_t i = 0; i < wanted.planes[p].size(); ++i) {
        const int x = static_cast<int>(i) % source.width, y = static_cast<int>(i) / source.width;
        raise(worst, std::abs(wanted.planes[p][i] - at(out[p], x, y)));
      }
    return worst;
  }
};

// Values are below 1; a transform, the weights and the sums over some hundred estimates cost them a
// few units of rounding each.
constexpr double kPassBound = 16 * 0x1p-24;

TEST(NonLocal, aPassIsTheSlowEvaluation) {
  const prim::FloatModeGuard floatMode;
  CNLImDnCn filter(8, 2, 8, 32);
  ASSERT_TRUE(filter.ready());
  EXPECT_EQ(filter.stepX, 3);
  for (const int step : {3, 4}) {
    filter.stepX = filter.stepY = step;
    PassCheck check(filter, 53, 44, 10);
    std::vector<int> stacks;
    EXPECT_LT(check.run(false, stacks), kPassBound) << step;
    for (const int depth : {1, 2, 4, 8}) EXPECT_GT(stacks[static_cast<std::size_t>(depth)], 0);
    EXPECT_LT(check.run(true, stacks), kPassBound) << step << ", pilot";
    EXPECT_GT(stacks[8], 0);
  }
}

TEST(NonLocal, deepStacksAreTheSlowEvaluationToo) {
  const prim::FloatModeGuard floatMode;
  for (const int limit : {12, 16}) {
    CNLImDnCn filter(limit, 2, 8, 32);
    ASSERT_TRUE(filter.ready());
    filter.stepX = filter.stepY = 5;
    PassCheck check(filter, 46, 39, 10, static_cast<std::size_t>(limit));
    std::vector<int> stacks;
    EXPECT_LT(check.run(true, stacks), kPassBound) << limit;
    EXPECT_GT(stacks[static_cast<std::size_t>(limit)], 0);
  }
}

// Down to planes without a block, and those narrower than a tile one way or both.
TEST(NonLocal, planesOfAnySizeAreFilteredAsFarAsTheyGo) {
  const prim::FloatModeGuard floatMode;
  CNLImDnCn filter(8, 2, 8, 32);
  filter.stepX = filter.stepY = 4;
  constexpr int kSizes[][2] = {{1, 1},   {7, 40},  {40, 7},  {8, 8},   {9, 31},
                               {45, 13}, {31, 33}, {32, 32}, {33, 32}, {25, 19}};
  for (const auto& [w, h] : kSizes) {
    PassCheck check(filter, w, h, 40);
    std::vector<int> stacks;
    EXPECT_LT(check.run(false, stacks), kPassBound) << w << "x" << h;
    EXPECT_LT(check.run(true, stacks), kPassBound) << w << "x" << h << ", pilot";
  }
}

TEST(NonLocal, wrongArgumentsTouchNothing) {
  CNLImDnCn filter(8, 2, 8, 32);
  Plane a(40, 40), b(40, 39), out(40, 40), before(40, 40);
  fill(out, 3);
  copyImage(out, before);
  GIMG<float>*same[13], *outs[13], *const odd[] = {&a, &b};
  std::fill_n(same, 13, &a);
  std::fill_n(outs, 13, &out);
  for (const auto& [guides, planes] : {std::pair(0, 1), {4, 1}, {1, 0}, {1, 13}})
    EXPECT_EQ(filter.filterPlanes(guides, same, &a, nullptr, planes, same, outs), 4);
  EXPECT_EQ(filter.filterPlanes(1, same, &b, nullptr, 1, same, outs), 2);
  EXPECT_EQ(filter.filterPlanes(1, same, &a, &b, 1, same, outs), 2);
  EXPECT_EQ(filter.filterPlanes(2, odd, &a, nullptr, 1, same, outs), 2);
  EXPECT_EQ(filter.filterPlanes(1, same, &a, nullptr, 2, odd, outs), 2);
  EXPECT_TRUE(sameBits(before, out));

  // The threshold of the match is the stricter one while a pilot is remembered.
  filter.setFilterParams(0.01f, 1.0f, 3.0f, 0.1f, 1.5f, 0.03f, 1.5f, 1);
  EXPECT_NEAR(filter.matchThreshold, 64.0 * (1.44 * 0.0225 + 0.0009), 1e-6);
  filter.pilot = &a;
  filter.setFilterParams(0.01f, 1.0f, 3.0f, 0.1f, 1.5f, 0.03f, 1.5f, 1);
  EXPECT_NEAR(filter.matchThreshold, 64.0 * (0.72 * 0.0225 + 0.000225), 1e-6);
}

}  // namespace
