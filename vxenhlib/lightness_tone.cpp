#include "vxenhlib/lightness_tone.h"

#include <cmath>

#include "vxenhlib/bands.h"
#include "vxenhlib/lightness_pass.h"

namespace vx {
namespace {

constexpr float kEqRangeStep = 0.01f;
constexpr float kEqPeakPosition = 0.4f;

// The value 1.0 shall lie inside the last segment of the gamma curve.
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

int LightnessTone::apply(GIMG<float>& image) const {
  const PlaneView plane(image);
  if (plane.empty()) return 0;
  const int rows = bandRows(bandHeight, plane.width, plane.height);
  LightnessPass pass;
  pass.begin(*this, plane);
  forEachBand(plane.height, rows, [&](int y, int count) { pass.collect(y, count); });
  pass.process();
  forEachBand(plane.height, rows, [&](int y, int count) { pass.finish(y, count, 0); });
  return 0;
}

void LightnessTone::splitBaseDetail(GIMG<float>& plane, GIMG<float>& detail) const {
  vx::splitBaseDetail(PlaneView(plane), PlaneView(detail), detailRange, detailSample, bandHeight);
}

void LightnessPass::begin(const LightnessTone& tone, const PlaneView& plane) {
  tone_ = tone;
  plane_ = plane;
  useGamma_ = useEq_ = useDetail_ = false;
  if (plane.empty()) return;
  rows_ = bandRows(tone.bandHeight, plane.width, plane.height);
  useGamma_ = std::fabs(tone.gamma) > 0.0001f;
  if (useGamma_) gammaCurve_ = PowerCurve(kGammaTop, gammaExponent(tone.gamma));
  if (tone.eqStrength > 0.01f && tone.eqSample > 3) {
    useEq_ = eq_.setupGrid(plane.width, plane.height, 0.0f, 1.0f, tone.eqSample, kEqRangeStep,
                           tone.eqFloor, 1.0f - tone.eqTopCut, tone.eqPeakGain, kEqPeakPosition,
                           0) == kVxrcOk &&
             eq_.startCount();
  }
  if (wantsDetail(tone)) startSplit();
}

void LightnessPass::startSplit() {
  const std::size_t width = static_cast<std::size_t>(plane_.width);
  if (plane_.width > INT_MAX / 4 ||
      !baseMemory_.reserve(width * static_cast<std::size_t>(plane_.height)))
    return;
  base_ = {baseMemory_.data(), plane_.width * 4, plane_.width, plane_.height};
  useDetail_ =
      split_.begin(plane_, base_, tone_.detailRange, tone_.detailSample, tone_.bandHeight) &&
      detailCurve_.reserve(plane_.width, rows_) && magnitudes_.reserve(width);
}

void LightnessPass::collect(int y, int count) {
  if (useEq_) {
    eq_.countRows(y, plane_.rows(y, count));
  } else if (useDetail_) {
    split_.collect(y, count);
  }
}

void LightnessPass::process() {
  if (useEq_) {
    eq_.endCount(tone_.eqStrength, 0.0f, tone_.eqClip);
    parallelThenOrdered(
        plane_.height, rows_,
        [&](int y, int count, int slot) {
          eq_.readRows(y, plane_.rows(y, count), plane_.rows(y, count), slot);
        },
        [&](int y, int count) {
          if (useDetail_) split_.collect(y, count);
        });
    eq_.endRead();
  }
  if (!useDetail_) return;
  std::vector<Peak> peaks(static_cast<std::size_t>(bandSlots()));
  split_.run([&](int y, int count, int slot) {
    addMagnitudes(plane_.rows(y, count), base_.rows(y, count), magnitudes_.at(slot),
                  peaks[static_cast<std::size_t>(slot)]);
  });
  Peak peak;
  for (const Peak& part : peaks) peak.add(part);
  detailCurve_.setCurve(peak, tone_.detailGamma);
}

void LightnessPass::finish(int y, int count, int slot) {
  const PlaneView plane = plane_.rows(y, count);
  if (!useDetail_) {
    if (useGamma_) gammaCurve_.apply(plane);
    return;
  }
  const PlaneView base = base_.rows(y, count);
  detailCurve_.part(plane, base, slot);
  if (useGamma_) gammaCurve_.apply(base);
  detailCurve_.join(tone_.detailGain, base, plane, slot);
}

}  // namespace vx
