#include "vxenhlib/grid/bilateral_grid.h"

namespace vx {

BilateralGrid::SetUp BilateralGrid::fixGeometry(int width, int height, float newRangeMin,
                                                float newRangeMax, int newSpatialSample,
                                                float newRangeSample, int newTemporal,
                                                int deepest) {
  if (newSpatialSample < 2) return SetUp::kRefused;
  const bool resized = width != imageWidth || height != imageHeight;
  imageWidth = width;
  imageHeight = height;
  rangeMin = newRangeMin;
  rangeMax = newRangeMax;
  spatialSample = newSpatialSample;
  rangeSample = newRangeSample;
  firstFrame = 1;
  const GridShape wanted =
      gridShape(width, height, rangeMin, rangeMax, spatialSample, rangeSample, deepest);
  if (wanted == shape() && newTemporal == temporal && !resized && gridWidth != 0)
    return SetUp::kKept;
  releaseShared();
  temporal = newTemporal;
  gridWidth = wanted.width;
  gridHeight = wanted.height;
  gridDepth = wanted.depth;
  return SetUp::kRenewed;
}

void BilateralGrid::releaseShared() {
  gridWidth = gridHeight = gridDepth = 0;
  history_.release();
  reader_ = GridReader();
}

bool BilateralGrid::beginRound() {
  if (gridWidth == 0 || !reader_.reserve(imageWidth, shape())) return false;
  order_.begin();
  return true;
}

void BilateralGrid::beginRead(float* grid, float temporalBlend, float offset, bool clip) {
  if (temporal != 0) history_.blend(grid, shape(), temporalBlend, firstFrame != 0);
  reader_.begin(grid, shape(), spatialSample, imageWidth,
                gridAxis(rangeMin, rangeMax, rangeSample, offset, clip));
}

}  // namespace vx
