#pragma once

#include <immintrin.h>
#include <omp.h>

#include <stdexcept>

#include "frame/exceptions.h"
#include "prim/dispatch.h"
#include "tests/fuzz/byte_source.h"
#include "tests/fuzz/guarded_memory.h"
#include "tests/support/attached.h"
#include "tests/support/heap.h"

namespace vx::test {

/// Lays out a picture with rows one below the other or above, close together, apart or overlapping,
/// or as far apart as an int can say. Sets the step between rows; null for a picture that has no
/// size or finds no room.
inline std::uint8_t* placePicture(GuardedMemory& memory, ByteSource& source, const Shape& shape,
                                  int& rowStep) {
  const int slack = static_cast<int>(source.byte() % 23), kind = source.byte() % 8;
  const auto samples = static_cast<int>(std::clamp<std::int64_t>(shape.rowSamples(), 1, 1 << 16));
  rowStep = samples + slack % 5;
  if (kind == 0) rowStep = -samples - slack;
  if (kind == 1) rowStep = shape.height == 1 ? source.integer(-9, 9) : slack;
  if (kind == 2) rowStep = samples + slack;
  if (kind == 3) rowStep = source.integer(-samples, samples);
  if (!shape.sized() || shape.rowSamples() > samples) return nullptr;
  if (std::uint8_t* const placed = memory.place(shape, rowStep, source)) return placed;
  rowStep = samples;
  return memory.place(shape, rowStep, source);
}

enum class End { done, noMemory, hostThrew };

/// What a host and its machine bring to a call: a processor level, a number of threads, a
/// floating-point state that must not matter and must still be there afterwards, and in one input
/// of eight an allocation, or all from one on, that fails.
class Surroundings {
 public:
  Surroundings(ByteSource& source, unsigned allocations) {
    const bool faults = source.oneIn(8);
    if (faults) refused_ = static_cast<int>(source.byte() % allocations);
    fromThenOn_ = source.oneIn(2);
    prim::primCpuColumn = static_cast<int>(source.byte()) % (prim::lastRunnableColumn() + 1);
#ifdef __SANITIZE_THREAD__  // does not see the synchronisation of a team
    constexpr int kTeam = 1;
#else
    constexpr int kTeam = 2;
#endif
    omp_set_num_threads(!faults && source.oneIn(16) ? kTeam : 1);
    // Fresh, flushing, rounding towards zero, rounding upwards with every exception a trap.
    static constexpr unsigned kStates[] = {0x1F80, 0x9FC0, 0x7F80, 0x4000};
    state_ = source.oneOf(kStates);
  }
  /// Makes the call; nothing may be left behind, however it ends.
  template <class Call>
  End run(const Call& call, bool hostMayThrow = false) const {
    End end = End::done;
    const Heap heap(refused_, fromThenOn_);
    const unsigned own = _mm_getcsr();
    _mm_setcsr(state_);
    try {
      call();
    } catch (const MemoryException&) {
      end = End::noMemory;
    } catch (const std::runtime_error&) {
      end = End::hostThrew;
    }
    const unsigned after = _mm_getcsr();
    _mm_setcsr(own);
    constexpr unsigned kFlags = 0x3F;  // of exceptions that have happened
    require((after & ~kFlags) == state_, "the host keeps its floating-point state");
    require(end != End::noMemory || Heap::refusedOne(), "there was memory");
    require(end != End::hostThrew || hostMayThrow, "only the host throws this");
    require(Heap::live() == 0, "everything is given back");
    return end;
  }

 private:
  int refused_ = -1;
  bool fromThenOn_;
  unsigned state_;
};

}  // namespace vx::test
