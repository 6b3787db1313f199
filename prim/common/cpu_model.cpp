#include "prim/common/cpu_model.h"

#include "prim/types.h"

namespace vx::prim {
namespace {

constexpr std::uint32_t bits(std::uint32_t word, int first, int count) {
  return word >> first & ((1u << count) - 1);
}
constexpr bool bit(std::uint32_t word, int n) { return bits(word, n, 1) != 0; }

struct Features {
  bool sse, sse2, sse3, ssse3, sse41, sse42, em64t;
};

Features featuresOf(const CpuRecord& cpu) {
  const std::uint32_t c = cpu.leaf1.ecx;
  const std::uint32_t d = cpu.leaf1.edx;
  const bool extended = (cpu.extended0.eax & 0x7FFFFFFF) != 0;
  return {bit(d, 25),
          bit(d, 26),
          bit(c, 0),
          bit(c, 9),
          bit(c, 19),
          bit(c, 20),
          extended && bit(cpu.extended1.edx, 29)};
}

int codeByFeatures(const Features& f) {
  if (f.sse42) return 69;
  if (f.sse41) return 68;
  if (f.ssse3) return 67;
  if (f.sse3) return 66;
  if (f.sse2) return 65;
  if (f.sse) return 64;
  return f.em64t ? 96 : 0;
}

// 0 where the model says nothing, or its feature is masked off.
int codeOfFamily6(std::uint32_t model, const Features& f, std::uint32_t cores) {
  switch (model) {
    case 1:
      return 3;
    case 3:
    case 5:
    case 6:
      return 4;
    case 7:
    case 8:
    case 10:
    case 11:
      return 5;
    case 9:
    case 13:
      return 9;
    case 14:
      return cores > 1 ? 11 : 10;
    case 15:
      return !f.ssse3 ? 0 : cores > 2 ? 34 : 33;
    case 23:
      return f.sse41 ? 68 : 0;
    case 26:
      return f.sse42 ? 35 : 0;
    case 28:
      return f.ssse3 ? 36 : 0;
    default:
      return 0;
  }
}

int codeByModel(const CpuRecord& cpu, const Features& f) {
  const std::uint32_t signature = cpu.leaf1.eax;
  std::uint32_t family = bits(signature, 8, 4);
  std::uint32_t model = bits(signature, 4, 4);
  if (family == 6 || family == 15) model += bits(signature, 16, 4) * 16;
  if (family == 15) family += bits(signature, 20, 8);

  if (bit(cpu.leaf1.edx, 30)) return family == 7 ? 16 : 17;  // IA-64
  if (family == 5) return model == 1 || model == 2 ? 1 : model == 4 ? 2 : 0;
  if (family == 6) {
    const std::uint32_t cores = cpu.leaf0.eax >= 4 ? (cpu.leaf4.eax >> 26) + 1 : 1;
    return codeOfFamily6(model, f, cores);
  }
  if (family != 15) return 0;
  if (f.sse3) return f.em64t ? 32 : 8;
  const bool hyperThreading = bit(cpu.leaf1.edx, 28) && bits(cpu.leaf1.ebx, 17, 7) != 0;
  return hyperThreading ? 7 : 6;
}

struct CacheDescriptor {
  std::uint8_t descriptor;
  int kilobytes;
};

// Level 2 and level 3 caches as the vendor documents the descriptor bytes of leaf 2 (Intel 64 and
// IA-32 Architectures Software Developer's Manual, volume 2A, CPUID), the largest first.
constexpr CacheDescriptor kCaches[] = {
    {77, 16384}, {76, 12288}, {75, 8192},  {71, 8192},  {78, 6144},  {74, 6144}, {73, 4096},
    {70, 4096},  {41, 4096},  {72, 3072},  {133, 2048}, {125, 2048}, {69, 2048}, {37, 2048},
    {135, 1024}, {132, 1024}, {124, 1024}, {120, 1024}, {68, 1024},  {35, 1024}, {134, 512},
    {131, 512},  {128, 512},  {127, 512},  {123, 512},  {67, 512},   {62, 512},  {34, 512},
    {61, 384},   {130, 256},  {122, 256},  {66, 256},   {60, 256},   {33, 256},  {58, 192},
    {121, 128},  {57, 128},   {59, 128},   {65, 128},
};
static_assert(sizeof(kCaches) / sizeof(kCaches[0]) == 39);

// Descriptors stand in the four bytes of each register, except in AL, which is a count.
bool hasDescriptor(const CpuRecord::Leaf& leaf, std::uint8_t descriptor) {
  const std::uint32_t registers[] = {leaf.eax & ~0xFFu, leaf.ebx, leaf.ecx, leaf.edx};
  for (const std::uint32_t word : registers) {
    if (bit(word, 31)) continue;  // no descriptors in this register
    for (int shift = 0; shift < 32; shift += 8)
      if (bits(word, shift, 8) == descriptor) return true;
  }
  return false;
}

}  // namespace

bool isKnownVendor(const CpuRecord& cpu) noexcept {
  // "GenuineIntel" in the order EBX, EDX, ECX.
  return cpu.hasCpuid && cpu.leaf0.ebx == 0x756E6547 && cpu.leaf0.edx == 0x49656E69 &&
         cpu.leaf0.ecx == 0x6C65746E;
}

int cpuCode(const CpuRecord& cpu) noexcept {
  if (!cpu.hasCpuid) return 0;
  const Features features = featuresOf(cpu);
  const int code = isKnownVendor(cpu) ? codeByModel(cpu, features) : 0;
  return code != 0 ? code : codeByFeatures(features);
}

int cpuIndexOfCode(int code) noexcept {
  switch (code) {
    case -1:
    case 0:
    case 1:
    case 2:
    case 3:
    case 4:
    case 96:
      return 0;
    case 5:
    case 16:
    case 17:
    case 64:
      return 1;
    case 6:
    case 7:
    case 9:
    case 65:
      return 2;
    case 8:
    case 10:
    case 11:
    case 32:
    case 66:
      return 3;
    case 33:
    case 34:
    case 36:
    case 67:
      return 4;
    case 35:
    case 37:
    case 68:
    case 69:
      return 5;
    default:
      return -1;
  }
}

int lastRunnableColumn(const CpuRecord& cpu) noexcept {
  const std::uint32_t c = cpu.leaf1.ecx;
  const std::uint32_t seven = cpu.leaf7.ebx;
  if (!bit(c, 9)) return 3;   // SSSE3
  if (!bit(c, 19)) return 4;  // SSE4.1
  // The compiler's AVX2 target takes SSE4.2 and POPCNT for granted. Its registers need an operating
  // system that saves them: XMM and YMM halves, then masks, upper ZMM halves and ZMM16 to 31.
  const bool avx2 = bit(c, 20) && bit(c, 23) && bit(c, 27) && bit(c, 28) && bit(seven, 5);
  if (!avx2 || (cpu.xcr0 & 0x06) != 0x06) return 5;
  const bool avx512 = bit(seven, 16) && bit(seven, 17) && bit(seven, 30) && bit(seven, 31);
  return avx512 && (cpu.xcr0 & 0xE6) == 0xE6 ? 7 : 6;
}

bool hasDotProducts(const CpuRecord& cpu) noexcept {
  return lastRunnableColumn(cpu) == 7 && bit(cpu.leaf7.ecx, 11);  // AVX512_VNNI
}

int largestCache(const CpuRecord& cpu, int* size) noexcept {
  *size = 0;
  if (!isKnownVendor(cpu) || cpu.leaf0.eax < 2 || (cpu.leaf2.eax & 0xFF) != 1)
    return kStatusNoCacheInfo;
  for (const CacheDescriptor& cache : kCaches) {
    if (!hasDescriptor(cpu.leaf2, cache.descriptor)) continue;
    *size = cache.kilobytes * 1024;
    return kStatusOk;
  }
  return kStatusUnknownCache;
}

}  // namespace vx::prim
