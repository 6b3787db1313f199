#include "frame/bands.h"

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/support/images.h"

namespace {

using namespace vx;
using namespace vx::test;

// Every band is shared once and then goes through every lane, from the top down, whichever thread
// is late.
TEST(Bands, lanesFollowTheSharedBandsInOrder) {
  for (const int threads : {1, 2, 3, 7}) {
    const Threads team(threads);
    for (const auto& [height, rows] : {std::pair(1, 1), {100, 3}, {257, 16}, {64, 16}, {5, 5}}) {
      constexpr int kLanes = 3;
      std::vector<std::atomic<int>> shared(static_cast<std::size_t>(height));
      std::vector<int> next(kLanes, 0);
      std::atomic<int> wrong{0};
      const auto dawdle = [](int y) {
        if (y % 5 == 0) std::this_thread::sleep_for(std::chrono::microseconds(50));
      };
      parallelThenLanes(
          height, rows, kLanes,
          [&](int y, int count, int slot) {
            dawdle(y);
            wrong += slot < 0 || slot >= threads;
            for (int i = y; i < y + count; ++i) ++shared[i];
          },
          [&](int lane, int y, int count) {
            int& expected = next[lane];
            wrong += y != expected || count > rows;
            dawdle(y + lane);
            for (int i = y; i < y + count; ++i) wrong += shared[i] != 1;
            expected = y + count;
          });
      EXPECT_EQ(next, std::vector<int>(kLanes, height)) << height << " by " << rows;
      EXPECT_EQ(wrong, 0) << height << " by " << rows << ", " << threads << " threads";
    }
  }
}

}  // namespace
