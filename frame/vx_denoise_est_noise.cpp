#include "frame/export.h"
#include "prim/float_mode.h"
#include "vxicore26.h"

// No estimate is made in this version: nothing is read, and the profile keeps what it holds.
VX_EXPORT int vxDenoiseEstNoise(const void* /*pixels*/, int /*format*/, int /*rowStep*/,
                                int /*width*/, int /*height*/, NoiseProfile* /*noiseProfile*/) {
  const vx::prim::FloatModeGuard floatMode;
  return 0;
}
