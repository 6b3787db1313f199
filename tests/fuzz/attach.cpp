// What a target does once before its inputs, for those that have nothing more to do.

#include "frame/exports/load.h"
#include "tests/fuzz/inputs.h"

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  vx::attachProcess();
  return 0;
}
