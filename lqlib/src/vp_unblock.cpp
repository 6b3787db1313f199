#include "lqlib/src/vp_unblock.h"

#include <omp.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <deque>
#include <new>

#include "frame/exceptions.h"
#include "frame/parallel.h"
#include "lqlib/src/failing_trips.h"
#include "lqlib/src/unblock_pixels.h"
#include "lqlib/src/unblock_plan.h"
#include "lqlib/src/unblock_strip.h"

namespace vx {
namespace {

// Strips repeat the work of seven rows (sixteen with vertical subsampling) at their tops, so they
// are as high as a fair division among the threads allows.
int stripCount(const UnblockPixels& pixels, int threads) {
  if (threads == 1 || pixels.rowsOverlap()) return 1;
  constexpr int kGoodHeight = 384, kLeastHeight = 16, kMostPerThread = 4;
  const int perThread = std::clamp(pixels.height / (kGoodHeight * threads), 1, kMostPerThread);
  return std::clamp(perThread * threads, 1, std::max(1, pixels.height / kLeastHeight));
}

void unblock(const UnblockPixels& pixels, UnblockPlan& plan) {
  ImageBuffer<std::uint8_t, 3> source(pixels.width, pixels.height);
  readUnblockSource(pixels, source);
  const int threads = teamSize();
  const int strips = stripCount(pixels, threads);
  // One for each thread of the team, since any of them may take the few strips of a low picture.
  std::deque<UnblockStrip> workers;
  for (int i = 0; i < (strips == 1 ? 1 : threads); ++i) workers.emplace_back(plan, source, pixels);
  // Takes the last memory; what follows cannot fail and may write.
  markFailingTrips(plan, source, workers);
  const auto edge = [&](int strip) {
    return static_cast<int>(std::int64_t{pixels.height} * strip / strips);
  };
  if (strips == 1) {
    workers.front().run(0, pixels.height);
    return;
  }
  parallelFor(0, strips,
              [&](int strip) { workers[omp_get_thread_num()].run(edge(strip), edge(strip + 1)); });
}

}  // namespace

int vp_unblock(int deep, void* pixels, int pixelStep, int rowStep, int width, int height,
               int quality, int jpegMode, int shiftStep) {
  UnblockPlan plan(width, height, quality, jpegMode, shiftStep);
  if (pixels == nullptr || width < 1 || height < 1) return plan.trips;
  constexpr int kMost = INT_MAX - 1024;  // leaves room for what surrounds the picture
  if (width > kMost || height > kMost) throw MemoryException();
  try {
    unblock({deep != 0, pixels, pixelStep, rowStep, width, height}, plan);
  } catch (const std::bad_alloc&) {
    throw MemoryException();
  }
  return plan.trips;
}

}  // namespace vx
