#include "prim/alloc.h"
#include "prim/kernels/lut_small.h"
#include "prim/kernels/lut_table.h"
#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Tables up to this many segments live on the stack.
constexpr int kStackSegments = 63;

// No level below the one before it, and none a NaN: the first segment that holds x is then the
// last one that does not begin above it.
inline bool neverFall(const float* levels, std::ptrdiff_t n) {
  for (std::ptrdiff_t i = 0; i + 1 < n; ++i)
    if (!(levels[i] <= levels[i + 1])) return false;
  return true;
}

// The segment of x, or -1.
inline std::ptrdiff_t findSegment(const float* levels, std::ptrdiff_t n, bool ordered, float x) {
  if (!ordered) {
    for (std::ptrdiff_t i = 0; i + 1 < n; ++i)
      if (levels[i] <= x && x < levels[i + 1]) return i;
    return -1;
  }
  if (!(x >= levels[0] && x < levels[n - 1])) return -1;
  std::ptrdiff_t low = 0;  // levels[low] <= x < levels[high]
  std::ptrdiff_t high = n - 1;
  while (high - low > 1) {
    const std::ptrdiff_t middle = low + (high - low) / 2;
    if (levels[middle] <= x)
      low = middle;
    else
      high = middle;
  }
  return low;
}

template <bool kCubic>
inline void lookUp(float* srcDst, int step, int width, int height, const float* levels,
                   std::ptrdiff_t n, const Segment* segments) {
  const bool ordered = neverFall(levels, n);
  if (ordered && n - 1 <= kSmallSegments) {
    SmallTable table;
    fillSmall(table, levels, segments, static_cast<int>(n - 1));
    for (int y = 0; y < height; ++y) lookUpSmall<kCubic>(table, row(srcDst, step, y), width);
    return;
  }
  for (int y = 0; y < height; ++y) {
    float* p = row(srcDst, step, y);
    for (int x = 0; x < width; ++x) {
      const std::ptrdiff_t i = findSegment(levels, n, ordered, p[x]);
      if (i >= 0) p[x] = evaluate<kCubic>(segments[i], p[x]);
    }
  }
}

template <bool kCubic>
inline int lut(float* srcDst, int step, int width, int height, const float* values,
               const float* levels, int count) {
  Segment small[kStackSegments];
  Segment* segments = small;
  if (count - 1 > kStackSegments)
    segments =
        static_cast<Segment*>(alignedAlloc(static_cast<std::size_t>(count - 1) * sizeof(Segment)));
  if (!segments) return kStatusNoMemory;
  buildSegments<kCubic>(values, levels, count, segments);
  lookUp<kCubic>(srcDst, step, width, height, levels, count, segments);
  if (segments != small) primvFree(segments);
  return kStatusOk;
}

inline int check(const float* srcDst, int width, int height, const float* values,
                 const float* levels, int count) {
  if (const int status = checkImage(width, height, srcDst, values, levels)) return status;
  return count < 2 ? kStatusFewLutLevels : kStatusOk;
}

}  // namespace

int primLUT_Linear_32f_C1IR(float* srcDst, int srcDstStep, int width, int height,
                            const float* values, const float* levels, int count) {
  const int status = check(srcDst, width, height, values, levels, count);
  if (status != kStatusOk) return status;
  return lut<false>(srcDst, srcDstStep, width, height, values, levels, count);
}

int primLUT_Cubic_32f_C1IR(float* srcDst, int srcDstStep, int width, int height,
                           const float* values, const float* levels, int count) {
  const int status = check(srcDst, width, height, values, levels, count);
  if (status != kStatusOk) return status;
  if (count < 4) return lut<false>(srcDst, srcDstStep, width, height, values, levels, count);
  return lut<true>(srcDst, srcDstStep, width, height, values, levels, count);
}

}  // namespace vx::prim::VX_VARIANT
