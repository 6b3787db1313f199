#pragma once

namespace vx {

/// Overwrites bands inside the rectangle of `width` by `height` at `data` with the nearest row or
/// column further in: first the `top` rows from row `top`, then the `bottom` rows from row
/// height - bottom - 1, then in every row the `left` columns from column `left` and the `right`
/// columns from column width - right - 1. So corners take the nearest inner element, and
/// nothing outside the rectangle is touched.
///
/// A band that is negative or as large as its axis is left out: there is no row or column to
/// repeat.
/// @param step   bytes from one row to the next
void replicateBorder_32f(float* data, int step, int width, int height, int top, int bottom,
                         int left, int right);

}  // namespace vx
