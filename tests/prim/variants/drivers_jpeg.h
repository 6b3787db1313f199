#pragma once

// Drivers of the primitives of baseline JPEG whose blocks and rows no plan describes.

#include "jpeg/tables.h"
#include "prim/jpeg.h"
#include "tests/prim/variants/match.h"

namespace vx::test {

/// Quantisers of a very fine, a common, a coarse and a mixed table.
inline prim::JpegQuantiser drawQuantiser(Trial& t) {
  if (t.oneIn(2))
    return jpegQuantiser(jpegQuantTable(t.oneIn(2), t.pick({1, 20, 50, 75, 95, 100})));
  JpegQuantTable table;
  for (auto& step : table) step = static_cast<std::uint8_t>(t.uniform(1, 255));
  return jpegQuantiser(table);
}

/// Fills a list with values of a range, now and then with its ends alone.
inline void drawRange(Trial& t, Image<std::int16_t>& image, int count, int low, int high) {
  const bool ends = t.oneIn(3);
  for (int i = 0; i < count; ++i)
    image.set(i, 0, static_cast<std::int16_t>(ends ? t.pick({low, high}) : t.uniform(low, high)));
}

// eight rows of samples to columns
inline void drive(const Prim& entry, Row<const std::int16_t* const*, std::int16_t*, int> row) {
  forTrials(entry, [&](Trial& t) {
    Image<std::int16_t> src(t, Role::read, Shape{t.width, 8, {}, {}, -1, false});
    for (int y = 0; y < 8; ++y)
      for (int x = 0; x < t.width; ++x)
        src.set(x, y,
                static_cast<std::int16_t>(t.oneIn(3) ? t.pick({-128, 128}) : t.uniform(-128, 128)));
    auto dst = list<std::int16_t>(t, Role::write, 8 * t.width);
    const std::int16_t* rows[8];
    for (int y = 0; y < 8; ++y)
      rows[y] = reinterpret_cast<const std::int16_t*>(reinterpret_cast<const char*>(src.data()) +
                                                      std::ptrdiff_t{src.step()} * y);
    match(entry, t, row, {&src, &dst}, Expect::success, rows, dst.data(), t.width);
  });
}

// What the vertical transform gives at most: 44 * 128 * sqrt(8).
inline constexpr int kColumnTop = 15930;

// columns to quantised blocks
inline void drive(const Prim& entry,
                  Row<const std::int16_t*, std::int16_t*, int, const prim::JpegQuantiser*> row) {
  forTrials(entry, [&](Trial& t) {
    const int blocks = t.uniform(1, 13);
    auto columns = list<std::int16_t>(t, Role::read, 64 * blocks);
    drawRange(t, columns, 64 * blocks, -kColumnTop, kColumnTop);
    auto dst = list<std::int16_t>(t, Role::write, 64 * blocks);
    const prim::JpegQuantiser quantiser = drawQuantiser(t);
    match(entry, t, row, {&columns, &dst}, Expect::success, columns.data(), dst.data(), blocks,
          &quantiser);
  });
}

// columns to requantised samples
inline void drive(
    const Prim& entry,
    Row<const std::int16_t*, std::uint8_t*, int, int, const prim::JpegQuantiser*> row) {
  forTrials(entry, [&](Trial& t) {
    const int blocks = t.uniform(1, 13);
    auto columns = list<std::int16_t>(t, Role::read, 64 * blocks);
    drawRange(t, columns, 64 * blocks, -kColumnTop / 4, kColumnTop / 4);
    Image<std::uint8_t> dst(t, Role::write, Shape{8 * blocks, 8});
    const prim::JpegQuantiser quantiser = drawQuantiser(t);
    match(entry, t, row, {&columns, &dst}, Expect::success, columns.data(), dst.data(), dst.step(),
          blocks, &quantiser);
  });
}

// sizes of levels
inline void drive(const Prim& entry,
                  Row<const std::int16_t*, int, const prim::JpegQuantiser*, double*> row) {
  forTrials(entry, [&](Trial& t) {
    const int blocks = t.oneIn(20) ? 700 : t.uniform(1, 13);
    auto columns = list<std::int16_t>(t, Role::read, 64 * blocks);
    drawRange(t, columns, 64 * blocks, -kColumnTop, kColumnTop);
    auto sum = list<double>(t, Role::write, 1);
    const prim::JpegQuantiser quantiser = drawQuantiser(t);
    match(entry, t, row, {&columns, &sum}, Expect::success, columns.data(), blocks, &quantiser,
          sum.data());
  });
}

// dequantised blocks to samples
inline void drive(const Prim& entry, Row<const std::int16_t*, std::uint8_t*, int, int> row) {
  forTrials(entry, [&](Trial& t) {
    const int blocks = t.uniform(1, 13);
    auto coefficients = list<std::int16_t>(t, Role::read, 64 * blocks);
    const int top = t.pick({40, 400, 2047});
    drawRange(t, coefficients, 64 * blocks, -top - 1, top);
    Image<std::uint8_t> dst(t, Role::write, Shape{8 * blocks, 8});
    match(entry, t, row, {&coefficients, &dst}, Expect::success, coefficients.data(), dst.data(),
          dst.step(), blocks);
  });
}

// a row doubled
inline void drive(const Prim& entry, Row<const std::uint8_t*, std::uint8_t*, int> row) {
  forTrials(entry, [&](Trial& t) {
    auto src = list<std::uint8_t>(t, Role::read, t.width + 2);
    auto dst = list<std::uint8_t>(t, Role::write, 2 * t.width);
    match(entry, t, row, {&src, &dst}, Expect::success, src.data() + 1, dst.data(), t.width);
  });
}

// two rows doubled
inline void drive(const Prim& entry,
                  Row<const std::uint8_t*, const std::uint8_t*, std::uint8_t*, int> row) {
  forTrials(entry, [&](Trial& t) {
    auto near = list<std::uint8_t>(t, Role::read, t.width + 2);
    auto far = list<std::uint8_t>(t, Role::read, t.width + 2);
    auto dst = list<std::uint8_t>(t, Role::write, 2 * t.width);
    match(entry, t, row, {&near, &far, &dst}, Expect::success, near.data() + 1, far.data() + 1,
          dst.data(), t.width);
  });
}

}  // namespace vx::test
