#include "prim/kernels/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

#define VX_TEXT_OF(x) #x
#define VX_TEXT(x) VX_TEXT_OF(x)
constexpr bool kGeneric = __builtin_strcmp(VX_TEXT(VX_VARIANT), "generic") == 0;

// Sums of the elements apart by their position in the row: even and odd in the generic body,
// sixteen lanes in every other, so that all vector lengths give the same bits.
constexpr int kLanes = kGeneric ? 2 : 16;

inline double sumOf(const float* src, int step, int width, int height) {
  float lanes[kLanes] = {};
  for (int y = 0; y < height; ++y) {
    const float* in = row(src, step, y);
    std::ptrdiff_t x = 0;
    for (; x + kLanes <= width; x += kLanes)
      for (int l = 0; l < kLanes; ++l) lanes[l] += in[x + l];
    for (int l = 0; x < width; ++x, ++l) lanes[l] += in[x];
  }
  for (int half = kLanes / 2; half > 0; half /= 2)
    for (int l = 0; l < half; ++l) lanes[l] += lanes[l + half];
  return static_cast<double>(lanes[0]);
}

inline double pixelCount(int width, int height) {
  return static_cast<double>(std::int64_t{width} * height);
}

}  // namespace

int primSum_32f_C1R(const float* src, int srcStep, int width, int height, double* sum, int) {
  if (!src || !sum) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  *sum = sumOf(src, srcStep, width, height);
  return kStatusOk;
}

int primMean_32f_C1R(const float* src, int srcStep, int width, int height, double* mean, int) {
  if (!src || !mean) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  *mean = sumOf(src, srcStep, width, height) / pixelCount(width, height);
  return kStatusOk;
}

int primMean_16s_C1R(const std::int16_t* src, int srcStep, int width, int height, double* mean) {
  if (!src || !mean) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  constexpr int kStrip = 1 << 15;  // its sum fits an int
  std::int64_t sum = 0;
  for (int y = 0; y < height; ++y) {
    const std::int16_t* in = row(src, srcStep, y);
    for (std::ptrdiff_t x = 0; x < width; x += kStrip) {
      const int count = width - x < kStrip ? static_cast<int>(width - x) : kStrip;
      int partial = 0;
      for (int i = 0; i < count; ++i) partial += in[x + i];
      sum += partial;
    }
  }
  *mean = static_cast<double>(sum) / pixelCount(width, height);
  return kStatusOk;
}

int primMin_16s_C1R(const std::int16_t* src, int srcStep, int width, int height,
                    std::int16_t* min) {
  if (!src || !min) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  std::int16_t least = INT16_MAX;
  for (int y = 0; y < height && least > INT16_MIN; ++y) {
    const std::int16_t* in = row(src, srcStep, y);
    for (int x = 0; x < width; ++x) least = in[x] < least ? in[x] : least;
  }
  *min = least;
  return kStatusOk;
}

int primMax_32f_C1R(const float* src, int srcStep, int width, int height, float* max) {
  if (!src || !max) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  float largest = -__builtin_inff();
  bool comparable = false;
  for (int y = 0; y < height; ++y) {
    const float* in = row(src, srcStep, y);
    for (int x = 0; x < width; ++x) {
      largest = largest < in[x] ? in[x] : largest;
      comparable = comparable || in[x] == in[x];
    }
  }
  // Which of two zeros comes first depends on the order of comparing: it is always the positive.
  *max = comparable ? largest + 0.0f : 0.0f;
  return kStatusOk;
}

int primMinIndex_32f_C1R(const float* src, int srcStep, int width, int height, float* min,
                         int* indexX, int* indexY) {
  if (!src || !min || !indexX || !indexY) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  *min = 0.0f;
  *indexX = 0;
  *indexY = 0;
  bool found = false;
  for (int y = 0; y < height; ++y) {
    const float* in = row(src, srcStep, y);
    for (int x = 0; x < width; ++x) {
      if (found ? in[x] < *min : in[x] == in[x]) {
        *min = in[x];
        *indexX = x;
        *indexY = y;
        found = true;
      }
    }
  }
  return kStatusOk;
}

int primNormDiffL1_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                          int src2Step, int width, int height, double* result) {
  if (!src1 || !src2 || !result) return kStatusNullPtr;
  if (emptySize(width, height)) return kStatusBadSize;
  if (src1Step < 1 || src2Step < 1) return kStatusBadStep;
  constexpr int kStrip = 1 << 20;  // its sum fits an int
  std::int64_t sum = 0;
  for (int y = 0; y < height; ++y) {
    const std::uint8_t* a = row(src1, src1Step, y);
    const std::uint8_t* b = row(src2, src2Step, y);
    for (std::ptrdiff_t x = 0; x < width; x += kStrip) {
      const int count = width - x < kStrip ? static_cast<int>(width - x) : kStrip;
      int partial = 0;
      for (int i = 0; i < count; ++i) partial += __builtin_abs(a[x + i] - b[x + i]);
      sum += partial;
    }
  }
  *result = static_cast<double>(sum);
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
