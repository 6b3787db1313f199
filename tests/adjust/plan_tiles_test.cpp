#include "adjust/plan_tiles.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

struct Plan {
  int count, size, step;
  bool operator==(const Plan&) const = default;
};

Plan plan(int size, int target) {
  Plan p{};
  p.count = vx::planTiles(size, target, 0.4f, p.size, p.step);
  return p;
}

TEST(PlanTiles, knownPlans) {
  const struct {
    int size, target;
    Plan plan;
  } cases[] = {{2304, 1536, {2, 1918, 1152}}, {2764, 1536, {2, 2300, 922}},
               {2765, 1536, {3, 1532, 717}},  {8000, 1536, {8, 1664, 916}},
               {2304, 1152, {3, 1280, 597}},  {2764, 1152, {3, 1532, 717}},
               {2765, 1152, {4, 1148, 576}},  {8000, 1152, {11, 1208, 683}},
               {1727, 1152, {1, 1726, 1726}}, {1, 1152, {1, 0, 0}}};
  for (const auto& c : cases) EXPECT_EQ(plan(c.size, c.target), c.plan) << c.size;
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

}  // namespace
