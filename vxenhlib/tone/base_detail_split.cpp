#include "vxenhlib/tone/base_detail_split.h"

#include <cstring>

#include "frame/bands.h"
#include "prim/arith.h"
#include "prim/memory.h"

namespace vx {
namespace {

constexpr float kTwoPassRange = 0.05f;
constexpr float kFineRange = 0.25f;  // of the range step, in the second pass

bool setUp(BilateralFilter& filter, const PlaneView& plane, int spatialStep, float rangeStep) {
  return filter.setupGrid(plane.width, plane.height, 0.0f, 1.0f, spatialStep, rangeStep, 0) ==
             kVxrcOk &&
         filter.startSplat();
}

}  // namespace

bool BaseDetailSplit::begin(const PlaneView& plane, const PlaneView& base, float rangeStep,
                            int spatialStep, int bandHeight) {
  if (plane.empty() || base.empty()) return false;
  plane_ = plane;
  base_ = base;
  rows_ = bandRows(bandHeight, plane.width, plane.height);
  twoPasses_ = rangeStep >= kTwoPassRange;
  return setUp(first_, plane, spatialStep, rangeStep) &&
         (!twoPasses_ || setUp(second_, plane, spatialStep, rangeStep * kFineRange));
}

void BaseDetailSplit::collect(int y, int count) {
  const PlaneView rows = plane_.rows(y, count);
  first_.splatRows(y, rows, rows);
}

void BaseDetailSplit::run(const std::function<void(int y, int count, int slot)>& done) {
  first_.endSplat(0.0f);
  if (twoPasses_) {
    // The plane of the base holds the smoothed guide until the base takes its place.
    parallelThenLanes(
        plane_.height, rows_, 1,
        [&](int y, int count, int slot) {
          first_.readRows(y, plane_.rows(y, count), base_.rows(y, count), slot);
        },
        [&](int, int y, int count) {
          second_.splatRows(y, plane_.rows(y, count), base_.rows(y, count));
        });
    second_.endSplat(0.0f);
  }
  BilateralFilter& last = twoPasses_ ? second_ : first_;
  const PlaneView& guide = twoPasses_ ? base_ : plane_;
  parallelBands(plane_.height, rows_, [&](int y, int count, int slot) {
    last.readRows(y, guide.rows(y, count), base_.rows(y, count), slot);
    done(y, count, slot);
  });
}

void splitBaseDetail(const PlaneView& plane, const PlaneView& detail, float rangeStep,
                     int spatialStep, int bandHeight) {
  if (detail.empty() || detail.width != plane.width || detail.height != plane.height) return;
  BaseDetailSplit split;
  AlignedArray<float> row;
  const auto width = static_cast<std::size_t>(plane.width);
  if (!row.reserve(width) || !split.begin(plane, detail, rangeStep, spatialStep, bandHeight)) {
    prim::primSet_32f_C1R(0.0f, detail.data, detail.step, detail.width, detail.height);
    return;
  }
  forEachBand(plane.height, bandRows(bandHeight, plane.width, plane.height),
              [&](int y, int count) { split.collect(y, count); });
  split.run([](int, int, int) {});
  for (int y = 0; y < plane.height; ++y) {
    std::memcpy(row.data(), detail.row(y), width * sizeof(float));
    prim::primSub_32f_C1R(row.data(), plane.step, plane.row(y), plane.step, detail.row(y),
                          detail.step, plane.width, 1);
    std::memcpy(plane.row(y), row.data(), width * sizeof(float));
  }
}

}  // namespace vx
