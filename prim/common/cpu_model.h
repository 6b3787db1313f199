#pragma once

#include <cstdint>

namespace vx::prim {

/// What the classification of a processor reads of it. All of it is data, so that a test describes
/// processors that the machine does not have.
struct CpuRecord {
  struct Leaf {
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
  };
  bool hasCpuid = false;
  Leaf leaf0;              ///< highest basic leaf and vendor
  Leaf leaf1;              ///< family, model, features
  Leaf leaf2;              ///< cache descriptors
  Leaf leaf4;              ///< subleaf 0: number of cores
  Leaf leaf7;              ///< subleaf 0: later features
  Leaf extended0;          ///< leaf 0x80000000: highest extended leaf
  Leaf extended1;          ///< leaf 0x80000001: long mode
  std::uint64_t xcr0 = 0;  ///< register state that the operating system keeps; 0 without OSXSAVE
};

/// The record of the processor that executes this; leaves that it lacks are zero.
CpuRecord readCpuRecord() noexcept;

/// Whether CPUID exists and names the vendor whose models the tables list.
bool isKnownVendor(const CpuRecord& cpu) noexcept;

/// Processor code from family, model and features; 0 if nothing fits.
///
/// A model that stands for a vector level needs the level's feature bit as well. Other vendors and
/// unlisted models are classified by their features alone.
int cpuCode(const CpuRecord& cpu) noexcept;

/// Variant index 0 to 5 of a processor code, -1 for a code that does not exist.
int cpuIndexOfCode(int code) noexcept;

/// Last column of the dispatch table whose body processor and operating system can run.
int lastRunnableColumn(const CpuRecord& cpu) noexcept;

/// Whether dot products of words run in vectors of 512 bits, beside the widest bodies.
bool hasDotProducts(const CpuRecord& cpu) noexcept;

/// Bytes of the largest cache among the descriptors of leaf 2.
///
/// @param size  receives the bytes, 0 if not found
/// @return kStatusOk, kStatusNoCacheInfo (no CPUID, no leaf 2, other vendor, or a leaf 2 that takes
///   more than one reading), kStatusUnknownCache
int largestCache(const CpuRecord& cpu, int* size) noexcept;

}  // namespace vx::prim
