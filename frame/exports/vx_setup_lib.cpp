#include "frame/exports/export.h"
#include "frame/exports/trace.h"
#include "prim/float_mode.h"
#include "vxicore26.h"

VX_EXPORT int vxSetupLib(int mask, const char* folder) {
  const vx::prim::FloatModeGuard floatMode;
  return mask < 0 ? 0 : vx::setTrace(mask, folder);
}

VX_EXPORT void setDebugTrace(int mask, const char* folder) {
  const vx::prim::FloatModeGuard floatMode;
  vx::setTrace(mask, folder);
}
