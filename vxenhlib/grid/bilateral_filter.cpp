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
  const SetUp setUp = fixGeometry(width, height, newRangeMin, newRangeMax, newSpatialSample,
                                  newRangeSample, newTemporal, kDeepest);
  if (setUp == SetUp::kRefused) return kVxrcBadSetup;
  if (setUp == SetUp::kRenewed && !allocate()) {
    releaseGrid();
    return kVxrcNoMemory;
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
  releaseArrays();
  const std::size_t cells = shape().cells();
  return gridWidth > 0 && valueGrid_.reserve(cells + kSpareCells) && blur_.reserve(shape()) &&
         reserveHistory() && rowSums_.reserve(shape().planeCells() + kSpareCells) &&
         bins_.reserve(static_cast<std::size_t>(std::max(imageWidth, 1)));
}

void BilateralFilter::releaseArrays() {
  valueGrid_.release();
  blur_.release();
  rowSums_.release();
  bins_.release();
}

void BilateralFilter::releaseGrid() {
  releaseShared();
  releaseArrays();
}

int BilateralFilter::filter(GIMG<float>& data, GIMG<float>& guide, float temporalBlend, int rows) {
  const PlaneView values(data);
  const PlaneView keys(guide);
  if (gridWidth == 0 || values.width != keys.width || values.height != keys.height ||
      values.width != imageWidth || values.height != imageHeight)
    return kVxrcSizeMismatch;
  if (values.empty() || keys.empty()) return kVxrcOk;
  if (!begin()) return kVxrcNoMemory;
  const int bandHeight = bandRows(rows, imageWidth, imageHeight);
  forEachBand(imageHeight, bandHeight,
              [&](int y, int count) { collect(y, values.rows(y, count), keys.rows(y, count)); });
  process(temporalBlend);
  parallelBands(imageHeight, bandHeight, [&](int y, int count, int slot) {
    finish(y, keys.rows(y, count), values.rows(y, count), slot);
  });
  end();
  return kVxrcOk;
}

bool BilateralFilter::begin() {
  if (!beginRound()) return false;
  std::fill(rowSums_.data(), rowSums_.data() + shape().planeCells() + kSpareCells,
            Sums{0.0f, kEmptyWeight});
  blur_.begin();
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

void BilateralFilter::collect(int y, const PlaneView& values, const PlaneView& guide) {
  order_.collect();
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

void BilateralFilter::process(float temporalBlend) {
  order_.process();
  flushGridRow();
  // The two grid rows after the last hold only what bins reached beyond it.
  while (gridRow_ < gridHeight) flushGridRow();
  const std::size_t cells = shape().cells();
  for (std::size_t i = 0; i < kSpareCells; ++i) valueGrid_[cells + i] = rowSums_[i].value;
  beginRead(valueGrid_.data(), temporalBlend, kReadOffset, true);
}

}  // namespace vx
