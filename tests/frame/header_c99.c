/* What a host in C relies on: names, types and order of the arguments, layout of the profile. */
#include "vxicore26.h"

typedef char profileIsSixFloats[sizeof(NoiseProfile) == 6 * sizeof(float) ? 1 : -1];

int useOfTheHeader(void* p, VxHostAlloc a, VxHostFree f, VxProgress g, const NoiseProfile* n);

int useOfTheHeader(void* p, VxHostAlloc a, VxHostFree f, VxProgress g, const NoiseProfile* n) {
    int (*adjust)(void*, int, int, int, int, int, VxHostAlloc, VxHostFree, VxProgress, void*, float, float,
                  float, float, float, float, float, float, float, float, float, float, float, float,
                  float, float, float, const NoiseProfile*, float, float, int) = vxAdjustRgb;
    int (*unblock)(int, void*, int, int, int, int, int, int, int, int) = vxUnblock;
    int (*estimate)(const void*, int, int, int, int, NoiseProfile*) = vxDenoiseEstNoise;
    int (*edge)(int, void*, int, int, int, double, double, double, double, double, double, double, int,
                int, double, double, double, int) = vxYUVEdgeRGB;
    int (*setup)(int, const char*) = vxSetupLib;
    void (*trace)(int, const char*) = setDebugTrace;
    NoiseProfile own = {0, 0, 0, 0, 0, 0};
    trace(0, 0);
    return adjust(p, 1, 3, 1, 1, 1, a, f, g, p, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 1, 1, 0, 0, n, 0,
                  0, 0) +
           unblock(0, p, 3, 3, 1, 1, 50, 1, 1, 0) + estimate(p, 1, 3, 1, 1, &own) +
           edge(0, p, 3, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0) + setup(0, 0);
}
