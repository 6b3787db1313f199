#include "prim/kernels/shared/floats.h"
#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// The planes of a search, each at the row that is worked on.
SearchRow rowsAt(SearchRow s, int y) {
  s.candidate = row(s.candidate, s.candidateStep, y);
  s.target = row(s.target, s.targetStep, y);
  s.best = row(s.best, s.bestStep, y);
  s.srcU = row(s.srcU, s.srcUStep, y);
  s.srcV = row(s.srcV, s.srcVStep, y);
  s.dstU = row(s.dstU, s.dstUStep, y);
  s.dstV = row(s.dstV, s.dstVStep, y);
  return s;
}

void searchPixel(const SearchRow& r, int x) {
  float best = r.best[x];
  float u = r.dstU[x];
  float v = r.dstV[x];
  for (int i = 0; i < r.count; ++i) {
    const float d = __builtin_fabsf(r.candidate[x + i] - r.target[x]) * r.weights[i];
    if (d < best) {
      best = d;
      u = r.srcU[x + i];
      v = r.srcV[x + i];
    }
  }
  r.best[x] = best;
  r.dstU[x] = u;
  r.dstV[x] = v;
}

#ifndef VX_KERNEL_SCALAR

// A vector of pixels with its best in registers. The compiler does not vectorise over pixels around
// the loop over neighbours, and the other way round the best so far goes through memory (measured:
// 0.33 ns per pixel and neighbour).
void searchVector(const SearchRow& r, int x) {
  using Bits [[gnu::vector_size(sizeof(Floats))]] = int;
  constexpr int kMagnitude = 0x7FFFFFFF;
  const Floats target = loadFloats(r.target + x);
  Floats best = loadFloats(r.best + x);
  Floats u = loadFloats(r.dstU + x);
  Floats v = loadFloats(r.dstV + x);
  for (int i = 0; i < r.count; ++i) {
    const Floats difference = loadFloats(r.candidate + x + i) - target;
    const Floats d = reinterpret_cast<Floats>(reinterpret_cast<Bits>(difference) & kMagnitude) *
                     setFloats(r.weights[i]);
    const auto better = d < best;
    best = better ? d : best;
    u = better ? loadFloats(r.srcU + x + i) : u;
    v = better ? loadFloats(r.srcV + x + i) : v;
  }
  storeFloats(r.best + x, best);
  storeFloats(r.dstU + x, u);
  storeFloats(r.dstV + x, v);
}

#endif

}  // namespace

int primSearchRow_32f_C1R(const SearchRow* search, int width, int height) {
  if (search == nullptr) return kStatusNullPtr;
  const SearchRow& s = *search;
  if (const int status = checkImage(width, height, s.candidate, s.target, s.weights, s.best, s.srcU,
                                    s.srcV, s.dstU, s.dstV))
    return status;
  if (s.count < 1) return kStatusBadSize;
  const std::int64_t reach = std::int64_t{width} + s.count - 1;
  const int wideSteps[] = {s.candidateStep, s.srcUStep, s.srcVStep};
  for (const int step : wideSteps)
    if (step < 4 * reach) return kStatusBadStep;
  const int steps[] = {s.targetStep, s.bestStep, s.dstUStep, s.dstVStep};
  for (const int step : steps)
    if (shortStep(step, width, 4)) return kStatusBadStep;

  for (int y = 0; y < height; ++y) {
    const SearchRow r = rowsAt(s, y);
    int x = 0;
#ifndef VX_KERNEL_SCALAR
    for (; x + kFloats <= width; x += kFloats) searchVector(r, x);
#endif
    for (; x < width; ++x) searchPixel(r, x);
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
