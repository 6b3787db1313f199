#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>

namespace vx::bench {

inline double seconds(clockid_t clock) {
  timespec now;
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// The fastest turn of a benchmark: by the wall clock, and by the time that this process spent on
/// all its threads, which other processes do not lengthen.
class FastestTurn {
 public:
  template <class Run>
  void time(const Run& run) {
    const double wallStart = seconds(CLOCK_MONOTONIC), cpuStart = seconds(CLOCK_PROCESS_CPUTIME_ID);
    run();
    wall_ = std::min(wall_, seconds(CLOCK_MONOTONIC) - wallStart);
    cpu_ = std::min(cpu_, seconds(CLOCK_PROCESS_CPUTIME_ID) - cpuStart);
  }
  void report(benchmark::State& state, double megapixels) const {
    state.counters["MP/s"] = megapixels / wall_;
    state.counters["ms/MP"] = 1e3 * wall_ / megapixels;
    state.counters["cpu_ms/MP"] = 1e3 * cpu_ / megapixels;
  }

 private:
  double wall_ = 1e30;
  double cpu_ = 1e30;
};

}  // namespace vx::bench
