#include <cinttypes>
#include <cstdint>
#include <cstdio>

#include "edge/edge_driver.h"
#include "frame/exports/export.h"
#include "frame/exports/trace.h"
#include "prim/float_mode.h"
#include "vxicore26.h"

VX_EXPORT int vxYUVEdgeRGB(int deep, void* pixels, int rowStep, int width, int height,
                           double baseGain, double rangeFloor, double blurSigmaX, double blurSigmaY,
                           double adaptiveGain, double chromaBlurX, double chromaBlurY,
                           int chromaShiftX, int chromaShiftY, double alignSigmaX,
                           double alignSigmaY, double alignThreshold, int edgeReserved) {
  const vx::prim::FloatModeGuard floatMode;
  const vx::EdgeSettings settings = {baseGain,     rangeFloor,  blurSigmaX,  blurSigmaY,
                                     adaptiveGain, chromaBlurX, chromaBlurY, chromaShiftX,
                                     chromaShiftY, alignSigmaX, alignSigmaY, alignThreshold,
                                     edgeReserved};
  const int done = vx::enhanceEdges(deep != 0, pixels, rowStep, width, height, settings);
  if (vx::getTraceMask() != 0) {
    char text[vx::kTraceText];
    std::snprintf(
        text, sizeof text,
        "%d %" PRIxPTR " %d %d %d  %lf %lf %lf %lf %lf %lf %lf  %d %d  %lf %lf %lf %d  rc=%d", deep,
        reinterpret_cast<std::uintptr_t>(pixels), rowStep, width, height, baseGain, rangeFloor,
        blurSigmaX, blurSigmaY, adaptiveGain, chromaBlurX, chromaBlurY, chromaShiftX, chromaShiftY,
        alignSigmaX, alignSigmaY, alignThreshold, edgeReserved, done);
    vx::traceLine("F: vxYUVEdgeRGB", text);
  }
  return done;
}
