#include "vxenhlib/grid/bilateral_local_hist_eq.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include "vxenhlib/grid/grid_blur.h"
#include "vxenhlib/grid/grid_curves.h"
#include "vxenhlib/grid/grid_splat.h"

namespace vx {
namespace {

// What every bin holds before the first pixel: no histogram is empty.
constexpr float kEmptyBin = 0.25f;

// A value in bin b is counted at b + 2 and read between b + 1 and b + 2: the curve at a bin counts
// the whole of it.
constexpr float kCountOffset = static_cast<float>(kRangePad) + 1.0f;
constexpr float kReadOffset = static_cast<float>(kRangePad);

// What a float that starts at kEmptyBin and is incremented `count` times holds: the quarter is lost
// to rounding from 2^22 on, and the sum stands still at 2^24.
float binAfter(std::uint32_t count) {
  constexpr std::uint32_t kStandstill = 1u << 24;
  return kEmptyBin + static_cast<float>(static_cast<std::int32_t>(std::min(count, kStandstill)));
}

}  // namespace

int BilateralLocalHistEq::setupGrid(int width, int height, float newRangeMin, float newRangeMax,
                                    int newSpatialSample, float newRangeSample, float newOutLow,
                                    float newOutScale, float newPeakGain, float newPeakPosition,
                                    int newTemporal) {
  // Bins are bytes here too, but the mean, the emphasis and the sums of a histogram run over all of
  // its bins, however many: the depth is not cut.
  const SetUp setUp = fixGeometry(width, height, newRangeMin, newRangeMax, newSpatialSample,
                                  newRangeSample, newTemporal, INT_MAX);
  if (setUp == SetUp::kRefused) return kVxrcBadSetup;
  outLow = newOutLow;
  outScale = newOutScale;
  peakGain = newPeakGain;
  peakPosition = newPeakPosition;
  if (setUp == SetUp::kRenewed && !allocate()) {
    releaseGrid();
    return kVxrcNoMemory;
  }
  countAxis_ = gridAxis(rangeMin, rangeMax, rangeSample, kCountOffset, false);
  countAxis_.topCell = static_cast<std::uint8_t>((gridDepth - 1) % 256);
  return kVxrcOk;
}

bool BilateralLocalHistEq::allocate() {
  releaseArrays();
  const std::size_t cells = shape().cells();
  return gridWidth > 0 && histGrid_.reserve(cells + kSpareCells) && scratchGrid_.reserve(cells) &&
         reserveHistory() && rowCounts_.reserve(shape().planeCells()) &&
         bins_.reserve(static_cast<std::size_t>(std::max(imageWidth, 1))) &&
         emphasis_.reserve(static_cast<std::size_t>(gridDepth));
}

void BilateralLocalHistEq::releaseArrays() {
  histGrid_.release();
  scratchGrid_.release();
  rowCounts_.release();
  bins_.release();
  emphasis_.release();
}

void BilateralLocalHistEq::releaseGrid() {
  releaseShared();
  releaseArrays();
}

int BilateralLocalHistEq::equalize(GIMG<float>& image, float strength, float temporalBlend,
                                   float newClipScale, int rows) {
  const PlaneView plane(image);
  if (gridWidth == 0 || plane.width != imageWidth || plane.height != imageHeight)
    return kVxrcSizeMismatch;
  if (plane.empty()) return kVxrcOk;
  if (!begin()) return kVxrcNoMemory;
  const int bandHeight = bandRows(rows, imageWidth, imageHeight);
  forEachBand(imageHeight, bandHeight, [&](int y, int count) { collect(y, plane.rows(y, count)); });
  process(strength, temporalBlend, newClipScale);
  parallelBands(imageHeight, bandHeight, [&](int y, int count, int slot) {
    finish(y, plane.rows(y, count), plane.rows(y, count), slot);
  });
  end();
  return kVxrcOk;
}

bool BilateralLocalHistEq::begin() {
  if (!beginRound()) return false;
  const std::size_t plane = shape().planeCells();
  gridRow_ = kSpatialPad + 1;
  std::fill(histGrid_.data(), histGrid_.data() + plane * static_cast<std::size_t>(gridRow_),
            kEmptyBin);
  std::fill(rowCounts_.data(), rowCounts_.data() + plane, 0u);
  return true;
}

void BilateralLocalHistEq::flushGridRow() {
  const std::size_t plane = shape().planeCells();
  float* row = histGrid_.data() + plane * static_cast<std::size_t>(gridRow_);
  std::uint32_t* counts = rowCounts_.data();
  for (std::size_t i = 0; i < plane; ++i) row[i] = binAfter(counts[i]);
  std::fill(counts, counts + plane, 0u);
  ++gridRow_;
}

void BilateralLocalHistEq::collect(int y, const PlaneView& image) {
  order_.collect();
  std::uint32_t* firstColumn = rowCounts_.data() + std::ptrdiff_t{kSpatialPad + 1} * gridDepth;
  for (int i = 0; i < image.height; ++i) {
    if (kSpatialPad + 1 + (y + i) / spatialSample != gridRow_) flushGridRow();
    prim::primvGridCells_32f8u(image.row(i), bins_.data(), imageWidth, &countAxis_);
    walkCells(bins_.data(), imageWidth, spatialSample, gridDepth, true,
              [firstColumn](std::ptrdiff_t cell, std::ptrdiff_t) { ++firstColumn[cell]; });
  }
}

void BilateralLocalHistEq::fillEmphasis() {
  const auto depth = static_cast<float>(gridDepth);
  const float centre = peakPosition * depth;
  for (int z = 0; z < gridDepth; ++z) {
    const auto at = static_cast<float>(z);
    const float s = at > centre ? depth * (1.0f - peakPosition) * peakWidth : peakWidth * centre;
    const float t = (at - centre) / (s + 1e-6f);
    const float w = std::exp(-t * t);
    emphasis_[z] = peakGain > 0.0f ? peakGain * w + 1.0f : 1.0f - peakGain * (1.0f - w);
  }
}

void BilateralLocalHistEq::process(float strength, float temporalBlend, float newClipScale) {
  order_.process();
  clipScale = newClipScale;
  const GridShape cells = shape();
  const std::size_t plane = cells.planeCells();
  flushGridRow();
  std::fill(histGrid_.data() + plane * static_cast<std::size_t>(gridRow_),
            histGrid_.data() + cells.cells() + kSpareCells, kEmptyBin);

  const auto gridRow = [&](int y) {
    return histGrid_.data() + plane * static_cast<std::size_t>(y);
  };
  parallelFor(0, gridHeight, [&](int y) {
    clipHistograms(gridRow(y), gridWidth, gridDepth, {clipScale, clipFactor});
    if (strength < 0.99f)
      flattenHistograms(gridRow(y), gridWidth, gridDepth, strength, gridDepth - 2 * kRangePad - 2);
  });
  blurGrid(histGrid_.data(), scratchGrid_.data(), cells);
  fillEmphasis();
  const CurveScale scale = {emphasis_.data(), kRangePad, outLow, outScale};
  parallelFor(kSpatialPad, gridHeight - kSpatialPad, [&](int y) {
    integrateHistograms(gridRow(y) + std::ptrdiff_t{kSpatialPad} * gridDepth,
                        gridWidth - 2 * kSpatialPad, gridDepth, scale);
  });
  beginRead(histGrid_.data(), temporalBlend, kReadOffset, false);
}

}  // namespace vx
