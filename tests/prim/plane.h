#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "prim/dispatch.h"

// Test image: width x height pixels with a frame of readable ones around them. Its memory ends with
// the frame's last pixel, so that the address sanitizer sees a read beyond.
template <class T>
class Plane {
 public:
  Plane(int w, int h, int frameX = 0, int frameY = 0, int padding = 0)
      : width(w),
        height(h),
        step((w + 2 * frameX + padding) * static_cast<int>(sizeof(T))),
        pixels_(static_cast<std::size_t>((w + 2 * frameX + padding) * (h + 2 * frameY) - padding)),
        first_(frameY * (w + 2 * frameX + padding) + frameX) {}

  T* data() { return pixels_.data() + first_; }
  const T* data() const { return pixels_.data() + first_; }
  T& at(int x, int y) { return pixels_[index(x, y)]; }
  T at(int x, int y) const { return pixels_[index(x, y)]; }

  void fill(T value) { pixels_.assign(pixels_.size(), value); }

  // Whole numbers from low to high, in the frame as well: exact in every arithmetic.
  Plane& randomise(std::mt19937& rng, int low, int high) {
    for (T& p : pixels_)
      p = static_cast<T>(low + static_cast<int>(rng() % static_cast<unsigned>(high - low + 1)));
    return *this;
  }

  // Pixels outside the region that differ from value.
  int changedOutside(T value) const {
    int changed = 0;
    for (const T& p : pixels_) changed += p != value;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) changed -= at(x, y) != value;
    return changed;
  }

  const int width, height, step;

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(first_ + y * (step / static_cast<int>(sizeof(T))) + x);
  }
  std::vector<T> pixels_;
  int first_;
};

// Runs a check with the entry points on every variant that the processor has.
template <class Check>
void onEveryVariant(Check check) {
  const int saved = vx::prim::primCpuColumn;
  for (int column = 0; column <= vx::prim::lastRunnableColumn(); ++column) {
    SCOPED_TRACE(vx::prim::columnName(column));
    vx::prim::primCpuColumn = column;
    check();
  }
  vx::prim::primCpuColumn = saved;
}

// Expects dst(x, y) == expected(x, y) everywhere and nothing written outside the region.
template <class T, class Expected>
void expectPlane(const Plane<T>& dst, T untouched, Expected expected) {
  for (int y = 0; y < dst.height; ++y)
    for (int x = 0; x < dst.width; ++x)
      ASSERT_EQ(dst.at(x, y), static_cast<T>(expected(x, y))) << "at " << x << ", " << y;
  ASSERT_EQ(dst.changedOutside(untouched), 0);
}
