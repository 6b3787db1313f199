#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "prim/float_mode.h"
#include "tests/nonlocal/reference_non_local.h"
#include "tests/support/attached.h"
#include "vxenhlib/nonlocal/correlation_search.h"
#include "vxenhlib/nonlocal/exact_search.h"
#include "vxenhlib/nonlocal/nl_im_dn_cn.h"

namespace {

using namespace vx;
using namespace vx::test;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// Rows come in any order of areas; sums of squares go with them.
TEST(NonLocal, guidesAreRoundedAndTheirSquaresSummedUp) {
  for (const int block : {8, 12, 16}) {
    Plane guide[2] = {{61, 90}, {61, 90}};
    for (unsigned p = 0; p < 2; ++p) fill(guide[p], p);
    at(guide[0], 3, 4) = kNan;
    at(guide[0], 5, 4) = kInfinity;
    at(guide[0], 7, 4) = -kInfinity;
    const PlaneView views[2] = {PlaneView(guide[0]), PlaneView(guide[1])};
    QuantisedGuides q;
    constexpr float kThreshold = 0.4f;
    constexpr int kMost = 1 << 20;
    ASSERT_TRUE(q.reserve(views, 2, block, 32, kThreshold, kMost));
    const double most = std::sqrt(0x1p31 * 0.99 / (2 * 6.25 * block * block));
    const double scale = std::min(most, std::sqrt(kMost / double{kThreshold}));
    EXPECT_NEAR(q.limit(), scale * scale * double{kThreshold}, 1.0);
    EXPECT_LE(q.limit(), kMost);
    for (const auto& [top, bottom] :
         {std::pair(0, 32), {8, 40}, {16, 48}, {24, 56}, {58, 90}, {3, 20}, {12, 44}}) {
      q.cover(top, bottom);
      for (int y = top; y < bottom; ++y)
        for (int x = 0; x < 61; ++x)
          for (int g = 0; g < 2; ++g) {
            const double v = double{at(guide[g], x, y)};
            const double limited = std::isnan(v) ? -1.0 : std::clamp(v, -1.0, 1.5);
            ASSERT_NEAR(q.sample(g, x, y), (limited - 0.25) * scale, 0.501) << x << ", " << y;
            const int next = x < 60 ? q.sample(g, x + 1, y) : 0;
            ASSERT_EQ(static_cast<std::int16_t>(*q.pairs(g, x, y) >> 16), next);
          }
      for (int y = top; y <= bottom - block; ++y)
        for (int x = 0; x <= 61 - block; ++x) {
          std::int64_t sum = 0;
          for (int i = 0; i < 2 * block * block; ++i) {
            const std::int64_t v = q.sample(i % 2, x + i / 2 % block, y + i / 2 / block);
            sum += v * v;
          }
          ASSERT_EQ(*q.energies(x, y), sum) << x << ", " << y;
        }
    }
  }
}

// Walks over an area with any step, in whole and small areas, at every edge; the exact search is
// held to sums by the definition, the correlation to what its transforms lose.
TEST(NonLocal, costsAreSumsOfSquaredDifferences) {
  const prim::FloatModeGuard floatMode;
  for (const auto& [block, size, step, guideCount] : {std::tuple(8, 32, 4, 1),
                                                      {8, 32, 4, 3},
                                                      {12, 48, 6, 2},
                                                      {16, 48, 8, 1},
                                                      {8, 48, 3, 1},
                                                      {12, 64, 5, 2},
                                                      {16, 64, 7, 1}}) {
    const int w = size + 25, h = size + 14;
    Plane guide[3] = {{w, h}, {w, h}, {w, h}};
    PlaneView views[3];
    for (unsigned p = 0; p < 3; ++p) {
      fill(guide[p], p);
      views[p] = PlaneView(guide[p]);
    }
    const SearchShape shape = {block, size, step};
    QuantisedGuides guides;
    ASSERT_TRUE(guides.reserve(views, guideCount, block, h, 0.3f, 1 << 20));
    guides.cover(0, h);
    const SearchTransform transform(shape);
    ExactSearch exact;
    CorrelationSearch correlation(transform);
    for (BlockSearch* search :
         {static_cast<BlockSearch*>(&exact), static_cast<BlockSearch*>(&correlation)}) {
      const bool isExact = search == &exact;
      std::array<CostMap, 2> maps;
      ASSERT_TRUE(search->reserve(shape) && maps[0].reserve(shape) && maps[1].reserve(shape));
      // Neighbours share columns; the last ones have a lower block that is clamped.
      for (const SearchArea& area : {SearchArea{0, 0, size, size},
                                     {4, 1, 24, 27},
                                     {w - size, 0, size, size},
                                     {2, 2, size, size}})
        for (const BlockPair& pair : {BlockPair{4, {2, 2 + step}},
                                      {4 + step, {2, 2 + step}},
                                      {4 + 2 * step, {2, 2 + step}},
                                      {4 + 2 * step, {3, 3}},
                                      {4 + 2 * step, {3, 3 + block / 2}},
                                      {6, {3, 4}},
                                      {7, {2, 2 + block / 2}}}) {
          const int right = area.x + area.width - block, low = area.y + area.height - block;
          if (pair.x > w - block - step || pair.y[1] > low || pair.y[0] < area.y) continue;
          SCOPED_TRACE(::testing::Message() << block << ", step " << step << ", blocks at "
                                            << pair.x << ", area at " << area.x);
          search->search(guides, w, pair, area, maps);
          ASSERT_GE(maps[0].columns, area.width - block + 1);
          for (std::size_t j = 0; j < 2; ++j) {
            const CostMap& map = maps[j];
            const double bound =
                isExact ? 0.0 : 2e-6 * *guides.energies(pair.x, pair.y[j]) + 3000.0;
            for (int y = area.y; y <= low; ++y)
              for (int x = area.x; x <= (isExact ? map.x + map.columns - 1 : right); ++x) {
                const auto found =
                    map.costs[static_cast<std::size_t>((y - map.y) * map.lanes + x - map.x)];
                ASSERT_NEAR(found, double(blockDistance(guides, pair.x, pair.y[j], x, y, block)),
                            bound)
                    << x << ", " << y;
              }
          }
        }
    }
  }
}

// The stack's positions are those of the plane, and another choice is known to be the same.
TEST(NonLocal, stacksHavePlacesInThePlane) {
  const SearchShape shape = {8, 32, 4};
  CostMap map;
  ASSERT_TRUE(map.reserve(shape));
  map.rows = 25;
  map.columns = 29;
  map.x = 100;
  map.y = 200;
  std::fill_n(map.costs.data(), 25 * 32, 1000);
  const auto put = [&](int x, int y, int cost) {
    map.costs[static_cast<std::size_t>((y - 200) * 32 + x - 100)] = cost;
  };
  put(103, 205, 10);
  put(120, 220, 20);
  put(128, 206, 30);
  const SearchArea first = {100, 200, 32, 32}, second = {104, 200, 32, 32};
  const MatchRule rule = {8, 1, 1, 50};
  StackMatches m;
  EXPECT_EQ(selectStack(map, first, 112, 212, 8, rule, m), 3);
  EXPECT_TRUE(m.x[0] == 112 && m.y[0] == 212 && m.x[1] == 103 && m.y[1] == 205 && m.x[2] == 120);
  EXPECT_TRUE(m.leftmost == 103 && m.bound == 50);
  EXPECT_EQ(selectStack(map, second, 112, 212, 8, rule, m), 3);
  EXPECT_TRUE(m.x[1] == 120 && m.x[2] == 128 && m.leftmost == 112);
  EXPECT_EQ(leastCost(map, second, 8, 4), 30);
  EXPECT_EQ(leastCost(map, first, 8, 4), 1000);
  // A full stack ends with the cost of its last block, a lone one with that of the refused one.
  EXPECT_EQ(selectStack(map, first, 112, 212, 8, {2, 1, 1, 50}, m), 2);
  EXPECT_EQ(m.bound, 10);
  EXPECT_EQ(selectStack(map, first, 112, 212, 8, {8, 1, 1, 5}, m), 1);
  EXPECT_TRUE(m.x[1] == 103 && m.leftmost == 103 && m.bound == 10);
  EXPECT_EQ(selectStack(map, first, 112, 212, 8, {1, 1, 1, 50}, m), 1);
  EXPECT_TRUE(m.x[1] == 112 && m.y[1] == 212);
}

// Of two choices for a block the first one has not seen what the second one has.
TEST(NonLocal, aBlockIsKnownByItsLastChoice) {
  FilteredStacks stacks;
  ASSERT_TRUE(stacks.reserve(8, 8, 1));
  const auto choose = [&](int y, int leftmost) {
    FilteredStacks::Stack& stack = stacks.replaceOldest(30, y);
    stack.depth = 1;
    stack.matches.x[0] = 30;
    stack.matches.y[0] = y;
    stack.matches.leftmost = leftmost;
    stack.matches.bound = 100;
  };
  EXPECT_EQ(stacks.sameChoice(30, 30, 15, 101), nullptr);
  choose(30, 20);
  EXPECT_NE(stacks.sameChoice(30, 30, 15, 101), nullptr);
  EXPECT_EQ(stacks.sameChoice(30, 30, 15, 100), nullptr);
  EXPECT_EQ(stacks.sameChoice(30, 30, 21, 101), nullptr);
  EXPECT_EQ(stacks.sameChoice(30, 31, 15, 101), nullptr);
  choose(30, 10);
  EXPECT_EQ(stacks.sameChoice(30, 30, 15, 101), nullptr);
  EXPECT_NE(stacks.sameChoice(30, 30, 10, 101), nullptr);
  for (const int y : {31, 32, 33}) choose(y, 10);
  EXPECT_NE(stacks.sameChoice(30, 30, 10, 101), nullptr);
  choose(34, 10);
  EXPECT_EQ(stacks.sameChoice(30, 30, 10, 101), nullptr);
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
    fillUnits(source, seed, 0x1p-11f, 0.025f, 0.02f);
    fillUnits(guide, seed + 1, 0x1p-11f, 0.02f, 0.015f);
    fillUnits(pilot, seed + 2, 0x1p-11f, 0.03f, 0.012f);
    fill(other, seed + 3);
  }

  // The largest difference to the slow evaluation.
  double run(bool withPilot, std::vector<int>& stacks) {
    filter.clearImages();
    filter.setFilterParams(0.01f, 1.2f, 3.0f, 0.022f, 1.3f, 0.01f, 1.5f, 1);
    Plane* const steering = withPilot ? &pilot : nullptr;
    GIMG<float>* const guides[] = {withPilot ? &pilot : &source, &guide};
    GIMG<float>* const in[] = {&source, &other};
    GIMG<float>* const outs[] = {&out[0], &out[1]};
    const int guideCount = withPilot ? 1 : 2;
    EXPECT_EQ(filter.filterPlanes(guideCount, guides, &source, steering, 2, in, outs), kVxrcOk);
    const PlaneView views[] = {PlaneView(*guides[0]), PlaneView(*guides[1])};
    const SearchShape shape = {filter.blockWidth, filter.searchWidth, filter.stepX};
    QuantisedGuides quantised;
    EXPECT_TRUE(quantised.reserve(views, guideCount, filter.blockWidth, source.height,
                                  filter.matchThreshold, mostMatchCost(shape)));
    quantised.cover(0, source.height);
    const NonLocalResult wanted =
        referencePass(filter, limit, quantised, source, steering, {&source, &other});
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
  for (const auto& [block, search, limit] :
       {std::tuple(8, 32, 8), {8, 32, 16}, {12, 48, 12}, {16, 48, 12}}) {
    CNLImDnCn filter(limit, 2, block, search);
    filter.stepX = filter.stepY = block / 2;
    PassCheck check(filter, search + 21, search + 12, 10, static_cast<std::size_t>(limit));
    std::vector<int> stacks;
    EXPECT_LT(check.run(false, stacks), kPassBound) << block << ", " << limit;
    for (const std::size_t depth : {1u, 2u, 4u}) EXPECT_TRUE(stacks[depth] > 0 || block > 8);
    EXPECT_LT(check.run(true, stacks), kPassBound) << block << ", " << limit << ", pilot";
    EXPECT_GT(stacks[static_cast<std::size_t>(limit)], 0);
  }
}

// Down to planes without a block, and those narrower than an area one way or both.
TEST(NonLocal, planesOfAnySizeAreFilteredAsFarAsTheyGo) {
  const prim::FloatModeGuard floatMode;
  CNLImDnCn filter(8, 2, 8, 32);
  filter.stepX = filter.stepY = 4;
  constexpr int kSizes[][2] = {{1, 1},   {7, 40},  {40, 7},  {8, 8},   {9, 31}, {45, 13},
                               {31, 33}, {32, 32}, {33, 32}, {25, 19}, {33, 36}};
  for (const auto& [w, h] : kSizes) {
    PassCheck check(filter, w, h, 40);
    std::vector<int> stacks;
    EXPECT_LT(check.run(false, stacks), kPassBound) << w << "x" << h;
    EXPECT_LT(check.run(true, stacks), kPassBound) << w << "x" << h << ", pilot";
  }
}

// Other steps than half a block are searched by correlation, whose costs round: nearly all pixels
// are those of exact costs.
TEST(NonLocal, otherStepsAreFilteredToo) {
  const prim::FloatModeGuard floatMode;
  CNLImDnCn filter(8, 2, 8, 32);
  EXPECT_EQ(filter.stepX, 3);
  for (const int step : {3, 5}) {
    filter.stepX = filter.stepY = step;
    PassCheck check(filter, 53, 44, 10);
    std::vector<int> stacks;
    EXPECT_LT(check.run(false, stacks), 0.01) << step;
    EXPECT_LT(check.run(true, stacks), 0.01) << step << ", pilot";
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
  // Blocks and areas that no search knows.
  for (const auto& [block, search] : {std::pair(5, 21), {8, 72}, {8, 10}}) {
    CNLImDnCn unknown(8, 2, block, search);
    EXPECT_EQ(unknown.filterPlanes(1, same, &a, nullptr, 1, same, outs), 4) << block;
  }
  EXPECT_TRUE(sameBits(before, out));

  // The threshold of the match is the stricter one while a pilot is remembered.
  filter.setFilterParams(0.01f, 1.0f, 3.0f, 0.1f, 1.5f, 0.03f, 1.5f, 1);
  EXPECT_NEAR(filter.matchThreshold, 64.0 * (1.44 * 0.0225 + 0.0009), 1e-6);
  filter.pilot = &a;
  filter.setFilterParams(0.01f, 1.0f, 3.0f, 0.1f, 1.5f, 0.03f, 1.5f, 1);
  EXPECT_NEAR(filter.matchThreshold, 64.0 * (0.72 * 0.0225 + 0.000225), 1e-6);
}

}  // namespace
