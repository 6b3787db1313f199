#include "prim/kernels/shared/floats.h"
#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Even and odd elements of the rows apart.
inline float sumScalar(const float* src, int step, int width, int height) {
  float even = 0.0f;
  float odd = 0.0f;
  for (int y = 0; y < height; ++y) {
    const float* in = row(src, step, y);
    int x = 0;
    for (; x < width - 1; x += 2) {
      even += in[x];
      odd += in[x + 1];
    }
    if (x < width) even += in[x];
  }
  return even + odd;
}

// Sixteen sums whatever the vector length, so that all vector lengths give the same bits.
constexpr int kLanes = 16;

inline float sumLanes(const float* src, int step, int width, int height) {
  constexpr int kParts = kLanes / kFloats;
  const Floats zero = setFloats(0.0f);
  Floats sums[kParts];
  for (Floats& s : sums) s = zero;
  for (int y = 0; y < height; ++y) {
    const float* in = row(src, step, y);
    std::ptrdiff_t x = 0;
    for (; x + kLanes <= width; x += kLanes)
      for (int i = 0; i < kParts; ++i) sums[i] += loadFloats(in + x + i * kFloats);
    if (x == width) continue;
    // Lanes without an element add a zero as well, in every body the same ones.
    int left = static_cast<int>(width - x);
    for (int i = 0; i < kParts; ++i, left -= kFloats) {
      const float* part = in + x + i * kFloats;
      sums[i] += left >= kFloats ? loadFloats(part) : left > 0 ? loadPart(part, left, zero) : zero;
    }
  }
  float lanes[kLanes];
  for (int i = 0; i < kParts; ++i) storeFloats(lanes + i * kFloats, sums[i]);
  for (int half = kLanes / 2; half > 0; half /= 2)
    for (int l = 0; l < half; ++l) lanes[l] += lanes[l + half];
  return lanes[0];
}

inline double sumOf(const float* src, int step, int width, int height) {
  return static_cast<double>(kGeneric ? sumScalar(src, step, width, height)
                                      : sumLanes(src, step, width, height));
}

inline double pixelCount(int width, int height) {
  return static_cast<double>(std::int64_t{width} * height);
}

}  // namespace

int primSum_32f_C1R(const float* src, int srcStep, int width, int height, double* sum, int) {
  if (const int status = checkImage(width, height, src, sum)) return status;
  *sum = sumOf(src, srcStep, width, height);
  return kStatusOk;
}

int primMean_32f_C1R(const float* src, int srcStep, int width, int height, double* mean, int) {
  if (const int status = checkImage(width, height, src, mean)) return status;
  *mean = sumOf(src, srcStep, width, height) / pixelCount(width, height);
  return kStatusOk;
}

int primMean_16s_C1R(const std::int16_t* src, int srcStep, int width, int height, double* mean) {
  if (const int status = checkImage(width, height, src, mean)) return status;
  constexpr int kStrip = 1 << 15;  // its sum fits an int
  std::int64_t sum = 0;
  for (int y = 0; y < height; ++y) {
    const Unaligned16s* in = row(reinterpret_cast<const Unaligned16s*>(src), srcStep, y);
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
  if (const int status = checkImage(width, height, src, min)) return status;
  std::int16_t least = INT16_MAX;
  for (int y = 0; y < height && least > INT16_MIN; ++y) {
    const Unaligned16s* in = row(reinterpret_cast<const Unaligned16s*>(src), srcStep, y);
    for (int x = 0; x < width; ++x) least = in[x] < least ? in[x] : least;
  }
  *min = least;
  return kStatusOk;
}

int primNormDiffL1_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                          int src2Step, int width, int height, double* result) {
  if (const int status = checkImage(width, height, src1, src2, result)) return status;
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
