#pragma once

#include <memory>

#include "frame/img.h"
#include "vxenhlib/nonlocal/block_matcher.h"
#include "vxenhlib/vxrc.h"

namespace vx {

/// The walk of the non-local filters: visits a grid of square blocks and hands each one, with the
/// costs of all its positions in a search tile, to the filter that derives from this.
///
/// The plane is divided into four bands of strips, whatever the number of threads, and each band
/// has its own context: a filter that adds up its results per band and joins the bands in order
/// gives the same result for any number of threads. A strip is two grid steps high; its tiles are
/// placed every step, each centred on the two by two blocks that share it, and pushed inside at the
/// edges of the plane. So a row of blocks is visited once, a column twice, from two tiles, the
/// second of which adds but a few columns of positions to the map of the first.
class CNLBase {
 public:
  static constexpr int kMostGuides = BlockMatcher::kMostGuides;
  static constexpr int kBands = 4;

  /// A band: the rows that its tiles cover.
  struct Band {
    int index;
    int top;
    int bottom;  ///< one behind the last
  };

  int blockWidth, blockHeight;
  int stepX, stepY;  ///< a third of the block; the owner may set them before proc()
  int searchWidth, searchHeight;
  int guideCount = 0;

  CNLBase(const CNLBase&) = delete;
  CNLBase& operator=(const CNLBase&) = delete;
  virtual ~CNLBase() = default;

  /// False when the transforms could not be planned; proc() then answers kVxrcNoMemory.
  virtual bool ready() const { return !transform_.empty(); }

  /// Walks over 1 to 3 guide planes of one size. Costs are summed over the guides. A plane smaller
  /// than a block has none; one smaller than a search tile is searched as far as it goes.
  ///
  /// @return kVxrcBadArgument for another count, or steps that are below 1 or reach out of a tile;
  ///   kVxrcSizeMismatch; kVxrcNoMemory; nothing has been visited then
  VXRC proc(GIMG<float>* const* planes, int count);

 protected:
  CNLBase(int blockSize, int searchSize);

  /// The state of one band, null when memory is short. Called on the thread of proc(), in order,
  /// before the first block.
  virtual void* createContext(const Band& band) = 0;

  /// Takes the block at (x, y). Called on any thread, for one band on one at a time.
  ///
  /// @param energy   sum of the squares of the block in all guides
  /// @param costMap  region of interest: costs of the positions (tileX + u, tileY + v), to be
  ///   overwritten at will
  virtual int TFdoABlock(void* context, int x, int y, int tileX, int tileY, float energy,
                         GIMG<float>& costMap) = 0;

  /// Asked before a block is visited for the second time, from a tile further right of the same
  /// rows: whether that visit does what the first one did, given that all new positions cost at
  /// least `leastNew`. If so it has done it again, and TFdoABlock is not called.
  virtual bool repeatsBlock(void* context, int x, int y, int tileX, float leastNew) {
    (void)context, (void)x, (void)y, (void)tileX, (void)leastNew;
    return false;
  }

  /// Called on the thread of proc() for each context after the last block.
  virtual void deleteContext(void* context) = 0;

  /// Makes the integral images of squares fit; false when memory is short.
  bool prepareSSI(int width, int height, int count);
  VXRC computeSSI(GIMG<float>* const* planes);

 private:
  struct Worker;

  SearchShape searchShape() const { return {blockWidth, blockHeight, searchWidth, searchHeight}; }
  Tile tileAt(int x, int y, int width, int height) const;
  void walkBand(Worker& worker, int strips, int band);

  std::unique_ptr<GIMG<float>> ssi_[kMostGuides];
  SearchTransform transform_;
};

}  // namespace vx
