#include "vxenhlib/tone/lightness_pass.h"

#include <cmath>

#include "frame/bands.h"

namespace vx {
namespace {

constexpr float kEqRangeStep = 0.01f;
constexpr float kEqPeakPosition = 0.4f;

// Keeps the value 1.0 inside the last segment of the gamma curve.
constexpr float kGammaTop = 1.001f;

// A negative control raises the exponent above 1 and darkens, a positive one lightens; 4.5 gives 0.
float gammaExponent(float control) {
  return control <= 0.0f ? 1.0f - control : (4.5f - control) / 4.5f;
}

bool wantsDetail(const LightnessTone& tone) {
  return tone.detailRange > 0.0001f &&
         (std::fabs(tone.detailGain - 1.0f) > 1e-5f || std::fabs(tone.detailGamma - 1.0f) > 1e-4f);
}

}  // namespace

// The definition takes the plane as a whole, in fourteen steps. Here they stand at the place where
// their rows are in the cache:
//
//    1      equalisation             begin, collect, process (BilateralLocalHistEq)
//    2, 3   what is to run           begin
//    4, 5   gamma without detail     finish
//    6      base and detail          collect, process (BaseDetailSplit); the detail itself in
//    finish 7      gamma on the base        finish, between the detail's part and its return 8, 9
//    magnitude and sign       finish (primvDetailPart_32f)
//   10      strongest detail         process: Peak, while the base is made
//   11      curve of the detail      made in process, applied in finish
//   12-14   sign, gain, sum          finish (primvDetailJoin_32f)
void LightnessPass::begin(const LightnessTone& tone, const PlaneView& plane, int rows) {
  order_.begin();
  tone_ = tone;
  plane_ = plane;
  useGamma_ = useEq_ = useDetail_ = false;
  if (plane.empty()) return;
  rows_ = rows;
  useGamma_ = std::fabs(tone.gamma) > 0.0001f;
  if (useGamma_) gammaCurve_ = PowerCurve(kGammaTop, gammaExponent(tone.gamma));
  if (tone.eqStrength > 0.01f && tone.eqSample > 3) {
    useEq_ = eq_.setupGrid(plane.width, plane.height, 0.0f, 1.0f, tone.eqSample, kEqRangeStep,
                           tone.eqFloor, 1.0f - tone.eqTopCut, tone.eqPeakGain, kEqPeakPosition,
                           0) == kVxrcOk &&
             eq_.begin();
  }
  useDetail_ = wantsDetail(tone) && detail_.begin(plane, tone.detailRange, tone.detailSample, rows);
}

void LightnessPass::collect(int y, int count) {
  order_.collect();
  if (useEq_) {
    eq_.collect(y, plane_.rows(y, count));
  } else if (useDetail_) {
    detail_.collect(y, count);
  }
}

void LightnessPass::process() {
  order_.process();
  if (useEq_) {
    eq_.process(tone_.eqStrength, 0.0f, tone_.eqClip);
    parallelThenLanes(
        plane_.height, rows_, 1,
        [&](int y, int count, int slot) {
          eq_.finish(y, plane_.rows(y, count), plane_.rows(y, count), slot);
        },
        [&](int, int y, int count) {
          if (useDetail_) detail_.collect(y, count);
        });
    eq_.end();
  }
  if (useDetail_) detail_.process(tone_.detailGamma);
}

void LightnessPass::finish(int y, int count, int slot) {
  order_.finish();
  const auto applyGamma = [this](const PlaneView& rows) {
    if (useGamma_) gammaCurve_.apply(rows);
  };
  if (useDetail_)
    detail_.finish(y, count, slot, tone_.detailGain, applyGamma);
  else
    applyGamma(plane_.rows(y, count));
}

void LightnessPass::end() {
  order_.end();
  if (useDetail_) detail_.end();
}

}  // namespace vx
