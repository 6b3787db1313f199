#include "frame/exports/load.h"

#include "frame/exports/trace.h"
#include "prim/cpu.h"
#include "prim/float_mode.h"

namespace vx {

void attachProcess() {
  prim::primInitCpu();
  prim::primSetFlushToZero(1, nullptr);
  prim::primSetDenormalsAreZero(1);
  setTrace(0, nullptr);
}

namespace {

// The only notification that the system gives: threads come and go without one, which is why every
// exported function and every parallel region sets the floating-point state for itself.
__attribute__((constructor)) void onLoad() { attachProcess(); }

}  // namespace
}  // namespace vx
