#include "frame/export.h"
#include "prim/float_mode.h"
#include "vxicore26.h"

VX_EXPORT int vxDenoiseEstNoise(const void* pixels, int format, int rowStep, int width, int height,
                                NoiseProfile* noiseProfile) {
  const vx::prim::FloatModeGuard floatMode;
  // No estimate is made in this version: nothing is read, and the profile keeps what it holds.
  static_cast<void>(pixels);
  static_cast<void>(format);
  static_cast<void>(rowStep);
  static_cast<void>(width);
  static_cast<void>(height);
  static_cast<void>(noiseProfile);
  return 0;
}
