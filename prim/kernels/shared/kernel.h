#pragma once

// First include of every kernel source. Kernel sources are compiled once per body; VX_VARIANT names
// the namespace. Helpers here have internal linkage, and kernels use no std:: function templates: a
// shared inline function would be merged across bodies by the linker, and a processor without AVX
// might then run the AVX copy.

#ifndef VX_VARIANT
#error "kernel sources belong to the prim_<variant> targets only"
#endif

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "prim/prims.h"

namespace vx::prim::VX_VARIANT {

#define VX_PRIM(name, params, args) decltype(prim::name) name;
#include "prim/prim_list.def"
#undef VX_PRIM

namespace {

// An element at any address, whatever type the memory has elsewhere: 16-bit host rows may start at
// odd addresses. A class, since an alias with attributes loses them as a template argument and
// under auto.
template <class T>
struct [[gnu::packed, gnu::may_alias]] UnalignedElement {
  T value;
  operator T() const { return value; }
  void operator=(T v) { value = v; }
};
using Unaligned16u = UnalignedElement<std::uint16_t>;
using Unaligned16s = UnalignedElement<std::int16_t>;

template <class T>
[[maybe_unused]] inline T* row(T* base, int step, int y) {
  using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
  return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + std::ptrdiff_t{step} * y);
}

[[maybe_unused]] inline bool emptySize(int width, int height) { return width < 1 || height < 1; }

// The refusals that come first everywhere: a null pointer, then an empty image or vector.
template <class... Pointers>
[[maybe_unused]] inline int checkImage(int width, int height, const Pointers*... pointers) {
  if (((pointers == nullptr) || ...)) return kStatusNullPtr;
  return emptySize(width, height) ? kStatusBadSize : kStatusOk;
}
template <class... Pointers>
[[maybe_unused]] inline int checkVector(int length, const Pointers*... pointers) {
  return checkImage(length, 1, pointers...);
}

// A step that does not hold a row of `width` pixels of `pixelBytes` bytes.
[[maybe_unused]] inline bool shortStep(int step, std::int64_t width, int pixelBytes) {
  return step < width * pixelBytes;
}
// A step that is no multiple of a float's size.
[[maybe_unused]] inline bool unevenStep(int step) { return step % int{sizeof(float)} != 0; }

// The range of an integer element.
template <class T>
constexpr int kBottom = std::is_signed_v<T> ? -(1 << (8 * sizeof(T) - 1)) : 0;
template <class T>
constexpr int kTop = kBottom<T> + (1 << (8 * sizeof(T))) - 1;

template <class T>
[[maybe_unused]] constexpr T saturated(int v) {
  const int low = v < kBottom<T> ? kBottom<T> : v;
  return static_cast<T>(low > kTop<T> ? kTop<T> : low);
}

// Nearest integer, ties to even. INT_MIN if out of range or NaN.
[[maybe_unused]] inline int roundHalfEven(float v) {
#ifdef __clang__
  return static_cast<int>(__builtin_lrintf(v));
#else
  return __builtin_irintf(v);
#endif
}

// The value, unknown to the optimiser, which otherwise takes a clamp against a literal apart and
// vectorises it at a third of the speed.
template <class T>
[[maybe_unused]] inline T opaque(T v) {
  asm("" : "+x"(v));
  return v;
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
