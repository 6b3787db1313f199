#pragma once

#include <cstddef>
#include <cstdint>

namespace vx::prim {

/// The heap behind every block of the library, in this order. The aligned allocator uses the first
/// and the last slot. Filled statically with the functions of the C runtime; tests replace them to
/// make allocations fail.
struct MemHooks {
  void* (*allocate)(std::size_t size);
  void* (*allocateZeroed)(std::size_t count, std::size_t size);
  void* (*reallocate)(void* block, std::size_t size);
  void (*release)(void* block);
};
extern MemHooks primMemHooks;

/// Allocates an image of one byte per pixel, aligned to 32 bytes, rows padded to multiples of 32
/// bytes.
///
/// @param step  receives the bytes from one row to the next; 0 when nothing was allocated
/// @return null when `step` is null, a size is below 1, the step would exceed INT_MAX or memory is
/// short
std::uint8_t* primMalloc_8u_C1(int width, int height, int* step);
/// The same for one float per pixel.
float* primMalloc_32f_C1(int width, int height, int* step);
/// Releases a block of any of the allocators here; null is ignored.
void primFree(void* block);

/// Allocates `length` bytes aligned to 32; null for a length below 1 or when memory is short.
std::uint8_t* primvMalloc_8u(int length);
/// Allocates `length` floats aligned to 32.
float* primvMalloc_32f(int length);
/// The same operation as primFree.
void primvFree(void* block);

/// The aligned allocator itself, for sizes beyond an int: `bytes` aligned to 32, null for 0 bytes.
void* alignedAlloc(std::size_t bytes);

}  // namespace vx::prim
