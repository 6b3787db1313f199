#pragma once

#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <thread>

#include "frame/aligned_array.h"
#include "frame/parallel.h"
#include "frame/plane_view.h"

// Stages run their chain of steps over bands of rows that stay in the second-level cache: a pass
// over a plane in memory costs four times as much as one in cache, whatever it computes. No result
// depends on the height of a band.

namespace vx {

/// Rows of a band: `requested`, or when that is below 1 as many as keep the widest stage (about 40
/// bytes per pixel in work) within 256 KB, but 16 at least: reads of a grid share its cells between
/// the rows of a band, and fewer rows cost more than they save. Never more than `height`.
inline int bandRows(int requested, int width, int height) {
  constexpr int kBandPixels = 256 * 1024 / 40;
  const int rows = requested > 0 ? requested : std::clamp(kBandPixels / std::max(width, 1), 16, 64);
  return std::clamp(rows, 1, std::max(height, 1));
}

inline int bandCount(int height, int rows) {
  return static_cast<int>((std::int64_t{height} + rows - 1) / rows);
}

/// Calls work(y, count) for each band from the top down.
template <class Work>
void forEachBand(int height, int rows, const Work& work) {
  for (int y = 0, count = 0; y < height; y += count) {
    count = std::min(rows, height - y);
    work(y, count);
  }
}

/// Threads that parallelBands may use now: its slots lie below.
inline int bandSlots() { return teamSize(); }

/// Calls work(y, count, slot) for each band, on the team of threads; `slot` tells the scratch of
/// the threads apart.
template <class Work>
void parallelBands(int height, int rows, const Work& work) {
  if (bandSlots() == 1) {
    // Not a region of one: a host's own region would give its thread number to the slot.
    return forEachBand(height, rows, [&](int y, int count) { work(y, count, 0); });
  }
  parallelFor(0, bandCount(height, rows), [&](int band) {
    const int y = band * rows;
    work(y, std::min(rows, height - y), omp_get_thread_num());
  });
}

/// Calls shared(y, count, slot) for each band on the team, and ordered(lane, y, count) for each
/// lane and band after it, within a lane from the top down; several lanes at once. A lane comes to
/// a band soon after it has been shared and finds it in a cache. All of it is one parallel region:
/// with one for every few bands the threads of g++'s runtime wait actively in between. Neither call
/// may throw: others wait for what it does.
template <class Shared, class Ordered>
void parallelThenLanes(int height, int rows, int lanes, const Shared& shared,
                       const Ordered& ordered) {
  constexpr int kBands = 4;  // shared before the lanes come to them
  using Counters = std::unique_ptr<std::atomic<int>[]>;
  const auto groupRows =
      static_cast<int>(std::min(std::int64_t{kBands} * rows, std::int64_t{height}));
  const int groups = height > 0 ? bandCount(height, groupRows) : 0;
  Counters sharedBands, finished;
  if (bandSlots() > 1) {
    sharedBands.reset(new (std::nothrow) std::atomic<int>[groups]());
    finished.reset(new (std::nothrow) std::atomic<int>[lanes]());
  }
  if (sharedBands == nullptr || finished == nullptr) {
    forEachBand(height, rows, [&](int y, int count) {
      shared(y, count, 0);
      for (int lane = 0; lane < lanes; ++lane) ordered(lane, y, count);
    });
    return;
  }
  const auto wait = [](const std::atomic<int>& counter, int value) {
    while (counter.load(std::memory_order_acquire) < value) std::this_thread::yield();
  };
  // Work is handed out in rising order, so that what a piece waits for has begun before it.
  const int pieces = kBands + lanes;
  parallelFor(0, groups * pieces, [&](int i) noexcept {
    const int group = i / pieces;
    const int piece = i % pieces;
    const int top = group * groupRows;
    const int count = std::min(height - top, groupRows);
    std::atomic<int>& ready = sharedBands[group];
    if (piece < kBands) {
      const std::int64_t first = std::int64_t{piece} * rows;
      if (first < count)
        shared(top + static_cast<int>(first), std::min(rows, count - static_cast<int>(first)),
               omp_get_thread_num());
      ready.fetch_add(1, std::memory_order_release);
    } else {
      const int lane = piece - kBands;
      std::atomic<int>& done = finished[lane];
      wait(ready, kBands);
      wait(done, group);
      forEachBand(count, rows, [&](int y, int n) { ordered(lane, top + y, n); });
      done.store(group + 1, std::memory_order_release);
    }
  });
}

/// Scratch of one kind for each thread of the team.
template <class T>
class PerSlot {
 public:
  /// Room for `count` elements in each slot; false when memory is short.
  bool reserve(std::size_t count) {
    slots_ = static_cast<std::size_t>(bandSlots());
    if (count > PTRDIFF_MAX / sizeof(T) / slots_ - 32) return false;
    stride_ = (count + 15) / 16 * 16 + 16;  // slots share no cache line
    return array_.reserve(stride_ * slots_);
  }
  T* at(int slot) const { return array_.data() + stride_ * static_cast<std::size_t>(slot); }

 private:
  AlignedArray<T> array_;
  std::size_t stride_ = 0;
  std::size_t slots_ = 0;
};

}  // namespace vx
