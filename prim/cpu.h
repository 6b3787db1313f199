#pragma once

namespace vx::prim {

/// Index of the code variant in use, 0 to 5: generic, SSE, SSE2, SSE3, SSSE3, SSE4.1 and newer.
///
/// Written once when the library is loaded; 0, which runs everywhere, until then. Inside index 5
/// processors with AVX2 or AVX-512 run wider bodies, see primSetWideLevel. The functions below that
/// change the choice are not to be called while primitives run on other threads.
extern int primCpuIndex;

/// Chooses the variant for this processor, and inside index 5 the widest bodies that it can run.
///
/// @return kStatusOk; kStatusOtherVendor as a warning where the processor is classified by its
///   features alone, the variant being chosen all the same
int primInitCpu();

/// Code of this processor: by family and model where the model is known and has the features it is
/// known for, else by its features:
///
/// | code | processor |
/// |---|---|
/// | 0 | nothing known |
/// | 1, 2 | family 5, models 1 and 2; model 4 |
/// | 3, 4, 5 | family 6 without SSE (two groups of models); with SSE |
/// | 6, 7, 8, 32 | family 15 with SSE2; with hyper-threading; with SSE3; with SSE3 and long mode |
/// | 9; 10, 11 | family 6 with SSE2; with SSE3, one core or more |
/// | 16, 17 | IA-64, family 7 and later |
/// | 33, 34; 36 | family 6 with SSSE3, up to two cores or more; model 28 |
/// | 35, 37 | family 6, model 26, and a later one that is never found |
/// | 64 to 69 | by the best feature: SSE, SSE2, SSE3, SSSE3, SSE4.1, SSE4.2 |
/// | 96 | long mode without SSE |
int primGetCpuCode();

/// Chooses the variant that belongs to a processor code; -1 means the generic one.
///
/// primCpuIndex follows the code alone; the code that runs never exceeds what this processor can.
/// @return kStatusOk; kStatusUnknownCpu for a code outside the table above, which changes nothing
int primSetCpuByCode(int code);

/// Size of the processor's largest level 2 or level 3 cache by the descriptors of CPUID leaf 2.
///
/// Many processors of today describe their caches elsewhere and report kStatusUnknownCache.
/// @param size  receives the bytes, 0 when they are not known
/// @return kStatusNullPtr, kStatusNoCacheInfo, kStatusUnknownCache; always the same in a process
int primGetCacheSize(int* size);

/// Limits the bodies used inside index 5: 0 SSE4.1, 1 AVX2, 2 AVX-512, never above what processor
/// and operating system can run.
/// @return the level in force; a level outside 0..2 changes nothing
int primSetWideLevel(int level);

}  // namespace vx::prim
