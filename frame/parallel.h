#pragma once

#include <omp.h>

#include <algorithm>
#include <atomic>
#include <exception>

#include "prim/float_mode.h"

namespace vx {

/// Whether this thread has gone through a fork(). The child has no thread but this one, and the
/// OpenMP runtime would wait for a team that is gone. Set by the handler in frame/exports/load.cpp.
inline constinit thread_local bool teamLost = false;

/// Threads that a loop of this thread may use now; their omp_get_thread_num() lie below. 1: the
/// loop runs on this thread without a region, where a host's own region may give any number.
inline int teamSize() { return teamLost ? 1 : std::max(omp_get_max_threads(), 1); }

/// Runs body(i) for i from `first` to below `last` on the OpenMP team, handed out dynamically one
/// at a time in rising order; after a fork() on the calling thread. Each thread computes under the
/// library's floating-point state. The first exception that a body throws is kept and thrown again
/// on the calling thread after the loop; the bodies that have not started by then are skipped.
template <class Body>
void parallelFor(int first, int last, const Body& body) {
  if (teamLost) {
    for (int i = first; i < last; ++i) body(i);
    return;
  }
  std::exception_ptr failure;
  std::atomic<bool> failed = false;  // no lock of the runtime's, which a fork() might leave taken
#pragma omp parallel
  {
    const prim::FloatModeGuard floatMode;
#pragma omp for schedule(monotonic : dynamic, 1)
    for (int i = first; i < last; ++i) {
      if (failed.load(std::memory_order_relaxed)) continue;
      try {
        body(i);
      } catch (...) {
        if (!failed.exchange(true)) failure = std::current_exception();
      }
    }
  }
  if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace vx
