#pragma once

#include <immintrin.h>
#include <omp.h>

#include "frame/exceptions.h"
#include "frame/exports/load.h"
#include "prim/dispatch.h"
#include "tests/fuzz/byte_source.h"
#include "tests/fuzz/guarded_memory.h"
#include "tests/fuzz/inputs.h"
#include "tests/support/heap.h"

#ifdef __SANITIZE_THREAD__
#define VX_ONE_THREAD true
#else
#define VX_ONE_THREAD false
#endif

namespace vx::test {

/// What a host and its machine bring to a call: a processor level, a number of threads, and a
/// floating-point state that must not matter and must still be there afterwards.
class Surroundings {
 public:
  explicit Surroundings(ByteSource& source, bool oneThread) {
    prim::primCpuColumn = static_cast<int>(source.byte()) % (prim::lastRunnableColumn() + 1);
    // The thread sanitizer does not see the synchronisation of a team.
    constexpr int kTeam = VX_ONE_THREAD ? 1 : 2;
    omp_set_num_threads(!oneThread && source.oneIn(16) ? kTeam : 1);
    // Fresh, flushing, rounding towards zero, rounding upwards with every exception a trap.
    static constexpr unsigned kStates[] = {0x1F80, 0x9FC0, 0x7F80, 0x4000};
    state_ = source.oneOf(kStates);
  }
  /// Runs `call` under the host's floating-point state.
  template <class Call>
  void run(const Call& call) const {
    const unsigned own = _mm_getcsr();
    const auto restore = [&] {
      const unsigned after = _mm_getcsr();
      _mm_setcsr(own);
      constexpr unsigned kFlags = 0x3F;  // of exceptions that have happened
      require((after & ~kFlags) == state_, "the host keeps its floating-point state");
    };
    _mm_setcsr(state_);
    try {
      call();
    } catch (...) {
      restore();
      throw;
    }
    restore();
  }

 private:
  unsigned state_;
};

/// Rows of `rowBytes` one below the other or above, close together, apart or overlapping, or as
/// far apart as an int can say.
inline int fuzzStep(ByteSource& source, int rowBytes, int height) {
  const int slack = static_cast<int>(source.byte() % 23);
  switch (source.byte() % 8) {
    case 0:
      return -rowBytes - slack;
    case 1:
      return height == 1 ? source.integer(-9, 9) : slack;
    case 2:
      return rowBytes + slack;
    case 3:
      return source.integer(-rowBytes, rowBytes);
    default:
      return rowBytes + slack % 5;
  }
}

/// Makes the call with the allocation of that number refused (none: -1), or also all after it.
/// False when the call ended for want of memory; nothing may be left behind in either case.
template <class Call>
bool endsOrLacksMemory(const Surroundings& surroundings, int refused, bool onwards,
                       const Call& call) {
  bool done = false;
  {
    const Heap heap(refused, onwards);
    try {
      surroundings.run(call);
      done = true;
    } catch (const MemoryException&) {
      require(Heap::refusedOne(), "there was memory");
    }
    require(Heap::live() == 0, "everything is given back");
  }
  return done;
}

}  // namespace vx::test
