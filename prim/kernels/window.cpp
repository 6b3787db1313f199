#include "prim/alloc.h"
#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
namespace {

constexpr int kShortestWindow = 3;

// Element i of a Bartlett window of length n: 0 at both ends, 1 in the middle of an odd length.
float bartlett(int i, int n) {
  const int fromEnd = i < n - 1 - i ? i : n - 1 - i;
  return static_cast<float>(2.0 * fromEnd / (n - 1));
}

}  // namespace

int primWinBartlett2D_32f_C1IR(float* srcDst, int srcDstStep, int width, int height) {
  if (srcDst == nullptr) return kStatusNullPtr;
  if (width < kShortestWindow || height < kShortestWindow) return kStatusBadSize;
  if (srcDstStep < 1) return kStatusBadStep;
  float* across = primvMalloc_32f(width);
  if (across == nullptr) return kStatusNoMemory;
  for (int x = 0; x < width; ++x) across[x] = bartlett(x, width);
  for (int y = 0; y < height; ++y) {
    float* p = row(srcDst, srcDstStep, y);
    const float down = bartlett(y, height);
    VX_INDEPENDENT
    for (int x = 0; x < width; ++x) p[x] = p[x] * across[x] * down;
  }
  primvFree(across);
  return kStatusOk;
}

int primvWinHamming_32f_I(float* srcDst, int length) {
  if (srcDst == nullptr) return kStatusNullPtr;
  if (length < kShortestWindow) return kStatusBadSize;
  const double angle = 2.0 * 3.14159265358979323846 / (length - 1);
  const double stepCos = __builtin_cos(angle);
  const double stepSin = __builtin_sin(angle);
  double c = 1.0;
  double s = 0.0;
  for (int i = 0, j = length - 1; i <= j; ++i, --j) {
    const double weight = 0.54 - 0.46 * c;
    srcDst[i] = static_cast<float>(srcDst[i] * weight);
    if (i != j) srcDst[j] = static_cast<float>(srcDst[j] * weight);
    const double next = c * stepCos - s * stepSin;
    s = s * stepCos + c * stepSin;
    c = next;
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
