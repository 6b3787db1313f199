#include "frame/exports/load.h"

#include <pthread.h>

#include "frame/exports/trace.h"
#include "frame/parallel.h"
#include "prim/cpu.h"
#include "prim/float_mode.h"
#include "vxenhlib/nonlocal/fft_plan.h"

namespace vx {

void attachProcess() {
  prim::primInitCpu();
  prim::primSetFlushToZero(1, nullptr);
  prim::primSetDenormalsAreZero(1);
  setTrace(0, nullptr);
}

namespace {

// A child process has the one thread that called fork(), and every lock as it was. All locks of the
// library are taken over the fork, so that the child finds none taken by a thread that it lacks.
void beforeFork() {
  fftPlanner().lock();
  traceLock().lock();
}

void afterFork() {
  traceLock().unlock();
  fftPlanner().unlock();
}

void inChild() {
  afterFork();
  teamLost = true;
}

// The only notification that the system gives: threads come and go without one, which is why every
// exported function and every parallel region sets the floating-point state for itself.
__attribute__((constructor)) void onLoad() {
  attachProcess();
  pthread_atfork(beforeFork, afterFork, inChild);
}

}  // namespace
}  // namespace vx
