#pragma once

// Drivers of the primitives between an interleaved image and its planes.

#include "tests/prim/variants/match.h"

namespace vx::test {

// interleaved to planes
inline void drive(const Prim& entry,
                  Row<const float*, int, float*, int, float*, int, float*, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<float> src(t, Role::read, entry.source);
    Image<float> a(t, Role::write), b(t, Role::write), c(t, Role::write);
    match(entry, t, row, {&src, &a, &b, &c}, expectIn(t), src.data(), src.step(), a.data(),
          a.step(), b.data(), b.step(), c.data(), c.step(), t.width, t.height);
  });
}

// planes to interleaved
inline void drive(
    const Prim& entry,
    Row<const float*, int, const float*, int, const float*, int, float*, int, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<float> a(t, Role::read), b(t, Role::read), c(t, Role::read);
    Image<float> dst(t, Role::write, entry.destination);
    match(entry, t, row, {&a, &b, &c, &dst}, expectIn(t), a.data(), a.step(), b.data(), b.step(),
          c.data(), c.step(), dst.data(), dst.step(), t.width, t.height);
  });
}

}  // namespace vx::test
