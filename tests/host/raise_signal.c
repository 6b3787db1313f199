/* Preloaded into vxicore by the tests: raises VX_RAISE at the place that VX_RAISE_AT names, so that
   cancelling does not depend on time. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>

#include "vxicore26.h"

#pragma GCC diagnostic ignored "-Wunused-parameter"

static int chosen(const char* place) {
  const char* wanted = getenv("VX_RAISE_AT");
  return wanted != NULL && strcmp(wanted, place) == 0;
}

static void raiseIt(void) { raise(atoi(getenv("VX_RAISE"))); }

/* A library that keeps its promise: progress first, and 0 with the pixels untouched when told to
 * stop. */
__attribute__((visibility("default"))) int vxAdjustRgb(
    void* pixels, int format, int rowStep, int width, int height, int previewScale,
    VxHostAlloc hostAlloc, VxHostFree hostFree, VxProgress progress, void* hostContext,
    float lumaEqAmount, float lumaEqRadius, float lumaEqPeakGain, float lumaGamma,
    float lumaEqTopCut, float lumaEqFloor, float lumaDetailRange, float lumaDetailRadius,
    float lumaDetailGamma, float lumaDetailGain, float sharpenAmount, float satEqAmount,
    float satEqRadius, float satContrast, float satGamma, float hueShift, float denoiseStrength,
    const NoiseProfile* noiseProfile, float grainRestore, float unblockStrength, int denoiseMode) {
  if (chosen("progress")) raiseIt();
  return progress == NULL || progress(1, 100, hostContext) != 0;
}

/* Where the part file is complete and not yet renamed. */
__attribute__((visibility("default"))) int fsync(int file) {
  if (chosen("fsync") || chosen("fsync-twice")) raiseIt();
  if (chosen("fsync-twice")) raiseIt();
  int (*real)(int) = NULL;
  void* found = dlsym(RTLD_NEXT, "fsync");
  memcpy(&real, &found, sizeof real);
  return real != NULL ? real(file) : 0;
}
