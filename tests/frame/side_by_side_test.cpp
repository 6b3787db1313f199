// What a call gives depends neither on calls beside it nor on the level of the processor.

#include <gtest/gtest.h>

#include <thread>

#include "tests/frame/services.h"
#include "tests/support/images.h"
#include "tests/support/variants.h"

namespace {

using namespace vx::test;

// From a cold start: the threads make all transform plans and tables, side by side. What the
// planner then knows decides the plans of the calls one by one, so that the non-local filter gives
// the same bytes, too.
TEST(SideBySide, eightHostThreadsGetTheBytesOfCallsOneByOne) {
  constexpr std::size_t kHostThreads = 8;
  const auto& all = services();
  std::vector<std::vector<std::uint8_t>> results[kHostThreads];
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kHostThreads; ++t)
    threads.emplace_back([&, t] {
      const Threads team(1 + static_cast<int>(t) % 3);
      results[t].resize(all.size());
      for (std::size_t i = 0; i < all.size(); ++i) {
        const std::size_t service = (i + t * all.size() / kHostThreads) % all.size();
        results[t][service] = all[service].call();
      }
    });
  for (auto& thread : threads) thread.join();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto alone = all[i].call();
    for (std::size_t t = 0; t < kHostThreads; ++t)
      EXPECT_TRUE(results[t][i] == alone) << all[i].name << ", host thread " << t;
  }
}

// A host's own team: its threads are members of a region already when they call.
TEST(SideBySide, aTeamOfTheHostGetsTheSameBytes) {
  const auto& all = services();
  const int count = static_cast<int>(all.size());
  std::vector<std::vector<std::uint8_t>> alone, together(all.size());
  for (const Service& service : all) alone.push_back(service.call());
  for (const int levels : {1, 2}) {
    const Threads team(4);
    omp_set_max_active_levels(levels);
#pragma omp parallel for schedule(dynamic, 1)
    for (int i = 0; i < count; ++i) {
      const auto s = static_cast<std::size_t>(i);
      together[s] = all[s].call();
    }
    for (std::size_t i = 0; i < all.size(); ++i)
      EXPECT_TRUE(together[i] == alone[i]) << all[i].name << ", levels of teams " << levels;
  }
  omp_set_max_active_levels(1);
}

TEST(Levels, everyServiceGivesTheSameBytesAtEachLevelOfTheProcessor) {
  for (const Service& service : services()) {
    SCOPED_TRACE(service.name);
    std::vector<std::uint8_t> wanted;
    const auto check = [&] {
      const auto got = service.call();
      if (wanted.empty()) wanted = got;
      EXPECT_TRUE(got == wanted);
    };
    onEveryVariant(check, service.sums ? 1 : 0);
  }
}

}  // namespace
