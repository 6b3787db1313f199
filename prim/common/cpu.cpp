#include "prim/cpu.h"

#include <cpuid.h>

#include <algorithm>

#include "prim/common/cpu_model.h"
#include "prim/dispatch.h"
#include "prim/match.h"
#include "prim/types.h"

namespace vx::prim {
namespace {

constexpr int kFirstWideIndex = 5;
constexpr int kWideLevels = 3;

// Level in force inside index 5.
constinit int wideLevel = 0;

// Once per process: in a virtual machine each leaf costs a trap.
const CpuRecord& thisCpu() noexcept {
  static const CpuRecord record = readCpuRecord();
  return record;
}

CpuRecord::Leaf readLeaf(unsigned leaf) noexcept {
  CpuRecord::Leaf result;
  __cpuid_count(leaf, 0, result.eax, result.ebx, result.ecx, result.edx);
  return result;
}

int widestLevel() noexcept { return std::max(0, lastRunnableColumn() - kFirstWideIndex); }

// Keeps the column in step with index and level. A code that was set by hand may name more than the
// processor has; the column never does.
void chooseColumn() noexcept {
  const int wanted = primCpuIndex < kFirstWideIndex ? primCpuIndex : kFirstWideIndex + wideLevel;
  primCpuColumn = std::min(wanted, lastRunnableColumn());
}

}  // namespace

constinit int primCpuIndex = 0;
constinit bool primDotProducts = false;

CpuRecord readCpuRecord() noexcept {
  CpuRecord cpu;
  cpu.hasCpuid = true;  // part of the 64-bit architecture
  cpu.leaf0 = readLeaf(0);
  const unsigned last = cpu.leaf0.eax;
  if (last >= 1) cpu.leaf1 = readLeaf(1);
  if (last >= 2) cpu.leaf2 = readLeaf(2);
  if (last >= 4) cpu.leaf4 = readLeaf(4);
  if (last >= 7) cpu.leaf7 = readLeaf(7);
  cpu.extended0 = readLeaf(0x80000000);
  if (cpu.extended0.eax > 0x80000000) cpu.extended1 = readLeaf(0x80000001);
  if ((cpu.leaf1.ecx & bit_OSXSAVE) != 0) {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    // xgetbv; the intrinsic would ask for a build with -mxsave.
    asm("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    cpu.xcr0 = std::uint64_t{high} << 32 | low;
  }
  return cpu;
}

int lastRunnableColumn() noexcept {
  static const int column = lastRunnableColumn(thisCpu());
  return column;
}

int primGetCpuCode() { return cpuCode(thisCpu()); }

int primInitCpu() {
  wideLevel = widestLevel();
  primDotProducts = hasDotProducts(thisCpu());
  primSetCpuByCode(primGetCpuCode());
  return isKnownVendor(thisCpu()) ? kStatusOk : kStatusOtherVendor;
}

int primSetCpuByCode(int code) {
  const int index = cpuIndexOfCode(code);
  if (index < 0) return kStatusUnknownCpu;
  primCpuIndex = index;
  chooseColumn();
  return kStatusOk;
}

int primGetCacheSize(int* size) {
  if (size == nullptr) return kStatusNullPtr;
  struct Outcome {
    int size = 0;
    int status = largestCache(thisCpu(), &size);
  };
  static const Outcome outcome;
  *size = outcome.size;
  return outcome.status;
}

int primSetWideLevel(int level) {
  if (level >= 0 && level < kWideLevels) {
    wideLevel = std::min(level, widestLevel());
    chooseColumn();
  }
  return wideLevel;
}

}  // namespace vx::prim
