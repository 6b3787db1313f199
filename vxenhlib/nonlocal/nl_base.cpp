#include "vxenhlib/nonlocal/nl_base.h"

#include <algorithm>

#include "frame/parallel.h"
#include "frame/to_int.h"
#include "prim/arith.h"
#include "prim/memory.h"

namespace vx {

/// Scratch of one band; one thread at a time.
struct CNLBase::Worker {
  /// The costs of a column of the group of four blocks.
  struct Column {
    GIMG<float> map[2];
    BlockPair pair;
    Tile tile;

    Column(int width, int height) : map{{width, height}, {width, height}} {}
  };

  CNLBase& owner;
  BlockMatcher matcher;
  Column columns[2];
  Column* left = &columns[0];  ///< what was the right one of the tile before
  Column* right = &columns[1];
  GIMG<float> costMap;
  void* context = nullptr;

  explicit Worker(CNLBase& o)
      : owner(o),
        columns{{o.searchWidth, o.searchHeight}, {o.searchWidth, o.searchHeight}},
        costMap(o.searchWidth, o.searchHeight) {}
  ~Worker() {
    if (context != nullptr) owner.deleteContext(context);
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  bool reserve(GIMG<float>* const* planes, const Band& band) {
    PlaneView guides[kMostGuides], integrals[kMostGuides];
    for (int p = 0; p < owner.guideCount; ++p) {
      guides[p] = PlaneView(*planes[p]);
      integrals[p] = PlaneView(*owner.ssi_[p]);
    }
    if (!matcher.reserve(owner.searchShape(), owner.guideCount, guides, integrals)) return false;
    for (const Column& c : columns)
      if (c.map[0].data == nullptr || c.map[1].data == nullptr) return false;
    if (costMap.data == nullptr) return false;
    context = owner.createContext(band);
    return context != nullptr;
  }

  void search(Column& column, const BlockPair& pair, const Tile& tile) {
    const PlaneView maps[2] = {PlaneView(column.map[0]), PlaneView(column.map[1])};
    matcher.search(owner.transform_, pair, maps);
    column.pair = pair;
    column.tile = tile;
  }

  /// How far the tile has moved to the right since the column's maps were made; negative when they
  /// are of no use for this pair and tile.
  int shiftOf(const Column& column, const BlockPair& pair, const Tile& tile) const {
    const Tile& old = column.tile;
    const bool alike = column.pair == pair && old.y == tile.y && old.width == tile.width &&
                       old.height == tile.height;
    const int shift = tile.x - old.x;
    return alike && shift <= tile.width - owner.blockWidth ? shift : -1;
  }

  void visit(const BlockPair& pair, int j, const Tile& tile, GIMG<float>& map) {
    map.roiWidth = tile.width - owner.blockWidth + 1;
    map.roiHeight = tile.height - owner.blockHeight + 1;
    const int y = pair.y[j];
    owner.TFdoABlock(context, pair.x, y, tile.x, tile.y, matcher.energy(pair.x, y), map);
  }

  void visitGroup(const BlockPair& leftPair, const BlockPair& rightPair, const Tile& tile) {
    matcher.setTile(owner.transform_, tile);
    std::swap(left, right);
    const int shift = shiftOf(*left, leftPair, tile);
    std::array<float, 2> leastNew{};
    if (shift < 0)
      search(*left, leftPair, tile);
    else
      leastNew = matcher.extend(shift, leftPair);
    search(*right, rightPair, tile);
    for (int j = 0; j < 2; ++j) {
      const float least = leastNew[static_cast<std::size_t>(j)];
      if (shift < 0 || !owner.repeatsBlock(context, leftPair.x, leftPair.y[j], tile.x, least)) {
        if (shift > 0) matcher.slide(shift, j, PlaneView(left->map[j]));
        visit(leftPair, j, tile, left->map[j]);
      }
      // The next tile asks for this map again, and a visit overwrites what it is given.
      const GIMG<float>& map = right->map[j];
      prim::primCopy_32f_C1R(map.data, map.step, costMap.data, costMap.step,
                             tile.width - owner.blockWidth + 1,
                             tile.height - owner.blockHeight + 1);
      visit(rightPair, j, tile, costMap);
    }
    left->pair = {};  // used up
  }
};

CNLBase::CNLBase(int blockSize, int searchSize)
    : blockWidth(blockSize),
      blockHeight(blockSize),
      stepX(toInt(static_cast<float>(blockSize) / 3.0f + 0.5f)),
      stepY(stepX),
      searchWidth(searchSize),
      searchHeight(searchSize),
      transform_(searchShape()) {}

bool CNLBase::prepareSSI(int width, int height, int count) {
  if (count < 1 || count > kMostGuides) return true;
  if (count != guideCount)
    for (auto& image : ssi_) image.reset();
  guideCount = count;
  for (int p = 0; p < count; ++p) {
    if (ssi_[p] == nullptr || ssi_[p]->width != width || ssi_[p]->height != height)
      ssi_[p] = std::make_unique<GIMG<float>>(width, height);
    if (ssi_[p]->data == nullptr) return false;
  }
  return true;
}

VXRC CNLBase::computeSSI(GIMG<float>* const* planes) {
  parallelFor(0, guideCount, [&](int p) {
    const GIMG<float>& plane = *planes[p];
    GIMG<float>& sums = *ssi_[p];
    prim::primCopy_32f_C1R(plane.data, plane.step, sums.data, sums.step, sums.width, sums.height);
    prim::primSqr_32f_C1IR(sums.data, sums.step, sums.width, sums.height);
    integrate(PlaneView(sums));
  });
  return kVxrcOk;
}

Tile CNLBase::tileAt(int x, int y, int width, int height) const {
  const auto axis = [](int at, int step, int block, int search, int size, int& start, int& length) {
    const int margin = (search - block - step) / 2;
    length = std::min(search, size);
    start = std::max(std::min(at - margin, size - length), 0);
  };
  Tile tile;
  axis(x, stepX, blockWidth, searchWidth, width, tile.x, tile.width);
  axis(y, stepY, blockHeight, searchHeight, height, tile.y, tile.height);
  return tile;
}

VXRC CNLBase::proc(GIMG<float>* const* planes, int count) {
  if (count < 1 || count > kMostGuides || stepX < 1 || stepY < 1 ||
      blockWidth + stepX > searchWidth || blockHeight + stepY > searchHeight)
    return kVxrcBadArgument;
  const int width = planes[0]->roiWidth;
  const int height = planes[0]->roiHeight;
  for (int p = 0; p < count; ++p) {
    if (planes[p]->roiWidth != width || planes[p]->roiHeight != height) return kVxrcSizeMismatch;
    if (planes[p]->data == nullptr) return kVxrcNoMemory;
  }
  if (!ready() || !prepareSSI(width, height, count)) return kVxrcNoMemory;
  const int rows = height - stepY + 1;
  if (width < blockWidth || height < blockHeight || rows < 1) return kVxrcOk;
  computeSSI(planes);

  const int doubleStep = 2 * stepY;
  const int strips = (rows - 1) / (kBands * doubleStep) + 1;
  std::unique_ptr<Worker> workers[kBands];
  for (int t = 0; t < kBands; ++t) {
    const int firstY = doubleStep * strips * t;
    if (firstY >= rows) break;
    const int lastY =
        std::min(firstY + doubleStep * (strips - 1), (rows - 1) / doubleStep * doubleStep);
    const Tile last = tileAt(0, lastY, width, height);
    workers[t] = std::make_unique<Worker>(*this);
    if (!workers[t]->reserve(planes, {t, tileAt(0, firstY, width, height).y, last.y + last.height}))
      return kVxrcNoMemory;
  }
  parallelFor(0, kBands, [&](int t) {
    if (workers[t] != nullptr) walkBand(*workers[t], strips, t);
  });
  return kVxrcOk;
}

void CNLBase::walkBand(Worker& worker, int strips, int band) {
  const int width = ssi_[0]->width;
  const int height = ssi_[0]->height;
  const auto pairAt = [&](int x, int y) {
    const int right = width - blockWidth;
    const int low = height - blockHeight;
    return BlockPair{std::min(x, right), {std::min(y, low), std::min(y + stepY, low)}};
  };
  for (int s = 0; s < strips; ++s) {
    const int y = 2 * stepY * (s + band * strips);
    if (y >= height - stepY + 1) break;
    for (int x = 0; x < width - 2 * stepX + 1; x += stepX)
      worker.visitGroup(pairAt(x, y), pairAt(x + stepX, y), tileAt(x, y, width, height));
  }
}

}  // namespace vx
