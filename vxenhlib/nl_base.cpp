#include "vxenhlib/nl_base.h"

#include <algorithm>

#include "frame/parallel.h"
#include "frame/to_int.h"
#include "prim/arith.h"
#include "prim/memory.h"

namespace vx {

/// Scratch of one band; one thread at a time.
struct CNLBase::Worker {
  CNLBase& owner;
  BlockMatcher matcher[kMostGuides];
  GIMG<float> costMap;
  void* context = nullptr;

  explicit Worker(CNLBase& o) : owner(o), costMap(o.searchWidth, o.searchHeight) {}
  ~Worker() {
    if (context != nullptr) owner.deleteContext(context);
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  bool reserve(const Band& band) {
    const SearchShape shape = {owner.blockWidth, owner.blockHeight, owner.searchWidth,
                               owner.searchHeight};
    if (costMap.data == nullptr) return false;
    for (int p = 0; p < owner.guideCount; ++p)
      if (!matcher[p].reserve(shape)) return false;
    context = owner.createContext(band);
    return context != nullptr;
  }
};

CNLBase::CNLBase(int blockSize, int searchSize)
    : blockWidth(blockSize),
      blockHeight(blockSize),
      stepX(toInt(static_cast<float>(blockSize) / 3.0f + 0.5f)),
      stepY(stepX),
      searchWidth(searchSize),
      searchHeight(searchSize),
      plan_(searchSize, searchSize) {}

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
    if (!workers[t]->reserve({t, tileAt(0, firstY, width, height).y, last.y + last.height}))
      return kVxrcNoMemory;
  }
  parallelFor(0, kBands, [&](int t) {
    if (workers[t] != nullptr) walkBand(*workers[t], planes, strips, t);
  });
  return kVxrcOk;
}

void CNLBase::walkBand(Worker& worker, GIMG<float>* const* planes, int strips, int band) {
  const int width = planes[0]->roiWidth;
  const int height = planes[0]->roiHeight;
  PlaneView guides[kMostGuides], integrals[kMostGuides];
  for (int p = 0; p < guideCount; ++p) {
    guides[p] = PlaneView(*planes[p]);
    integrals[p] = PlaneView(*ssi_[p]);
  }
  for (int s = 0; s < strips; ++s) {
    const int y = 2 * stepY * (s + band * strips);
    if (y >= height - stepY + 1) break;
    for (int x = 0; x < width - 2 * stepX + 1; x += stepX) {
      const Tile tile = tileAt(x, y, width, height);
      for (int p = 0; p < guideCount; ++p)
        worker.matcher[p].setTile(plan_, guides[p], integrals[p], tile);
      for (int block = 0; block < 4; ++block) {
        const int bx = std::min(x + block % 2 * stepX, width - blockWidth);
        const int by = std::min(y + block / 2 * stepY, height - blockHeight);
        worker.costMap.roiWidth = tile.width - blockWidth + 1;
        worker.costMap.roiHeight = tile.height - blockHeight + 1;
        const PlaneView costs(worker.costMap);
        float energy = 0.0f;
        for (int p = 0; p < guideCount; ++p)
          energy +=
              worker.matcher[p].addCosts(plan_, guides[p], integrals[p], bx, by, p == 0, costs);
        TFdoABlock(worker.context, bx, by, tile.x, tile.y, energy, worker.costMap);
      }
    }
  }
}

}  // namespace vx
