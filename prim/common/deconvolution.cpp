#include "prim/deconvolution.h"

#include <cstddef>
#include <initializer_list>
#include <limits>
#include <new>

#include "prim/alloc.h"
#include "prim/deconvolution_state.h"

namespace vx::prim {
namespace {

float* allocate(std::size_t width, std::size_t height) {
  if (height > std::numeric_limits<std::size_t>::max() / sizeof(float) / width) return nullptr;
  return static_cast<float*>(alignedAlloc(width * height * sizeof(float)));
}

}  // namespace

int primDeconvLRInitAlloc_32f_C1R(primDeconvLRState** state, const float* kernel, int kernelSize,
                                  int maxWidth, int maxHeight, float threshold) {
  if (!state || !kernel) return kStatusNullPtr;
  if (kernelSize < 1 || maxWidth < 1 || maxHeight < 1 || kernelSize > maxWidth ||
      kernelSize > maxHeight)
    return kStatusBadSize;
  if (threshold < 0) return kStatusBadParameter;

  void* block = alignedAlloc(sizeof(primDeconvLRState));
  if (!block) return kStatusNoMemory;
  auto* made = new (block) primDeconvLRState;
  made->maxWidth = maxWidth;
  made->maxHeight = maxHeight;
  made->kernelSize = kernelSize;
  made->anchor = (kernelSize - 1) / 2;
  made->threshold = threshold;

  const auto size = static_cast<std::size_t>(kernelSize);
  const std::size_t width = static_cast<std::size_t>(maxWidth) + size;
  const std::size_t height = static_cast<std::size_t>(maxHeight) + size;
  const bool complete =
      (made->kernel = allocate(size, size)) && (made->transposed = allocate(size, size)) &&
      (made->estimate = allocate(width, height)) && (made->quotient = allocate(width, height)) &&
      (made->kernelSum = allocate(width, height)) &&
      (made->transposedSum = allocate(width, height));
  if (!complete) {
    primDeconvLRFree_32f_C1R(made);
    return kStatusNoMemory;
  }
  for (std::size_t i = 0; i < size * size; ++i) {
    made->kernel[i] = kernel[i];
    made->transposed[size * size - 1 - i] = kernel[i];
  }
  *state = made;
  return kStatusOk;
}

int primDeconvLRFree_32f_C1R(primDeconvLRState* state) {
  if (!state) return kStatusNullPtr;
  for (float* block : {state->kernel, state->transposed, state->estimate, state->quotient,
                       state->kernelSum, state->transposedSum})
    primFree(block);
  primFree(state);
  return kStatusOk;
}

}  // namespace vx::prim
