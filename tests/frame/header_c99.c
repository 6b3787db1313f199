/* What a host in C relies on: names, types and order of the arguments, layout of the profile. */
#include "vxicore26.h"

typedef char profileIsSixFloats[sizeof(NoiseProfile) == 6 * sizeof(float) ? 1 : -1];

int (*hostsAdjust)(void*, int, int, int, int, int, VxHostAlloc, VxHostFree, VxProgress, void*, float,
                   float, float, float, float, float, float, float, float, float, float, float, float,
                   float, float, float, float, const NoiseProfile*, float, float, int) = vxAdjustRgb;
int (*hostsUnblock)(int, void*, int, int, int, int, int, int, int, int) = vxUnblock;
int (*hostsEstimate)(const void*, int, int, int, int, NoiseProfile*) = vxDenoiseEstNoise;
int (*hostsEdges)(int, void*, int, int, int, double, double, double, double, double, double, double, int,
                  int, double, double, double, int) = vxYUVEdgeRGB;
int (*hostsSetup)(int, const char*) = vxSetupLib;
void (*hostsTrace)(int, const char*) = setDebugTrace;
