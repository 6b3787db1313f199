#include "adjust/adjust_driver.h"

#include <algorithm>
#include <climits>
#include <cstddef>

#include "adjust/adjust_core.h"
#include "adjust/host_layout.h"
#include "adjust/plan_tiles.h"
#include "adjust/tile_blend.h"
#include "vxenhlib/tone/tone_scratch.h"

namespace vx {
namespace {

enum Result : int { kDone = 1, kCancelled = 0, kNoMemory = -1, kUnknownFormat = -2 };

constexpr int kSizeLimit = 2304;  // a picture below it on both axes is one piece
constexpr int kTileTargetX = 1536;
constexpr int kTileTargetY = 1152;
constexpr float kOverlap = 0.4f;

// Rows of the host's picture, from (x0, y0) on.
class HostRows : public RowSource, public RowSink {
 public:
  explicit HostRows(const HostImage& host, int x0 = 0, int y0 = 0)
      : host_(host), x0_(x0), y0_(y0) {}

  void take(int y, const RgbRows& to) override {
    readHostImage(host_.format, host_.pixels, host_.rowStep, x0_, y0_ + y, to);
  }
  void give(int y, const RgbRows& from) override {
    writeHostImage(from, host_.format, host_.row(y), host_.rowStep);
  }

 private:
  const HostImage& host_;
  int x0_, y0_;
};

// Rows of a tile on their way into the blend.
class TileRows : public RowSink {
 public:
  TileRows(TileBlend& blend, int x0, int y0) : blend_(blend), x0_(x0), y0_(y0) {}

  void give(int y, const RgbRows& from) override { blend_.add(from, y, x0_, y0_); }

 private:
  TileBlend& blend_;
  int x0_, y0_;
};

// An odd last column or row is neither read nor written.
int adjustWhole(const HostImage& host, const AdjustSettings& settings) {
  IMG3<float> image(host.width & ~1, host.height & ~1);
  if (!known(host.format)) return kUnknownFormat;
  if (image.data == nullptr) return kDone;
  HostRows rows(host);
  ToneScratch scratch;
  if (!host.rowsOverlap()) {
    adjustCore(image, settings, rows, rows, scratch);
    return kDone;
  }
  // Threads of a team would write the same bytes.
  ImageRows kept(image);
  adjustCore(image, settings, rows, kept, scratch);
  for (int y = 0; y < image.height; ++y) rows.give(y, RgbRows(image).rows(y, 1));
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
  if (!known(image.format)) return kUnknownFormat;

  ToneScratch scratch;
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
      HostRows from(image, x0, y0);
      TileRows to(blend, x0, y0);
      adjustCore(tile, settings, from, to, scratch);
      position += progressStep;
      if (!host.report(position)) return kCancelled;
    }
  }
  blend.writeTo(image);
  return kDone;
}

}  // namespace

int adjustRgb(const HostImage& image, const HostCallbacks& host, const AdjustSettings& settings) {
  if (!host.report(1)) return kCancelled;

  const int untouched = known(image.format) ? kDone : kUnknownFormat;
  if (image.pixels == nullptr || refusesStep(image.format, image.rowStep)) return untouched;

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
