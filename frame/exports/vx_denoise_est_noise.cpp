#include <memory>

#include "adjust/load_crop.h"
#include "frame/exports/export.h"
#include "frame/img.h"
#include "prim/float_mode.h"
#include "vxenhlib/noise/luma_chroma.h"
#include "vxenhlib/noise/noise_estimator.h"
#include "vxicore26.h"

VX_EXPORT int vxDenoiseEstNoise(const void* pixels, int format, int rowStep, int width, int height,
                                NoiseProfile* noiseProfile) {
  using namespace vx;
  const prim::FloatModeGuard floatMode;
  if (noiseProfile == nullptr) return 1;

  std::unique_ptr<GIMG<float>> planes[3];
  if (loadCrop(format, pixels, rowStep, cropAxis(width), cropAxis(height), planes) != kCropLoaded)
    return -2;
  GIMG<float>* const colours[3] = {planes[0].get(), planes[1].get(), planes[2].get()};
  toLumaChroma(colours, false);

  NoiseEstimator estimator;
  const float sigma = estimator.estimate(*planes[0]);
  // Exact, so that both values are rounded once: chroma is not a share of the rounded luma.
  const double luma = double{1.4f} * double{sigma};
  *noiseProfile = {.lumaLevel = estimator.meanLevel,
                   .lumaNoise = static_cast<float>(luma),
                   .lumaReserved = 0.0f,
                   .chromaLevel = estimator.meanLevel,
                   .chromaNoise = static_cast<float>(luma * double{0.35f}),
                   .chromaReserved = 0.0f};
  return 1;
}
