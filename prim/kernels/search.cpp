#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {

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

  for (int y = 0; y < height; ++y) {
    const float* __restrict c = row(candidate, candidateStep, y);
    const float* __restrict t = row(target, targetStep, y);
    const float* __restrict fromU = row(srcU, srcUStep, y);
    const float* __restrict fromV = row(srcV, srcVStep, y);
    float* __restrict b = row(best, bestStep, y);
    float* __restrict toU = row(dstU, dstUStep, y);
    float* __restrict toV = row(dstV, dstVStep, y);
    for (int x = 0; x < width; ++x) {
      const float d = __builtin_fabsf(c[x] - t[x]) * weight;
      const float old = b[x];
      const float u = fromU[x];
      const float v = fromV[x];
      const float oldU = toU[x];
      const float oldV = toV[x];
      b[x] = d < old ? d : old;
      toU[x] = d < old ? u : oldU;
      toV[x] = d < old ? v : oldV;
    }
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
