#include <cinttypes>
#include <cstdint>
#include <cstdio>

#include "frame/exports/export.h"
#include "frame/exports/trace.h"
#include "lqlib/src/vp_unblock.h"
#include "prim/float_mode.h"
#include "vxicore26.h"

VX_EXPORT int vxUnblock(int deep, void* pixels, int pixelStep, int rowStep, int width, int height,
                        int quality, int jpegMode, int shiftStep, int reserved) {
  const vx::prim::FloatModeGuard floatMode;
  const int roundTrips =
      vx::vp_unblock(deep, pixels, pixelStep, rowStep, width, height, quality, jpegMode, shiftStep);
  if (vx::getTraceMask() != 0) {
    char text[vx::kTraceText];
    std::snprintf(text, sizeof text, "%d %" PRIxPTR " %d %d %d %d  %d %d %d %d  rc=%d", deep,
                  reinterpret_cast<std::uintptr_t>(pixels), pixelStep, rowStep, width, height,
                  quality, jpegMode, shiftStep, reserved, roundTrips);
    vx::traceLine("F: vxUnblock", text);
  }
  return roundTrips;
}
