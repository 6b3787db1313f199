// What a call gives depends neither on calls beside it or around it nor on the level of the
// processor.

#include <immintrin.h>

#include <thread>

#include "tests/frame/services.h"
#include "tests/support/images.h"
#include "tests/support/variants.h"

namespace {

using namespace vx::test;

void expectSame(const std::vector<Bytes>& results, const std::vector<Bytes>& alone,
                const std::string& who) {
  for (std::size_t i = 0; i < alone.size(); ++i)
    EXPECT_TRUE(results[i] == alone[i]) << services()[i].name << ", " << who;
}

// From a cold start: the threads make all transform plans and tables, side by side. What the
// planner then knows decides the plans of the calls one by one, so that the non-local filter gives
// the same bytes, too.
TEST(SideBySide, eightHostThreadsGetTheBytesOfCallsOneByOne) {
  constexpr std::size_t kHostThreads = 8;
  const auto& all = services();
  std::vector<Bytes> results[kHostThreads];
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
  const auto alone = callAll();
  for (std::size_t t = 0; t < kHostThreads; ++t)
    expectSame(results[t], alone, "host thread " + std::to_string(t));
}

// A host's own team: its threads are members of a region already when they call.
TEST(SideBySide, aTeamOfTheHostGetsTheSameBytes) {
  const auto alone = callAll();
  const int count = static_cast<int>(alone.size());
  for (const int levels : {1, 2}) {
    std::vector<Bytes> together(alone.size());
    const Threads team(4);
    omp_set_max_active_levels(levels);
#pragma omp parallel for schedule(dynamic, 1)
    for (int i = 0; i < count; ++i) {
      const auto s = static_cast<std::size_t>(i);
      together[s] = services()[s].call();
    }
    omp_set_max_active_levels(1);
    expectSame(together, alone, "levels of teams " + std::to_string(levels));
  }
}

// From every callback, which has the host's own floating-point state.
TEST(SideBySide, callbacksMayCallEverything) {
  const auto alone = callAll();
  const Picture before = randomPicture(1, 2400, 20);
  Picture wanted = before;
  ASSERT_EQ(adjust(wanted, kTone), 1);
  const unsigned usual = _mm_getcsr(), hosts = 0x7F80;      // towards zero
  const auto state = [] { return _mm_getcsr() & ~0x3Fu; };  // the flags apart
  const auto count = static_cast<int>(alone.size());
  int calls = 0;
  Host host;
  host.onReport = host.onMemory = [&] {
    const auto i = static_cast<std::size_t>(calls++ % count);
    const bool sees = state() == hosts;
    _mm_setcsr(usual);
    EXPECT_TRUE(sees && services()[i].call() == alone[i]) << services()[i].name;
    _mm_setcsr(hosts);
  };
  while (calls < count && !HasFailure()) {
    Picture p = before;
    _mm_setcsr(hosts);
    const int result = adjust(p, kTone, &host, true);
    const bool keeps = state() == hosts;
    _mm_setcsr(usual);
    EXPECT_TRUE(result == 1 && keeps && p.bytes == wanted.bytes);
    ASSERT_EQ(calls, host.reports + 2 * host.asked);
  }
}

TEST(Levels, everyServiceGivesTheSameBytesAtEachLevelOfTheProcessor) {
  for (const Service& service : services()) {
    SCOPED_TRACE(service.name);
    Bytes wanted;
    const auto check = [&] {
      const auto got = service.call();
      if (wanted.empty()) wanted = got;
      EXPECT_TRUE(got == wanted);
    };
    onEveryVariant(check, service.sums ? 1 : 0);
  }
}

}  // namespace
