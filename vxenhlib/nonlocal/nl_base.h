#pragma once

#include <memory>

#include "frame/img.h"
#include "vxenhlib/nonlocal/block_search.h"
#include "vxenhlib/nonlocal/search_transform.h"
#include "vxenhlib/vxrc.h"

namespace vx {

/// The walk of the non-local filters: visits a grid of square blocks and hands each one, with the
/// costs of all its positions in a search area, to the filter that derives from this.
///
/// The plane is divided into four shares of strips, whatever the number of threads, and each share
/// has its own context: a filter that adds up its results per share and joins them in order gives
/// the same result for any number of threads. A strip is two grid steps high; its areas are placed
/// every step, each centred on the two by two blocks that share it, and pushed inside at the edges
/// of the plane. So a row of blocks is visited once, a column twice, from two areas, the second of
/// which adds but a few columns of positions to those of the first: both find them in one map.
class CNLBase {
 public:
  static constexpr int kMostGuides = QuantisedGuides::kMost;
  static constexpr int kShares = 4;

  /// A share: the rows that its areas cover.
  struct Share {
    int index;
    int top;
    int bottom;  ///< one behind the last
  };

  const int blockWidth, blockHeight;
  int stepX, stepY;  ///< a third of the block; the owner may set them before proc()
  const int searchWidth, searchHeight;

  CNLBase(const CNLBase&) = delete;
  CNLBase& operator=(const CNLBase&) = delete;
  virtual ~CNLBase() = default;

  /// Walks over 1 to 3 guide planes of one size. Costs are summed over the guides. A plane smaller
  /// than a block has none; one smaller than a search area is searched as far as it goes.
  ///
  /// Steps of half a block are searched exactly; for others the first call plans transforms.
  ///
  /// @return kVxrcBadArgument for another count, for blocks that are not 8, 12 or 16 pixels wide,
  /// for
  ///   steps that are below 1 or reach out of an area, and for areas with more than 64 positions,
  ///   step and all, one way; kVxrcSizeMismatch; kVxrcNoMemory; nothing has been visited then
  VXRC proc(GIMG<float>* const* planes, int count);

 protected:
  CNLBase(int blockSize, int searchSize);

  /// The largest cost of interest, as a sum of squared differences. Costs up to it are told apart
  /// as finely as prim::matchMostCost() allows.
  virtual float searchThreshold() const = 0;

  /// The state of one share, null when memory is short. Called on the thread of proc(), in order,
  /// before the first block.
  ///
  /// @param most  what searchThreshold() is in the units of the costs
  virtual void* createContext(const Share& share, std::int32_t most) = 0;

  /// Takes the block at (x, y). Called on any thread, for one share on one at a time.
  virtual int TFdoABlock(void* context, int x, int y, const SearchArea& area,
                         const CostMap& map) = 0;

  /// Asked before a block is visited for the second time, from an area `shift` columns further
  /// right in the same rows: whether that visit does what the first one did. If so it has done it
  /// again, and TFdoABlock is not called.
  virtual bool repeatsBlock(void* context, int x, int y, const SearchArea& area, int shift,
                            const CostMap& map) = 0;

  /// Called on the thread of proc() for each context after the last block.
  virtual void deleteContext(void* context) = 0;

  SearchShape searchShape() const { return {blockWidth, searchWidth, stepX}; }

 private:
  struct Worker;

  bool searchesExactly() const { return 2 * stepX == blockWidth; }
  SearchArea areaAt(int x, int y, int width, int height) const;
  void walkShare(Worker& worker, int strips, int share, int width, int height);

  std::unique_ptr<SearchTransform> transform_;
};

}  // namespace vx
