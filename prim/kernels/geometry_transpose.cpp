#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

constexpr int kBlock = 16;  // a row of a block is one cache line

// Exchanges two blocks across the diagonal, each transposed.
void exchange(float* a, float* b, int step, int columns, int rows) {
  for (int y = 0; y < rows; ++y) {
    float* line = row(a, step, y);
    for (int x = 0; x < columns; ++x) {
      float& other = row(b, step, x)[y];
      const float kept = line[x];
      line[x] = other;
      other = kept;
    }
  }
}

}  // namespace

int primTranspose_32f_C1IR(float* srcDst, int srcDstStep, int width, int height) {
  if (!srcDst) return kStatusNullPtr;
  if (emptySize(width, height) || width != height) return kStatusBadSize;
  if (shortStep(srcDstStep, width, sizeof(float))) return kStatusBadStep;

  for (int y = 0; y < height; y += kBlock) {
    const int rows = height - y < kBlock ? height - y : kBlock;
    float* diagonal = row(srcDst, srcDstStep, y) + y;
    for (int i = 1; i < rows; ++i)
      exchange(row(diagonal, srcDstStep, i), diagonal + i, srcDstStep, i, 1);
    for (int x = y + kBlock; x < width; x += kBlock) {
      const int columns = width - x < kBlock ? width - x : kBlock;
      exchange(row(srcDst, srcDstStep, y) + x, row(srcDst, srcDstStep, x) + y, srcDstStep, columns,
               rows);
    }
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
