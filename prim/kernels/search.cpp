#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// a where the mask is set, else b. Written in bits: a choice by `?:` becomes a branch around the
// stores, and the loop stays scalar (measured: 25 times slower).
inline float choose(std::uint32_t mask, float a, float b) {
  return __builtin_bit_cast(float, (__builtin_bit_cast(std::uint32_t, a) & mask) |
                                       (__builtin_bit_cast(std::uint32_t, b) & ~mask));
}

void searchRow(const float* __restrict candidate, const float* __restrict target, float weight,
               float* __restrict best, const float* __restrict srcU, const float* __restrict srcV,
               float* __restrict dstU, float* __restrict dstV, int width) {
  for (int x = 0; x < width; ++x) {
    const float d = __builtin_fabsf(candidate[x] - target[x]) * weight;
    const std::uint32_t better = d < best[x] ? ~0u : 0u;
    best[x] = choose(better, d, best[x]);
    dstU[x] = choose(better, srcU[x], dstU[x]);
    dstV[x] = choose(better, srcV[x], dstV[x]);
  }
}

}  // namespace

int primSearchStep_32f_C1R(const float* candidate, int candidateStep, const float* target,
                           int targetStep, float weight, float* best, int bestStep,
                           const float* srcU, int srcUStep, const float* srcV, int srcVStep,
                           float* dstU, int dstUStep, float* dstV, int dstVStep, int width,
                           int height) {
  if (!candidate || !target || !best || !srcU || !srcV || !dstU || !dstV) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  const int steps[] = {candidateStep, targetStep, bestStep, srcUStep, srcVStep, dstUStep, dstVStep};
  for (const int step : steps)
    if (shortStep(step, width, 4)) return kStatusBadStep;

  for (int y = 0; y < height; ++y)
    searchRow(row(candidate, candidateStep, y), row(target, targetStep, y), weight,
              row(best, bestStep, y), row(srcU, srcUStep, y), row(srcV, srcVStep, y),
              row(dstU, dstUStep, y), row(dstV, dstVStep, y), width);
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
