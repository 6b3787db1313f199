#include "vxenhlib/nonlocal/nl_base.h"

#include <algorithm>

#include "frame/parallel.h"
#include "frame/to_int.h"
#include "vxenhlib/nonlocal/correlation_search.h"
#include "vxenhlib/nonlocal/exact_search.h"
#include "vxenhlib/nonlocal/stack_selection.h"

namespace vx {

/// Scratch of one share; one thread at a time.
struct CNLBase::Worker {
  /// The costs of a column of the group of four blocks.
  struct Column {
    std::array<CostMap, 2> maps;
    BlockPair pair;
    int visitedFrom = 0;  ///< column of the area that the pair was visited from last
  };

  CNLBase& owner;
  QuantisedGuides guides;
  std::unique_ptr<BlockSearch> search;
  Column columns[2];
  Column* left = &columns[0];  ///< what was the right one of the area before
  Column* right = &columns[1];
  int planeWidth = 0;
  void* context = nullptr;

  explicit Worker(CNLBase& o) : owner(o) {}
  ~Worker() {
    if (context != nullptr) owner.deleteContext(context);
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  bool reserve(GIMG<float>* const* planes, int count, const Share& share) {
    PlaneView views[kMostGuides];
    for (int p = 0; p < count; ++p) views[p] = PlaneView(*planes[p]);
    planeWidth = views[0].width;
    const SearchShape shape = owner.searchShape();
    if (!guides.reserve(views, count, shape.blockSize, shape.searchSize, owner.searchThreshold(),
                        mostMatchCost(shape)))
      return false;
    if (owner.searchesExactly())
      search = std::make_unique<ExactSearch>();
    else
      search = std::make_unique<CorrelationSearch>(*owner.transform_);
    if (!search->reserve(shape)) return false;
    for (Column& c : columns)
      if (!c.maps[0].reserve(shape) || !c.maps[1].reserve(shape)) return false;
    context = owner.createContext(share, guides.limit());
    return context != nullptr;
  }

  /// Whether the column's maps hold all positions of the pair in an area.
  bool holds(const Column& column, const BlockPair& pair, const SearchArea& area) const {
    const CostMap& map = column.maps[0];
    return column.pair == pair && map.y == area.y && area.x >= map.x &&
           area.x + area.width - owner.blockWidth < map.x + map.columns;
  }

  /// Makes a column's maps fit. True when the pair has been visited from the area before.
  bool prepare(Column& column, const BlockPair& pair, const SearchArea& area) {
    if (holds(column, pair, area)) return true;
    search->search(guides, planeWidth, pair, area, column.maps);
    column.pair = pair;
    return false;
  }

  void visit(const Column& column, std::size_t j, bool again, int shift, const SearchArea& area) {
    const int x = column.pair.x;
    const int y = column.pair.y[j];
    const CostMap& map = column.maps[j];
    if (!again || !owner.repeatsBlock(context, x, y, area, shift, map))
      owner.TFdoABlock(context, x, y, area, map);
  }

  void visitGroup(const BlockPair& leftPair, const BlockPair& rightPair, const SearchArea& area) {
    std::swap(left, right);
    const bool leftAgain = prepare(*left, leftPair, area);
    const int shift = area.x - left->visitedFrom;
    // At the right edge both pairs may be one.
    const bool one = rightPair == leftPair;
    if (!one) prepare(*right, rightPair, area);
    for (std::size_t j = 0; j < 2; ++j) {
      visit(*left, j, leftAgain, shift, area);
      visit(one ? *left : *right, j, one, 0, area);
    }
    left->visitedFrom = right->visitedFrom = area.x;
  }

  void startStrip(const SearchArea& strip) {
    guides.cover(strip.y, strip.y + strip.height);
    for (Column& c : columns) c.pair = {};
  }
};

CNLBase::CNLBase(int blockSize, int searchSize)
    : blockWidth(blockSize),
      blockHeight(blockSize),
      stepX(toInt(static_cast<float>(blockSize) / 3.0f + 0.5f)),
      stepY(stepX),
      searchWidth(searchSize),
      searchHeight(searchSize) {}

SearchArea CNLBase::areaAt(int x, int y, int width, int height) const {
  const auto axis = [](int at, int step, int block, int search, int size, int& start, int& length) {
    const int margin = (search - block - step) / 2;
    length = std::min(search, size);
    start = std::max(std::min(at - margin, size - length), 0);
  };
  SearchArea area;
  axis(x, stepX, blockWidth, searchWidth, width, area.x, area.width);
  axis(y, stepY, blockHeight, searchHeight, height, area.y, area.height);
  return area;
}

VXRC CNLBase::proc(GIMG<float>* const* planes, int count) {
  const bool knownBlock = blockWidth == 8 || blockWidth == 12 || blockWidth == 16;
  if (count < 1 || count > kMostGuides || !knownBlock || stepX < 1 || stepY < 1 ||
      blockWidth + stepX > searchWidth || blockHeight + stepY > searchHeight ||
      searchShape().positions() + stepX > 64)
    return kVxrcBadArgument;
  const int width = planes[0]->roiWidth;
  const int height = planes[0]->roiHeight;
  for (int p = 0; p < count; ++p) {
    if (planes[p]->roiWidth != width || planes[p]->roiHeight != height) return kVxrcSizeMismatch;
    if (planes[p]->data == nullptr) return kVxrcNoMemory;
  }
  const int rows = height - stepY + 1;
  if (width < blockWidth || height < blockHeight || rows < 1) return kVxrcOk;
  if (!searchesExactly()) {
    if (transform_ == nullptr) transform_ = std::make_unique<SearchTransform>(searchShape());
    if (transform_->empty()) return kVxrcNoMemory;
  }

  const int doubleStep = 2 * stepY;
  const int strips = (rows - 1) / (kShares * doubleStep) + 1;
  std::unique_ptr<Worker> workers[kShares];
  for (int t = 0; t < kShares; ++t) {
    const int firstY = doubleStep * strips * t;
    if (firstY >= rows) break;
    const int lastY =
        std::min(firstY + doubleStep * (strips - 1), (rows - 1) / doubleStep * doubleStep);
    const SearchArea last = areaAt(0, lastY, width, height);
    workers[t] = std::make_unique<Worker>(*this);
    const Share share = {t, areaAt(0, firstY, width, height).y, last.y + last.height};
    if (!workers[t]->reserve(planes, count, share)) return kVxrcNoMemory;
  }
  parallelFor(0, kShares, [&](int t) {
    if (workers[t] != nullptr) walkShare(*workers[t], strips, t, width, height);
  });
  return kVxrcOk;
}

void CNLBase::walkShare(Worker& worker, int strips, int share, int width, int height) {
  const auto pairAt = [&](int x, int y) {
    const int right = width - blockWidth;
    const int low = height - blockHeight;
    return BlockPair{std::min(x, right), {std::min(y, low), std::min(y + stepY, low)}};
  };
  for (int s = 0; s < strips; ++s) {
    const int y = 2 * stepY * (s + share * strips);
    if (y >= height - stepY + 1) break;
    worker.startStrip(areaAt(0, y, width, height));
    for (int x = 0; x < width - 2 * stepX + 1; x += stepX)
      worker.visitGroup(pairAt(x, y), pairAt(x + stepX, y), areaAt(x, y, width, height));
  }
}

}  // namespace vx
