#pragma once

#include "vxenhlib/grid/grid_shape.h"

namespace vx {

/// Blurs a grid with the kernel 1 2 1 along each axis; the sum of the weights is 4, since the
/// kernel along y is not normalised. Before that the second layer of cells along x and along the
/// value is overwritten with the third, from both ends; the planes beside the first and last with
/// samples take the blurred plane next to them. The outermost cells of every axis keep what they
/// hold.
///
/// Two loops on the team of threads.
/// @param scratch   as many cells as the grid; overwritten
void blurGrid(float* grid, float* scratch, const GridShape& shape);

}  // namespace vx
