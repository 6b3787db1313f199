#include "prim/kernels/shared/floats.h"
#include "prim/kernels/shared/kernel.h"

// A NaN never wins a comparison of the form `v < best ? v : best`, which is also what the vector
// instructions do. Equal elements of other bits (zeros of both signs; under denormals-are-zero all
// denormals) come out in the order of comparing, which no result may depend on: the largest is
// returned with +0 added, the smallest is read again at its first position.

namespace vx::prim::VX_VARIANT {
namespace {

constexpr float kInfinity = __builtin_inff();

template <bool kLargest>
inline float winnerOf(float v, float best) {
  return kLargest ? (v > best ? v : best) : (v < best ? v : best);
}

template <bool kLargest>
inline Floats winnerOf(Floats v, Floats best) {
  return kLargest ? larger(v, best) : smaller(v, best);
}

// The largest or smallest element; the infinity that loses to all when every element is a NaN.
template <bool kLargest>
inline float extremeOf(const float* src, int step, int width, int height) {
  constexpr float kLoser = kLargest ? -kInfinity : kInfinity;
  float best = kLoser;
  if constexpr (kGeneric) {
    for (int y = 0; y < height; ++y) {
      const float* in = row(src, step, y);
      for (int x = 0; x < width; ++x) best = winnerOf<kLargest>(in[x], best);
    }
  } else {
    const Floats loser = setFloats(kLoser);
    Floats lanes0 = loser;
    Floats lanes1 = loser;
    for (int y = 0; y < height; ++y) {
      const float* in = row(src, step, y);
      std::ptrdiff_t x = 0;
      for (; x + 2 * kFloats <= width; x += 2 * kFloats) {
        lanes0 = winnerOf<kLargest>(loadFloats(in + x), lanes0);
        lanes1 = winnerOf<kLargest>(loadFloats(in + x + kFloats), lanes1);
      }
      if (x + kFloats <= width) {
        lanes0 = winnerOf<kLargest>(loadFloats(in + x), lanes0);
        x += kFloats;
      }
      if (x < width)
        lanes1 = winnerOf<kLargest>(loadPart(in + x, static_cast<int>(width - x), loser), lanes1);
    }
    float lanes[kFloats];
    storeFloats(lanes, winnerOf<kLargest>(lanes0, lanes1));
    for (float v : lanes) best = winnerOf<kLargest>(v, best);
  }
  return best;
}

// First position of a value in a row, or -1.
inline int findInRow(const float* in, int width, float value) {
  if constexpr (kGeneric) {
    for (int x = 0; x < width; ++x)
      if (in[x] == value) return x;
    return -1;
  }
  const Floats wanted = setFloats(value);
  const Floats never = setFloats(__builtin_nanf(""));
  std::ptrdiff_t x = 0;
  for (; x + kFloats <= width; x += kFloats) {
    const unsigned found = equalMask(loadFloats(in + x), wanted);
    if (found != 0) return static_cast<int>(x) + __builtin_ctz(found);
  }
  if (x == width) return -1;
  const unsigned found = equalMask(loadPart(in + x, static_cast<int>(width - x), never), wanted);
  return found != 0 ? static_cast<int>(x) + __builtin_ctz(found) : -1;
}

inline bool findFirst(const float* src, int step, int width, int height, float value, int& atX,
                      int& atY) {
  for (int y = 0; y < height; ++y) {
    const int x = findInRow(row(src, step, y), width, value);
    if (x < 0) continue;
    atX = x;
    atY = y;
    return true;
  }
  return false;
}

}  // namespace

int primMax_32f_C1R(const float* src, int srcStep, int width, int height, float* max) {
  if (const int status = checkImage(width, height, src, max)) return status;
  const float largest = extremeOf<true>(src, srcStep, width, height);
  int x = 0;
  int y = 0;
  const bool comparable =
      largest > -kInfinity || findFirst(src, srcStep, width, height, largest, x, y);
  *max = comparable ? largest + 0.0f : 0.0f;
  return kStatusOk;
}

int primMinIndex_32f_C1R(const float* src, int srcStep, int width, int height, float* min,
                         int* indexX, int* indexY) {
  if (const int status = checkImage(width, height, src, min, indexX, indexY)) return status;
  const float smallest = extremeOf<false>(src, srcStep, width, height);
  int x = 0;
  int y = 0;
  const bool comparable = findFirst(src, srcStep, width, height, smallest, x, y);
  *min = comparable ? row(src, srcStep, y)[x] : 0.0f;
  *indexX = x;
  *indexY = y;
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
