#pragma once

// What the arithmetic of blocks is written in: eight 16-bit lanes to a block, 32-bit sums of
// products of their pairs, and the exchange of rows and columns of 8x8 values. The vector bodies
// take several blocks at once, the generic body one, in arrays. Everything wraps or saturates alike
// in both, so that all bodies agree on any input, not only on what a picture can give.

#include "prim/kernels/jpeg_lanes.h"

namespace vx::prim::VX_VARIANT {
namespace {

#if defined(VX_KERNEL_SCALAR)

#define VX_LANES [[gnu::always_inline]] static inline

struct ArrayLanes {
  struct V {
    std::int16_t at[8];
  };
  static constexpr int kGroups = 1;

  // The function of the elements of one or two vectors, lane by lane.
  template <class F>
  VX_LANES V map(V a, V b, F f) {
    V result;
    for (int i = 0; i < 8; ++i) result.at[i] = static_cast<std::int16_t>(f(a.at[i], b.at[i]));
    return result;
  }
  VX_LANES V load(const void* p) {
    V result;
    __builtin_memcpy(&result, p, sizeof(V));
    return result;
  }
  VX_LANES void store(void* p, V a) { __builtin_memcpy(p, &a, sizeof(V)); }
  VX_LANES V set(int v) {
    return map({}, {}, [v](int, int) { return v; });
  }
  VX_LANES V add(V a, V b) {
    return map(a, b, [](int x, int y) { return x + y; });
  }
  VX_LANES V sub(V a, V b) {
    return map(a, b, [](int x, int y) { return x - y; });
  }
  VX_LANES V addSat(V a, V b) {
    return map(a, b, [](int x, int y) { return saturated<std::int16_t>(x + y); });
  }
  VX_LANES V least(V a, V b) {
    return map(a, b, [](int x, int y) { return x < y ? x : y; });
  }
  VX_LANES V mulLow(V a, V b) {
    return map(a, b, [](int x, int y) { return x * y; });
  }
  VX_LANES V mulHighU(V a, V b) {
    return map(a, b, [](std::uint16_t x, std::uint16_t y) { return std::uint32_t{x} * y >> 16; });
  }
  VX_LANES V bitAnd(V a, V b) {
    return map(a, b, [](int x, int y) { return x & y; });
  }
  VX_LANES V absolute(V a) { return withSign(a, a); }
  VX_LANES V withSign(V magnitude, V a) {
    return map(magnitude, a, [](int x, int sign) { return sign < 0 ? -x : x; });
  }
  VX_LANES V broadcast(const void* p) { return load(p); }
  VX_LANES V gather(const void* p, std::ptrdiff_t) { return load(p); }
  VX_LANES void scatter(void* p, std::ptrdiff_t, V a) { store(p, a); }
  VX_LANES void storeTwoRows(std::uint8_t* first, std::uint8_t* second, V a, V b) {
    for (int i = 0; i < 8; ++i) {
      first[i] = saturated<std::uint8_t>(a.at[i]);
      second[i] = saturated<std::uint8_t>(b.at[i]);
    }
  }
};
using NarrowLanes = ArrayLanes;
using WideLanes = ArrayLanes;

template <class L>
struct Pairs {
  typename L::V a, b;
};
template <class L>
struct Sums {
  std::uint32_t at[8];
};

template <class L, class F>
[[gnu::always_inline]] inline Sums<L> eachSum(F f) {
  Sums<L> result;
  for (int i = 0; i < 8; ++i) result.at[i] = static_cast<std::uint32_t>(f(i));
  return result;
}
template <class L>
[[gnu::always_inline]] inline Pairs<L> pairs(typename L::V a, typename L::V b) {
  return {a, b};
}
template <class L>
[[gnu::always_inline]] inline Sums<L> dot(const Pairs<L>& xy, int a, int b) {
  return eachSum<L>([&](int i) { return a * xy.a.at[i] + b * xy.b.at[i]; });
}
template <class L>
[[gnu::always_inline]] inline Sums<L> operator+(const Sums<L>& a, const Sums<L>& b) {
  return eachSum<L>([&](int i) { return a.at[i] + b.at[i]; });
}
template <class L>
[[gnu::always_inline]] inline Sums<L> operator-(const Sums<L>& a, const Sums<L>& b) {
  return eachSum<L>([&](int i) { return a.at[i] - b.at[i]; });
}
template <int shift, class L>
[[gnu::always_inline]] inline Sums<L> halfUp(const Sums<L>& a) {
  return eachSum<L>([&](int i) { return a.at[i] + (1u << (shift - 1)); });
}
template <int shift, class L>
[[gnu::always_inline]] inline typename L::V narrow(const Sums<L>& a) {
  typename L::V result;
  for (int i = 0; i < 8; ++i)
    result.at[i] = saturated<std::int16_t>(static_cast<int>(a.at[i]) >> shift);
  return result;
}

template <class L>
[[gnu::always_inline]] inline void transpose(typename L::V* v) {
  for (int y = 1; y < 8; ++y)
    for (int x = 0; x < y; ++x) {
      const std::int16_t kept = v[y].at[x];
      v[y].at[x] = v[x].at[y];
      v[x].at[y] = kept;
    }
}

#undef VX_LANES

#else

using NarrowLanes = Lanes128;

// Products stand in the order of low16 and high16.
template <class L>
struct Sums {
  typename L::V low, high;
};

// The pairs (x, y) of two vectors.
template <class L>
[[gnu::always_inline]] inline Sums<L> pairs(typename L::V x, typename L::V y) {
  return {L::low16(x, y), L::high16(x, y)};
}
// a * x + b * y of the pairs.
template <class L>
[[gnu::always_inline]] inline Sums<L> dot(const Sums<L>& xy, int a, int b) {
  const typename L::V factors = L::set32(
      static_cast<int>((static_cast<unsigned>(b) << 16) | (static_cast<unsigned>(a) & 0xFFFFu)));
  return {L::madd(xy.low, factors), L::madd(xy.high, factors)};
}
template <class L>
[[gnu::always_inline]] inline Sums<L> operator+(const Sums<L>& a, const Sums<L>& b) {
  return {L::add32(a.low, b.low), L::add32(a.high, b.high)};
}
template <class L>
[[gnu::always_inline]] inline Sums<L> operator-(const Sums<L>& a, const Sums<L>& b) {
  return {L::sub32(a.low, b.low), L::sub32(a.high, b.high)};
}
// Half a unit of what narrow() leaves, added.
template <int shift, class L>
[[gnu::always_inline]] inline Sums<L> halfUp(const Sums<L>& a) {
  const typename L::V half = L::set32(1 << (shift - 1));
  return {L::add32(a.low, half), L::add32(a.high, half)};
}
// a >> shift, saturated.
template <int shift, class L>
[[gnu::always_inline]] inline typename L::V narrow(const Sums<L>& a) {
  return L::pack32(L::template shift32<shift>(a.low), L::template shift32<shift>(a.high));
}

// The 8x8 values of every block, rows and columns exchanged.
template <class L>
[[gnu::always_inline]] inline void transpose(typename L::V* v) {
  using V = typename L::V;
  const V a0 = L::low16(v[0], v[1]), a1 = L::high16(v[0], v[1]);
  const V a2 = L::low16(v[2], v[3]), a3 = L::high16(v[2], v[3]);
  const V a4 = L::low16(v[4], v[5]), a5 = L::high16(v[4], v[5]);
  const V a6 = L::low16(v[6], v[7]), a7 = L::high16(v[6], v[7]);
  const V b0 = L::low32(a0, a2), b1 = L::high32(a0, a2), b2 = L::low32(a1, a3);
  const V b3 = L::high32(a1, a3), b4 = L::low32(a4, a6), b5 = L::high32(a4, a6);
  const V b6 = L::low32(a5, a7), b7 = L::high32(a5, a7);
  v[0] = L::low64(b0, b4), v[1] = L::high64(b0, b4);
  v[2] = L::low64(b1, b5), v[3] = L::high64(b1, b5);
  v[4] = L::low64(b2, b6), v[5] = L::high64(b2, b6);
  v[6] = L::low64(b3, b7), v[7] = L::high64(b3, b7);
}

#endif

}  // namespace
}  // namespace vx::prim::VX_VARIANT
