#include "adjust/adjust_driver.h"

#include <algorithm>
#include <climits>
#include <cstddef>

#include "adjust/adjust_core.h"
#include "adjust/plan_tiles.h"
#include "adjust/tile_blend.h"

namespace vx {
namespace {

enum Result : int { kDone = 1, kCancelled = 0, kNoMemory = -1, kUnknownFormat = -2 };

constexpr int kSizeLimit = 2304;  // a picture below it on both axes is one piece
constexpr int kTileTargetX = 1536;
constexpr int kTileTargetY = 1152;
constexpr float kOverlap = 0.4f;

// An odd last column or row is neither read nor written.
int adjustWhole(const HostImage& host, const AdjustSettings& settings) {
  IMG3<float> image(host.width & ~1, host.height & ~1);
  if (image.data == nullptr) return kDone;
  if (readHostImage(host.format, host.pixels, host.rowStep, 0, 0, image) == 0)
    return kUnknownFormat;
  adjustCore(image, settings);
  if (writeHostImage(image, host.format, host.pixels, host.rowStep) == 0) return kUnknownFormat;
  return kDone;
}

// Whether the core will find memory for its own images of a tile.
bool memoryForCore(int tileWidth, int tileHeight) {
  const IMG3<float> first(tileWidth, tileHeight);
  const IMG3<float> second(tileWidth, tileHeight);
  const IMG3<float> third(tileWidth, tileHeight);
  return first.data != nullptr && second.data != nullptr && third.data != nullptr;
}

int adjustTiles(const HostImage& image, const HostCallbacks& host, const AdjustSettings& settings,
                TileBlend& blend) {
  int tileWidth, tileHeight, stepX, stepY;
  const int columns = planTiles(image.width, kTileTargetX, kOverlap, tileWidth, stepX);
  const int rows = planTiles(image.height, kTileTargetY, kOverlap, tileHeight, stepY);

  const bool planes = blend.acquire(tileWidth, tileHeight);
  IMG3<float> tile(tileWidth, tileHeight);
  if (!planes || tile.data == nullptr || !memoryForCore(tileWidth, tileHeight)) return kNoMemory;
  if (!blend.prepare()) return kNoMemory;

  const int progressStep = std::max(1, 90 / columns / rows);
  int position = 1;
  // The last tile of an axis is pushed against the far edge. Where an axis has one tile and an odd
  // size, its first row or column is under no tile and becomes black.
  const auto start = [](int i, int count, int step, int size, int tileSize) {
    const int last = size - tileSize;
    if (i == count - 1) return last;
    return static_cast<int>(std::min<std::ptrdiff_t>(std::ptrdiff_t{i} * step, last));
  };
  for (int j = 0; j < rows; ++j) {
    const int y0 = start(j, rows, stepY, image.height, tileHeight);
    for (int i = 0; i < columns; ++i) {
      const int x0 = start(i, columns, stepX, image.width, tileWidth);
      if (readHostImage(image.format, image.pixels, image.rowStep, x0, y0, tile) == 0)
        return kUnknownFormat;
      adjustCore(tile, settings);
      blend.add(tile, x0, y0);
      position += progressStep;
      if (!host.report(position)) return kCancelled;
    }
  }
  return blend.writeTo(image) == 0 ? kUnknownFormat : kDone;
}

}  // namespace

int adjustRgb(const HostImage& image, const HostCallbacks& host, const AdjustSettings& settings) {
  if (!host.report(1)) return kCancelled;

  const int untouched = bytesPerPixel(image.format) == 0 ? kUnknownFormat : kDone;
  if (image.pixels == nullptr) return untouched;
  // Formats without an extra channel are read by conversions, which refuse such a step.
  if (image.rowStep < 1 && (image.format == 1 || image.format == 3)) return untouched;

  const bool onePiece = image.width < kSizeLimit && image.height < kSizeLimit;
  const bool empty = image.width < 2 || image.height < 2;
  if (onePiece) return empty ? untouched : adjustWhole(image, settings);
  if (empty || image.width > INT_MAX / static_cast<int>(sizeof(float))) return kNoMemory;

  TileBlend blend(host, image.width, image.height);
  const int result = adjustTiles(image, host, settings, blend);
  blend.release();
  return result;
}

}  // namespace vx
