#include "vxenhlib/tone/saturation_pass.h"

#include <algorithm>
#include <cmath>

#include "frame/bands.h"
#include "frame/plane_ops.h"
#include "prim/lut.h"
#include "vxenhlib/tone/detail_layer.h"

namespace vx {
namespace {

constexpr float kEqRangeStep = 0.01f;

bool differs(float value, float neutral, float threshold) {
  return std::fabs(value - neutral) > threshold;
}

bool reshapes(const SaturationTone& tone) {
  return differs(tone.contrast, 1.0f, 1e-5f) || differs(tone.brightness, 0.0f, 1e-5f) ||
         differs(tone.detailGain, 1.0f, 1e-5f) || differs(tone.gamma, 1.0f, 0.0001f);
}

void toLog2(const PlaneView& p) {
  prim::primAddC_32f_C1IR(1.0f, p.data, p.step, p.width, p.height);
  prim::primLn_32f_C1IR(p.data, p.step, p.width, p.height);
  scale(1.442695f, p);
}

void fromLog2(const PlaneView& p) {
  scale(0.6931472f, p);
  prim::primExp_32f_C1IR(p.data, p.step, p.width, p.height);
  prim::primSubC_32f_C1IR(1.0f, p.data, p.step, p.width, p.height);
}

// Modes 1 and 2.
void reshape(SaturationTone& tone, const PlaneView& plane, int rows) {
  if (!reshapes(tone)) return;
  const bool logarithmic = tone.mode == 2;
  if (logarithmic)
    forEachBand(plane.height, rows, [&](int y, int count) { toLog2(plane.rows(y, count)); });
  DetailLayer detail;
  const bool useDetail =
      tone.detailRange > 0.0001f && detail.begin(plane, tone.detailRange, tone.detailSample, rows);
  if (useDetail) {
    forEachBand(plane.height, rows, [&](int y, int count) { detail.collect(y, count); });
    // A gamma nearer to 1 than this shapes nothing, although it may be what brought us here.
    if (differs(tone.gamma, 1.0f, 0.001f)) {
      detail.process(tone.gamma);
    } else {
      detail.process();
    }
  }
  tone.buildCurve();
  forEachBand(plane.height, rows, [&](int y, int count) {
    const auto applyCurve = [&tone](const PlaneView& layer) {
      prim::primLUT_Linear_32f_C1IR(layer.data, layer.step, layer.width, layer.height,
                                    tone.curveValues.data(), tone.curveLevels.data(),
                                    tone.curvePoints);
    };
    const PlaneView band = plane.rows(y, count);
    if (useDetail)
      detail.finish(y, count, 0, tone.detailGain, applyCurve);
    else
      applyCurve(band);
    if (logarithmic) fromLog2(band);
  });
  if (useDetail) detail.end();
}

}  // namespace

void SaturationPass::begin(SaturationTone& tone, const PlaneView& plane, int rows) {
  order_.begin();
  tone_ = &tone;
  plane_ = plane;
  useEq_ = useGamma_ = false;
  peak_ = {};
  if (plane.empty()) return;
  rows_ = rows;
  useGamma_ = tone.mode == 0 && differs(tone.gamma, 1.0f, 0.0001f);
  if (tone.eqStrength > 0.01f && tone.eqSample > 3) {
    // The whole range, nothing emphasised, nothing clipped.
    useEq_ = eq_.setupGrid(plane.width, plane.height, 0.0f, 1.0f, tone.eqSample, kEqRangeStep, 0.0f,
                           1.0f, 0.0f, 0.5f, 0) == kVxrcOk &&
             eq_.begin() && peaks_.reserve(1);
  }
}

// Mode 0 up to the gamma, whose curve depends on the peak of the plane.
void SaturationPass::gain(const PlaneView& rows, Peak& peak) const {
  if (tone_->mode != 0) return;
  if (differs(tone_->contrast, 1.0f, 0.0001f)) scale(tone_->contrast, rows);
  if (useGamma_) peak.add(rows);
}

void SaturationPass::collect(int y, int count) {
  order_.collect();
  if (useEq_) {
    eq_.collect(y, plane_.rows(y, count));
  } else {
    gain(plane_.rows(y, count), peak_);
  }
}

void SaturationPass::process() {
  order_.process();
  if (useEq_) {
    eq_.process(tone_->eqStrength, tone_->eqBlend, 1.0f);
    for (int slot = 0; slot < bandSlots(); ++slot) *peaks_.at(slot) = Peak();
    parallelBands(plane_.height, rows_, [&](int y, int count, int slot) {
      eq_.finish(y, plane_.rows(y, count), plane_.rows(y, count), slot);
      gain(plane_.rows(y, count), *peaks_.at(slot));
    });
    eq_.end();
    for (int slot = 0; slot < bandSlots(); ++slot) peak_.add(*peaks_.at(slot));
  }
  if (useGamma_) {
    gammaCurve_ = PowerCurve(std::min(peak_.value(), 1.0f), tone_->gamma);
  }
  if (tone_->mode == 1 || tone_->mode == 2) reshape(*tone_, plane_, rows_);
}

void SaturationPass::finish(int y, int count) {
  order_.finish();
  if (useGamma_) gammaCurve_.apply(plane_.rows(y, count));
}

}  // namespace vx
