#include "prim/kernels/floats.h"
#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

struct SearchRow {
  const float* candidate;
  const float* target;
  const float* weights;
  int count;
  float* best;
  const float* srcU;
  const float* srcV;
  float* dstU;
  float* dstV;
};

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

int primSearchRow_32f_C1R(const float* candidate, int candidateStep, const float* target,
                          int targetStep, const float* weights, int count, float* best,
                          int bestStep, const float* srcU, int srcUStep, const float* srcV,
                          int srcVStep, float* dstU, int dstUStep, float* dstV, int dstVStep,
                          int width, int height) {
  if (const int status =
          checkImage(width, height, candidate, target, weights, best, srcU, srcV, dstU, dstV))
    return status;
  if (count < 1) return kStatusBadSize;
  const std::int64_t reach = std::int64_t{width} + count - 1;
  const int wideSteps[] = {candidateStep, srcUStep, srcVStep};
  for (const int step : wideSteps)
    if (step < 4 * reach) return kStatusBadStep;
  const int steps[] = {targetStep, bestStep, dstUStep, dstVStep};
  for (const int step : steps)
    if (shortStep(step, width, 4)) return kStatusBadStep;

  for (int y = 0; y < height; ++y) {
    const SearchRow r = {row(candidate, candidateStep, y),
                         row(target, targetStep, y),
                         weights,
                         count,
                         row(best, bestStep, y),
                         row(srcU, srcUStep, y),
                         row(srcV, srcVStep, y),
                         row(dstU, dstUStep, y),
                         row(dstV, dstVStep, y)};
    int x = 0;
#ifndef VX_KERNEL_SCALAR
    for (; x + kFloats <= width; x += kFloats) searchVector(r, x);
#endif
    for (; x < width; ++x) searchPixel(r, x);
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
