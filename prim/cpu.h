#pragma once

#include <cstdint>

namespace vx::prim {

/// Index of the code variant in use, 0 to 5: generic, three SSE levels, SSSE3, SSE4.1 and newer.
/// Written once when the library is loaded; 0, which runs everywhere, until then.
extern int primCpuIndex;

int primInitCpu();
int primGetCpuCode();
int primSetCpuByCode(int code);
int primGetCacheSize(int* size);

/// Limits the bodies used inside index 5: 0 SSE4.1, 1 AVX2, 2 AVX-512, never above the processor's.
/// @return the level in force; a level outside 0..2 changes nothing
int primSetWideLevel(int level);

}  // namespace vx::prim
