#include "vxenhlib/grid/bilateral_filter.h"

#include <algorithm>
#include <cstring>

#include "vxenhlib/grid/grid_splat.h"

namespace vx {
namespace {

// Keeps the division finite in cells that no sample reaches; they read as 0. Lost in the first
// sample's weight of 1.
constexpr float kEmptyWeight = 1e-11f;

// The sample's cell is centred on coordinate z + 0.5 in the read and begins at z + 1 in the splat,
// so a value in the middle of its bin reads its own cell alone.
constexpr float kSplatOffset = static_cast<float>(kRangePad) + 1.0f;
constexpr float kReadOffset = static_cast<float>(kRangePad) + 0.5f;

// Value and weight of a cell, added in one go.
using Pair [[gnu::vector_size(8), gnu::may_alias]] = float;

}  // namespace

int BilateralFilter::setupGrid(int width, int height, float newRangeMin, float newRangeMax,
                               int newSpatialSample, float newRangeSample, int newTemporal) {
  if (newSpatialSample < 2) return kVxrcBadSetup;
  const bool resized = width != imageWidth || height != imageHeight;
  imageWidth = width;
  imageHeight = height;
  rangeMin = newRangeMin;
  rangeMax = newRangeMax;
  spatialSample = newSpatialSample;
  rangeSample = newRangeSample;
  firstFrame = 1;
  const GridShape wanted =
      gridShape(width, height, rangeMin, rangeMax, spatialSample, rangeSample, kDeepest);
  if (wanted != shape() || newTemporal != temporal || resized || gridWidth == 0) {
    releaseGrid();
    temporal = newTemporal;
    gridWidth = wanted.width;
    gridHeight = wanted.height;
    gridDepth = wanted.depth;
    if (gridWidth == 0 || !allocate()) {
      releaseGrid();
      return kVxrcNoMemory;
    }
  }
  splatAxis_ = gridAxis(rangeMin, rangeMax, rangeSample, kSplatOffset, true);
  // The coordinate is monotone, so the ends of the range tell whether any bin leaves its column.
  const float ends[2] = {rangeMin, rangeMax};
  std::uint8_t endBins[2] = {};
  prim::primvGridCells_32f8u(ends, endBins, 2, &splatAxis_);
  columnsApart_ = std::max(endBins[0], endBins[1]) < gridDepth;
  return kVxrcOk;
}

bool BilateralFilter::allocate() {
  const std::size_t cells = shape().cells();
  return valueGrid_.reserve(cells + kSpareCells) && blur_.reserve(shape()) &&
         (temporal == 0 || history_.reserve(shape())) &&
         rowSums_.reserve(shape().planeCells() + kSpareCells) &&
         bins_.reserve(static_cast<std::size_t>(std::max(imageWidth, 1)));
}

void BilateralFilter::releaseGrid() {
  gridWidth = gridHeight = gridDepth = 0;
  valueGrid_.release();
  blur_.release();
  history_.release();
  rowSums_.release();
  bins_.release();
  reader_ = GridReader();
}

int BilateralFilter::filter(GIMG<float>& data, GIMG<float>& guide, float temporalBlend) {
  const PlaneView values(data);
  const PlaneView keys(guide);
  if (gridWidth == 0 || values.width != keys.width || values.height != keys.height ||
      values.width != imageWidth || values.height != imageHeight)
    return kVxrcSizeMismatch;
  if (values.empty() || keys.empty()) return kVxrcOk;
  if (!startSplat()) return kVxrcNoMemory;
  const int rows = bandRows(bandHeight, imageWidth, imageHeight);
  forEachBand(imageHeight, rows,
              [&](int y, int count) { splatRows(y, values.rows(y, count), keys.rows(y, count)); });
  endSplat(temporalBlend);
  parallelBands(imageHeight, rows, [&](int y, int count, int slot) {
    readRows(y, keys.rows(y, count), values.rows(y, count), slot);
  });
  endRead();
  return kVxrcOk;
}

bool BilateralFilter::startSplat() {
  if (gridWidth == 0 || !reader_.reserve(imageWidth, shape())) return false;
  std::fill(rowSums_.data(), rowSums_.data() + shape().planeCells() + kSpareCells,
            Sums{0.0f, kEmptyWeight});
  blur_.start();
  gridRow_ = 0;
  while (gridRow_ < kSpatialPad + 1) flushGridRow();
  return true;
}

// Hands the finished grid row over. What bins reached beyond it stays, as the beginning of the next
// one.
void BilateralFilter::flushGridRow() {
  const std::size_t plane = shape().planeCells();
  const Sums* sums = rowSums_.data();
  float* values = blur_.values();
  float* weights = blur_.weights();
  for (std::size_t i = 0; i < plane; ++i) {
    values[i] = sums[i].value;
    weights[i] = sums[i].weight;
  }
  blur_.push(valueGrid_.data());
  std::memmove(rowSums_.data(), sums + plane, kSpareCells * sizeof(Sums));
  std::fill(rowSums_.data() + kSpareCells, rowSums_.data() + plane + kSpareCells,
            Sums{0.0f, kEmptyWeight});
  ++gridRow_;
}

void BilateralFilter::splatRows(int y, const PlaneView& values, const PlaneView& guide) {
  Sums* firstColumn = rowSums_.data() + std::ptrdiff_t{kSpatialPad + 1} * gridDepth;
  for (int i = 0; i < values.height; ++i) {
    if (kSpatialPad + 1 + (y + i) / spatialSample != gridRow_) flushGridRow();
    prim::primvGridCells_32f8u(guide.row(i), bins_.data(), imageWidth, &splatAxis_);
    const float* value = values.row(i);
    walkCells(bins_.data(), imageWidth, spatialSample, gridDepth, columnsApart_,
              [firstColumn, value](std::ptrdiff_t cell, std::ptrdiff_t x) {
                Pair* sums = reinterpret_cast<Pair*>(firstColumn + cell);
                *sums += Pair{value[x], 1.0f};
              });
  }
}

void BilateralFilter::endSplat(float temporalBlend) {
  const GridShape cells = shape();
  flushGridRow();
  // The two grid rows after the last hold only what bins reached beyond it.
  while (gridRow_ < gridHeight) flushGridRow();
  for (std::size_t i = 0; i < kSpareCells; ++i) valueGrid_[cells.cells() + i] = rowSums_[i].value;

  if (temporal != 0) history_.blend(valueGrid_.data(), cells, temporalBlend, firstFrame != 0);
  reader_.begin(valueGrid_.data(), cells, spatialSample, imageWidth,
                gridAxis(rangeMin, rangeMax, rangeSample, kReadOffset, true));
}

}  // namespace vx
