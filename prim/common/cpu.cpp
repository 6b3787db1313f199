#include "prim/cpu.h"

#include "prim/dispatch.h"

namespace vx::prim {

constinit int primCpuIndex = 0;

int lastRunnableColumn() noexcept {
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl"))
    return 7;
  if (__builtin_cpu_supports("avx2")) return 6;
  if (__builtin_cpu_supports("sse4.1")) return 5;
  if (__builtin_cpu_supports("ssse3")) return 4;
  return 3;
}

int primInitCpu() { return 0; }
int primGetCpuCode() { return 0; }
int primSetCpuByCode(int) { return 0; }
int primGetCacheSize(int*) { return 0; }
int primSetWideLevel(int) { return 0; }

}  // namespace vx::prim
