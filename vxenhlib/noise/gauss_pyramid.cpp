#include "vxenhlib/noise/gauss_pyramid.h"

#include <algorithm>

#include "frame/plane_ops.h"
#include "prim/memory.h"
#include "prim/pyramid.h"

namespace vx {
namespace {

constexpr int kSingle = 13;  // data type of the buffer queries

int paddedSize(int size, int levels) {
  const int unit = 1 << levels;
  return (size + unit - 1) & -unit;
}

}  // namespace

void copyPadded(const GIMG<float>& source, GIMG<float>& target) {
  target.status = prim::primCopyReplicateBorder_32f_C1R(
      source.data, source.step, std::min(source.roiWidth, target.roiWidth),
      std::min(source.roiHeight, target.roiHeight), target.data, target.step, target.roiWidth,
      target.roiHeight, 0, 0);
}

void GaussPyramid::release() {
  for (auto& image : level) image.reset();
  downBuffer_.release();
  upBuffer_.release();
}

bool GaussPyramid::reallocate(int width, int height) {
  release();
  int down = 0;
  int up = 0;
  if (prim::primPyrDownGetBufSize(width, kSingle, 1, &down) < 0 ||
      prim::primPyrUpGetBufSize(width, kSingle, 1, &up) < 0 ||
      !downBuffer_.reserve(static_cast<std::size_t>(down)) ||
      !upBuffer_.reserve(static_cast<std::size_t>(up)))
    return false;
  for (int i = 0; i <= levels; ++i) {
    level[i] = std::make_unique<GIMG<float>>(width >> i, height >> i);
    if (level[i]->data == nullptr) return false;
  }
  return true;
}

int GaussPyramid::build(const GIMG<float>& image, int newLevels, bool newLaplacian) {
  if (newLevels < 1 || newLevels > kMostLevels) return kVxrcBadArgument;
  const int width = paddedSize(image.roiWidth, newLevels);
  const int height = paddedSize(image.roiHeight, newLevels);
  const bool fits = laplacian == newLaplacian && levels == newLevels && level[0] != nullptr &&
                    level[0]->width == width && level[0]->height == height;
  laplacian = newLaplacian;
  levels = newLevels;
  if (!fits && !reallocate(width, height)) {
    release();
    return kVxrcNoMemory;
  }
  copyPadded(image, *level[0]);
  for (int i = 0; i < levels; ++i) {
    GIMG<float>& upper = *level[i];
    GIMG<float>& lower = *level[i + 1];
    lower.status =
        prim::primPyrDown_Gauss5x5_32f_C1R(upper.data, upper.step, lower.data, lower.step,
                                           upper.width, upper.height, downBuffer_.data());
    if (!laplacian) continue;
    GIMG<float> expanded(upper.width, upper.height);
    prim::primPyrUp_Gauss5x5_32f_C1R(lower.data, lower.step, expanded.data, expanded.step,
                                     lower.width, lower.height, upBuffer_.data());
    upper.status = sub(expanded, upper);
  }
  return kVxrcOk;
}

int GaussPyramid::takeDetail(int index, GIMG<float>& detail) {
  if (laplacian || index < 0 || index >= levels || level[index] == nullptr) return kVxrcBadArgument;
  GIMG<float>& upper = *level[index];
  GIMG<float>& lower = *level[index + 1];
  if (detail.width != upper.width || detail.height != upper.height) return kVxrcSizeMismatch;
  copy(upper, detail);
  upper.status = prim::primPyrUp_Gauss5x5_32f_C1R(lower.data, lower.step, upper.data, upper.step,
                                                  lower.width, lower.height, upBuffer_.data());
  detail.status = sub(upper, detail);
  return kVxrcOk;
}

}  // namespace vx
