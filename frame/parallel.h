#pragma once

#include <exception>

#include "prim/float_mode.h"

namespace vx {

/// Runs body(i) for i from `first` to below `last` on the OpenMP team, handed out dynamically one
/// at a time in rising order. Each thread computes under the library's floating-point state. The
/// first exception that a body throws is kept and thrown again on the calling thread after the
/// loop; the bodies that have not started by then are skipped.
template <class Body>
void parallelFor(int first, int last, const Body& body) {
  std::exception_ptr failure;
  bool failed = false;
#pragma omp parallel
  {
    const prim::FloatModeGuard floatMode;
#pragma omp for schedule(monotonic : dynamic, 1)
    for (int i = first; i < last; ++i) {
      bool skip = false;
#pragma omp atomic read
      skip = failed;
      if (skip) continue;
      try {
        body(i);
      } catch (...) {
#pragma omp critical(vxParallelFailure)
        if (failure == nullptr) failure = std::current_exception();
#pragma omp atomic write
        failed = true;
      }
    }
  }
  if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace vx
