#include "vxicore26.h"

#define VX_EXPORT extern "C" __attribute__((visibility("default")))

VX_EXPORT int vxAdjustRgb(void*, int, int, int, int, int, VxHostAlloc, VxHostFree, VxProgress, void*,
                          float, float, float, float, float, float, float, float, float, float, float,
                          float, float, float, float, float, float, const NoiseProfile*, float, float,
                          int) {
  return 1;
}
VX_EXPORT int vxUnblock(int, void*, int, int, int, int, int, int, int, int) { return 0; }
VX_EXPORT int vxDenoiseEstNoise(const void*, int, int, int, int, NoiseProfile*) { return 0; }
VX_EXPORT int vxYUVEdgeRGB(int, void*, int, int, int, double, double, double, double, double, double,
                           double, int, int, double, double, double, int) {
  return 0;
}
VX_EXPORT int vxSetupLib(int, const char*) { return 0; }
VX_EXPORT void setDebugTrace(int, const char*) {}
