#include "vxenhlib/noise/deconvolver.h"

#include <algorithm>
#include <cmath>

#include "prim/deconvolution.h"
#include "prim/memory.h"
#include "vxenhlib/vxrc.h"

namespace vx {
namespace {

void copyRect(const GIMG<float>& from, GIMG<float>& to, int x, int y, int width, int height) {
  if (width < 1 || height < 1) return;
  to.status =
      prim::primCopy_32f_C1R(from.row(y) + x, from.step, to.row(y) + x, to.step, width, height);
}

int frameOf(float sigma) { return sigma < 0.65f ? 4 : sigma < 1.0f ? 5 : sigma < 1.5f ? 6 : 8; }

void copyFrame(const GIMG<float>& from, GIMG<float>& to, int frame) {
  const int w = from.roiWidth;
  const int h = from.roiHeight;
  const int across = std::min(frame, w);
  const int down = std::min(frame, h);
  copyRect(from, to, 0, 0, w, down);
  copyRect(from, to, 0, h - down, w, down);
  copyRect(from, to, 0, 0, across, h);
  copyRect(from, to, w - across, 0, across, h);
}

}  // namespace

void Deconvolver::release() {
  if (state != nullptr) prim::primDeconvLRFree_32f_C1R(state);
  state = nullptr;
}

void Deconvolver::setKernel(float sigma) {
  kernelSize = sigma < 0.6f ? 3 : sigma < 0.9f ? 5 : sigma < 1.4f ? 7 : 9;
  iterations = sigma < 0.6f ? 5 : sigma < 0.9f ? 10 : sigma < 1.4f ? 15 : 20;
  float weights[kLargestKernel];
  for (int i = 0; i < kernelSize; ++i) {
    const float distance = static_cast<float>(i - kernelSize / 2);
    weights[i] = std::exp(-(distance * distance) / (2.0f * sigma * sigma));
  }
  float sum = 0.0f;
  for (int y = 0; y < kernelSize; ++y)
    for (int x = 0; x < kernelSize; ++x) {
      kernel[y * kernelSize + x] = weights[y] * weights[x];
      sum += kernel[y * kernelSize + x];
    }
  for (int i = 0; i < kernelSize * kernelSize; ++i) kernel[i] /= sum;
}

int Deconvolver::deconvolve(const GIMG<float>& source, GIMG<float>& target, float sigma) {
  const int w = source.roiWidth;
  const int h = source.roiHeight;
  if (target.roiWidth != w || target.roiHeight != h) return kVxrcSizeMismatch;
  if (source.data == nullptr || target.data == nullptr) return kVxrcNoMemory;
  setKernel(sigma);
  release();
  copyRect(source, target, 0, 0, w, h);
  const int refusal = prim::primDeconvLRInitAlloc_32f_C1R(
      &state, kernel, kernelSize, w + kernelSize - 1, h + kernelSize - 1, threshold);
  if (refusal < 0) return kVxrcNoMemory;
  target.status = prim::primDeconvLR_32f_C1R(source.data, source.step, target.data, target.step, w,
                                             h, iterations, state);
  copyFrame(source, target, frameOf(sigma));
  release();
  return kVxrcOk;
}

}  // namespace vx
