#pragma once

namespace vx {

/// Divides one axis of `size` pixels into overlapping tiles: tile i starts at i * tileStep, the
/// last one at size - tileSize, whatever remains there overlapping more.
///
/// @param target    wished tile size, above 0
/// @param overlap   share of a tile that its neighbour covers too, from 0 to below 1
/// @param tileSize  receives the size of every tile, even; 0 for a `size` below 2
/// @param tileStep  receives the distance of their starts
/// @return the number of tiles; 1 below one and a half targets
///
/// Evaluated in single precision. With target 1152 or 1536 and overlap 0.4 the tiles cover the axis
/// without a gap up to 318776 pixels; from there on rounding can leave gaps.
int planTiles(int size, int target, float overlap, int& tileSize, int& tileStep);

}  // namespace vx
