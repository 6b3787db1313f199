#include "adjust/estimate_noise.h"
#include "frame/exports/export.h"
#include "prim/float_mode.h"
#include "vxicore26.h"

VX_EXPORT int vxDenoiseEstNoise(const void* pixels, int format, int rowStep, int width, int height,
                                NoiseProfile* noiseProfile) {
  const vx::prim::FloatModeGuard floatMode;
  if (noiseProfile != nullptr)
    *noiseProfile = vx::estimateNoise(pixels, format, rowStep, width, height);
  return 1;
}
