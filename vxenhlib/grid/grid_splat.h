#pragma once

#include <cstddef>
#include <cstdint>

namespace vx {

/// Visits the pixels of one image row cell column by cell column: add(cell, x) with cell = column *
/// depth + bins[x], column counting from 0 in steps of `spatialSample` pixels.
///
/// With `columnsApart` promised (every bin below `depth`), up to eight columns are walked in turn,
/// so that a run of equal bins is not one long chain of additions through the same cell; the order
/// within each cell stays that of x.
template <class Add>
void walkCells(const std::uint8_t* bins, int width, int spatialSample, int depth, bool columnsApart,
               const Add& add);

namespace detail {

template <int kColumns, class Add>
inline void walkColumns(const std::uint8_t* bins, std::ptrdiff_t x, std::ptrdiff_t pixels,
                        std::ptrdiff_t cell, std::ptrdiff_t depth, const Add& add) {
  for (std::ptrdiff_t i = 0; i < pixels; ++i) {
    for (int c = 0; c < kColumns; ++c) {
      const std::ptrdiff_t at = x + c * pixels + i;
      add(cell + c * depth + bins[at], at);
    }
  }
}

}  // namespace detail

template <class Add>
void walkCells(const std::uint8_t* bins, int width, int spatialSample, int depth, bool columnsApart,
               const Add& add) {
  const int whole = width / spatialSample;
  const auto at = [&](int column) { return std::ptrdiff_t{column} * spatialSample; };
  const auto cell = [&](int column) { return std::ptrdiff_t{column} * depth; };
  int column = 0;
  if (columnsApart) {
    for (; column + 8 <= whole; column += 8)
      detail::walkColumns<8>(bins, at(column), spatialSample, cell(column), depth, add);
    if (column + 4 <= whole) {
      detail::walkColumns<4>(bins, at(column), spatialSample, cell(column), depth, add);
      column += 4;
    }
    if (column + 2 <= whole) {
      detail::walkColumns<2>(bins, at(column), spatialSample, cell(column), depth, add);
      column += 2;
    }
  }
  for (; column < whole; ++column)
    detail::walkColumns<1>(bins, at(column), spatialSample, cell(column), depth, add);
  detail::walkColumns<1>(bins, at(column), width - at(column), cell(column), depth, add);
}

}  // namespace vx
