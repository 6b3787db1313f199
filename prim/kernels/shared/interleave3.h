#pragma once

// Three interleaved channels of floats to three arrays, and back.
//
// With a vector length N that 3 does not divide, the N elements of one channel in three consecutive
// vectors lie in different lanes: two blends bring them together and one permutation in order. The
// compiler takes two permutations for each vector (measured with the stores to the strips: a
// quarter slower with AVX2, a fifth with AVX-512).

#include "prim/kernels/shared/floats.h"
#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

#if defined(__AVX2__)

// Lanes of the n-th of three consecutive vectors that hold channel c.
constexpr int lanesOf(int c, int n) {
  int mask = 0;
  for (int lane = 0; lane < kFloats; ++lane)
    if ((n * kFloats + lane) % 3 == c) mask |= 1 << lane;
  return mask;
}

struct alignas(64) LaneTables {
  int toChannel[3][kFloats];    // lane of pixel i of the channel
  int fromChannel[3][kFloats];  // pixel in lane i
};

constexpr LaneTables laneTables() {
  LaneTables t = {};
  for (int c = 0; c < 3; ++c)
    for (int i = 0; i < kFloats; ++i) {
      const int lane = (3 * i + c) % kFloats;
      t.toChannel[c][i] = lane;
      t.fromChannel[c][lane] = i;
    }
  return t;
}

constexpr LaneTables kLaneTables = laneTables();

template <int c>
inline Floats channelOf(Floats v0, Floats v1, Floats v2) {
  const Floats together = blend<lanesOf(c, 2)>(blend<lanesOf(c, 1)>(v0, v1), v2);
  return permute(together, kLaneTables.toChannel[c]);
}

template <int n>
inline Floats interleaved(Floats c0, Floats c1, Floats c2) {
  return blend<lanesOf(2, n)>(blend<lanesOf(1, n)>(c0, c1), c2);
}

#endif

inline void load3(const float* src, float* c0, float* c1, float* c2, int count) {
  int i = 0;
#if defined(__AVX2__)
  for (; i + kFloats <= count; i += kFloats) {
    const Floats v0 = loadFloats(src + 3 * i);
    const Floats v1 = loadFloats(src + 3 * i + kFloats);
    const Floats v2 = loadFloats(src + 3 * i + 2 * kFloats);
    storeFloats(c0 + i, channelOf<0>(v0, v1, v2));
    storeFloats(c1 + i, channelOf<1>(v0, v1, v2));
    storeFloats(c2 + i, channelOf<2>(v0, v1, v2));
  }
#endif
  for (; i < count; ++i) {
    c0[i] = src[3 * i];
    c1[i] = src[3 * i + 1];
    c2[i] = src[3 * i + 2];
  }
}

inline void store3(const float* c0, const float* c1, const float* c2, float* dst, int count) {
  int i = 0;
#if defined(__AVX2__)
  for (; i + kFloats <= count; i += kFloats) {
    const Floats v0 = permute(loadFloats(c0 + i), kLaneTables.fromChannel[0]);
    const Floats v1 = permute(loadFloats(c1 + i), kLaneTables.fromChannel[1]);
    const Floats v2 = permute(loadFloats(c2 + i), kLaneTables.fromChannel[2]);
    storeFloats(dst + 3 * i, interleaved<0>(v0, v1, v2));
    storeFloats(dst + 3 * i + kFloats, interleaved<1>(v0, v1, v2));
    storeFloats(dst + 3 * i + 2 * kFloats, interleaved<2>(v0, v1, v2));
  }
#endif
  for (; i < count; ++i) {
    dst[3 * i] = c0[i];
    dst[3 * i + 1] = c1[i];
    dst[3 * i + 2] = c2[i];
  }
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
