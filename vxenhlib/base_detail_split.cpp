#include "vxenhlib/base_detail_split.h"

#include <algorithm>
#include <cstring>

#include "prim/arith.h"
#include "prim/memory.h"
#include "vxenhlib/bands.h"

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

bool BaseDetailSplit::begin(const PlaneView& plane, const PlaneView& detail, float rangeStep,
                            int spatialStep, int bandHeight) {
  if (plane.empty() || detail.empty()) return false;
  plane_ = plane;
  detail_ = detail;
  rows_ = bandRows(bandHeight, plane.width, plane.height);
  twoPasses_ = rangeStep >= kTwoPassRange;
  return setUp(first_, plane, spatialStep, rangeStep) &&
         (!twoPasses_ || setUp(second_, plane, spatialStep, rangeStep * kFineRange)) &&
         base_.reserve(static_cast<std::size_t>(plane.width));
}

void BaseDetailSplit::collect(int y, int count) {
  const PlaneView rows = plane_.rows(y, count);
  first_.splatRows(y, rows, rows);
}

void BaseDetailSplit::run(const std::function<void(int y, int count, int slot)>& done) {
  first_.endSplat(0.0f);
  if (twoPasses_) {
    // The detail plane holds the smoothed guide until the detail takes its place.
    parallelThenOrdered(
        plane_.height, rows_,
        [&](int y, int count, int slot) {
          for (int i = y; i < y + count; ++i)
            first_.readRow(i, plane_.row(i), detail_.row(i), slot);
        },
        [&](int y, int count) {
          second_.splatRows(y, plane_.rows(y, count), detail_.rows(y, count));
        });
    second_.endSplat(0.0f);
  }
  BilateralFilter& last = twoPasses_ ? second_ : first_;
  const PlaneView& guide = twoPasses_ ? detail_ : plane_;
  const std::size_t rowBytes = static_cast<std::size_t>(plane_.width) * sizeof(float);
  parallelBands(plane_.height, rows_, [&](int y, int count, int slot) {
    float* base = base_.at(slot);
    for (int i = y; i < y + count; ++i) {
      last.readRow(i, guide.row(i), base, slot);
      prim::primSub_32f_C1R(base, plane_.step, plane_.row(i), plane_.step, detail_.row(i),
                            detail_.step, plane_.width, 1);
      std::memcpy(plane_.row(i), base, rowBytes);
    }
    done(y, count, slot);
  });
}

void splitBaseDetail(const PlaneView& plane, const PlaneView& detail, float rangeStep,
                     int spatialStep, int bandHeight) {
  if (detail.empty() || detail.width != plane.width || detail.height != plane.height) return;
  BaseDetailSplit split;
  if (!split.begin(plane, detail, rangeStep, spatialStep, bandHeight)) {
    prim::primSet_32f_C1R(0.0f, detail.data, detail.step, detail.width, detail.height);
    return;
  }
  forEachBand(plane.height, bandRows(bandHeight, plane.width, plane.height),
              [&](int y, int count) { split.collect(y, count); });
  split.run([](int, int, int) {});
}

}  // namespace vx
