#include "adjust/plan_tiles.h"

#include "frame/to_int.h"

namespace vx {

int planTiles(int size, int target, float overlap, int& tileSize, int& tileStep) {
  const float axis = static_cast<float>(size);
  const float wished = static_cast<float>(target);
  const float own = 1.0f - overlap;  // share of a tile up to the start of the next

  if (size < toInt(wished * 1.5f)) {
    tileSize = tileStep = size & ~1;
    return 1;
  }
  if (size < toInt(static_cast<double>(2.0f * wished * own) * 1.5)) {
    tileSize = toInt(size * 0.5 / static_cast<double>(own)) & ~1;
    tileStep = toInt(size * 0.5) & ~1;
    return 2;
  }
  const int wholeTiles = toInt(axis / (wished * own));
  tileSize = toInt(static_cast<float>(size / wholeTiles) / own) & ~3;
  const float tile = static_cast<float>(tileSize);
  const int count = toInt((axis - 2.0f * tile * own) / (own * tile)) + 2;
  tileStep = toInt((axis - tile * overlap) / static_cast<float>(count));
  return count;
}

}  // namespace vx
