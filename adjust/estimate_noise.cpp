#include "adjust/estimate_noise.h"

#include <cstddef>
#include <cstdint>

#include "adjust/host_pixels.h"
#include "frame/img.h"
#include "prim/memory.h"
#include "vxenhlib/noise/luma_chroma.h"
#include "vxenhlib/noise/noise_estimator.h"

namespace vx {
namespace {

// A standard deviation of the luma in relation to what the estimator measures; that of the chroma
// in relation to the luma's.
constexpr double kLumaShare = 1.4f;
constexpr double kChromaShare = 0.35f;

// The colour channels from (left, top) on.
void loadPlanes(const void* pixels, int format, int rowStep, int left, int top,
                GIMG<float>* const planes[3]) {
  if (pixels != nullptr) {
    const auto* first = static_cast<const std::uint8_t*>(pixels) + std::ptrdiff_t{rowStep} * top +
                        std::ptrdiff_t{bytesPerPixel(format)} * left;
    if (readHostPlanes(format, first, rowStep, planes) != 0) return;
  }
  for (int c = 0; c < 3; ++c)
    prim::primSet_32f_C1R(0.0f, planes[c]->data, planes[c]->step, planes[c]->width,
                          planes[c]->height);
}

}  // namespace

CropAxis cropAxis(int size) {
  constexpr int kMost = 2048;
  if (size < kMost) return {0, size & ~3};
  return {(size - kMost) / 4 * 2, kMost};
}

NoiseProfile estimateNoise(const void* pixels, int format, int rowStep, int width, int height) {
  const CropAxis x = cropAxis(width), y = cropAxis(height);
  GIMG<float> red(x.size, y.size), green(x.size, y.size), blue(x.size, y.size);
  GIMG<float>* const planes[3] = {&red, &green, &blue};
  loadPlanes(pixels, format, rowStep, x.start, y.start, planes);
  toLumaChroma(planes, false);

  NoiseEstimator estimator;
  // Exact, so that both values are rounded once: chroma is not a share of the rounded luma.
  const double luma = kLumaShare * double{estimator.estimate(*planes[0])};
  return {.lumaLevel = estimator.meanLevel,
          .lumaNoise = static_cast<float>(luma),
          .lumaReserved = 0.0f,
          .chromaLevel = estimator.meanLevel,
          .chromaNoise = static_cast<float>(luma * kChromaShare),
          .chromaReserved = 0.0f};
}

}  // namespace vx
