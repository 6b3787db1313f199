#include "vxenhlib/tone/base_detail_split.h"

#include "frame/bands.h"
#include "frame/plane_ops.h"

namespace vx {
namespace {

constexpr float kTwoPassRange = 0.05f;
constexpr float kFineRange = 0.25f;  // of the range step, in the second pass

bool setUp(BilateralFilter& filter, const PlaneView& plane, int spatialStep, float rangeStep) {
  return filter.setupGrid(plane.width, plane.height, 0.0f, 1.0f, spatialStep, rangeStep, 0) ==
             kVxrcOk &&
         filter.begin();
}

}  // namespace

bool BaseDetailSplit::begin(const PlaneView& plane, const PlaneView& base, float rangeStep,
                            int spatialStep, int rows) {
  if (plane.empty() || base.empty()) return false;
  plane_ = plane;
  base_ = base;
  rows_ = rows;
  twoPasses_ = rangeStep >= kTwoPassRange;
  return setUp(first_, plane, spatialStep, rangeStep) &&
         (!twoPasses_ || setUp(second_, plane, spatialStep, rangeStep * kFineRange));
}

void BaseDetailSplit::collect(int y, int count) {
  const PlaneView rows = plane_.rows(y, count);
  first_.collect(y, rows, rows);
}

void BaseDetailSplit::process(const std::function<void(int y, int count, int slot)>& done) {
  first_.process(0.0f);
  if (twoPasses_) {
    // The plane of the base holds the smoothed guide until the base takes its place.
    parallelThenLanes(
        plane_.height, rows_, 1,
        [&](int y, int count, int slot) {
          first_.finish(y, plane_.rows(y, count), base_.rows(y, count), slot);
        },
        [&](int, int y, int count) {
          second_.collect(y, plane_.rows(y, count), base_.rows(y, count));
        });
    first_.end();
    second_.process(0.0f);
  }
  BilateralFilter& last = twoPasses_ ? second_ : first_;
  const PlaneView& guide = twoPasses_ ? base_ : plane_;
  parallelBands(plane_.height, rows_, [&](int y, int count, int slot) {
    last.finish(y, guide.rows(y, count), base_.rows(y, count), slot);
    done(y, count, slot);
  });
  last.end();
}

void splitBaseDetail(const PlaneView& plane, const PlaneView& detail, float rangeStep,
                     int spatialStep) {
  if (detail.empty() || detail.width != plane.width || detail.height != plane.height) return;
  BaseDetailSplit split;
  AlignedArray<float> row;
  const auto width = static_cast<std::size_t>(plane.width);
  const int rows = bandRows(0, plane.width, plane.height);
  if (!row.reserve(width) || !split.begin(plane, detail, rangeStep, spatialStep, rows)) {
    prim::primSet_32f_C1R(0.0f, detail.data, detail.step, detail.width, detail.height);
    return;
  }
  forEachBand(plane.height, rows, [&](int y, int count) { split.collect(y, count); });
  split.process([](int, int, int) {});
  const PlaneView base(row.data(), plane.step, plane.width, 1);
  for (int y = 0; y < plane.height; ++y) {
    copy(detail.rows(y, 1), base);
    sub(plane.rows(y, 1), base, detail.rows(y, 1));
    copy(base, plane.rows(y, 1));
  }
}

}  // namespace vx
