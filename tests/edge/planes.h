#pragma once

#include <cstring>
#include <random>

#include "edge/enh_edge.h"

// Planes of test pictures and what is asked of them.

inline void fillRandom(vx::EdgePlane& plane, unsigned seed) {
  std::mt19937 rng(seed);
  for (int y = 0; y < plane.height; ++y)
    for (int x = 0; x < plane.width; ++x)
      plane.row(y)[x] = static_cast<float>(rng() % 4096) / 4096.0f;
}

inline void copyPlane(const vx::EdgePlane& from, vx::EdgePlane& to) {
  to.resize(from.width, from.height);
  for (int y = 0; y < from.height; ++y)
    std::memcpy(to.row(y), from.row(y), static_cast<std::size_t>(from.width) * sizeof(float));
}

inline bool samePlane(const vx::EdgePlane& a, const vx::EdgePlane& b) {
  for (int y = 0; y < a.height; ++y)
    if (std::memcmp(a.row(y), b.row(y), static_cast<std::size_t>(a.width) * sizeof(float)) != 0)
      return false;
  return a.width == b.width && a.height == b.height;
}
