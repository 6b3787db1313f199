#include <array>

#include "prim/prims.h"
#include "tests/tone/reference.h"
#include "vxenhlib/replicate_border.h"

namespace vx::test {
namespace {

using namespace vx::prim;

void applyCurve(Plane& p, float top, float exponent) {
  std::array<float, 9> levels, values;
  for (int i = 0; i <= 8; ++i) {
    const auto n = static_cast<std::size_t>(i);
    levels[n] = (static_cast<float>(i) * top) / 8.0f;
    values[n] = std::pow(static_cast<float>(i) / 8.0f, exponent) * top;
  }
  primLUT_Cubic_32f_C1IR(p.data, p.step, p.roiWidth, p.roiHeight, values.data(), levels.data(), 9);
}

void gammaCurve(Plane& p, float gamma) {
  applyCurve(p, 1.001f, gamma <= 0.0f ? 1.0f - gamma : (4.5f - gamma) / 4.5f);
}

// Steps 8 to 12 of the lightness.
void reshapeDetail(Plane& d, float exponent) {
  const int w = d.roiWidth, h = d.roiHeight;
  Plane m(w, h);
  primAbs_32f_C1R(d.data, d.step, m.data, m.step, w, h);
  primAddC_32f_C1IR(1e-12f, m.data, m.step, w, h);
  primDiv_32f_C1IR(m.data, m.step, d.data, d.step, w, h);
  float peak = 0.0f;
  primMax_32f_C1R(m.data, m.step, w, h, &peak);
  applyCurve(m, peak, exponent);
  primMul_32f_C1IR(m.data, m.step, d.data, d.step, w, h);
}

void scaleAndAdd(Plane& d, float gain, Plane& plane) {
  primMulC_32f_C1IR(gain, d.data, d.step, d.roiWidth, d.roiHeight);
  primAdd_32f_C1IR(d.data, d.step, plane.data, plane.step, d.roiWidth, d.roiHeight);
}

void turnHue(IMG3<float>& image, float shift) {
  const int w = image.roiWidth, h = image.roiHeight;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      float& hue = image.row(y)[3 * x];
      hue = hue + shift;
      if (shift > 0.0f) {
        if (hue > 1.0f) hue = hue - 1.0f;
      } else {
        if (hue < 0.0f) hue = hue + 1.0f;
      }
    }
  }
}

}  // namespace

void referenceUnsharp(Plane& plane, float amount, float sigma) {
  if (!(std::fabs(amount - 1.0f) > 0.001f) || !(sigma > 0.4f)) return;
  const int w = plane.roiWidth, h = plane.roiHeight;
  float kernel[7], sum = 0.0f;
  for (int i = -3; i <= 3; ++i) {
    kernel[i + 3] = std::exp(-static_cast<float>(i * i) / (sigma * 2.0f * sigma + 1e-14f));
    sum += kernel[i + 3];
  }
  for (float& k : kernel) k /= sum;
  Plane a(w + 6, h + 6), b(w + 6, h + 6);
  a.offset(3, 3);
  b.offset(3, 3);
  primCopy_32f_C1R(plane.data, plane.step, a.data, a.step, w, h);
  replicateBorder_32f(a.base, a.step, w + 6, h + 6, 3, 3, 3, 3);
  primFilterColumn_32f_C1R(a.data, a.step, b.data, b.step, w, h, kernel, 7, 3);
  // Border columns aside, b has no rows yet that the replication would read unset.
  replicateBorder_32f(b.base, b.step, w + 6, h + 6, 3, 3, 3, 3);
  primFilterRow_32f_C1R(b.data, b.step, a.data, a.step, w, h, kernel, 7, 3);
  primSub_32f_C1R(a.data, a.step, plane.data, plane.step, b.data, b.step, w, h);
  primMulC_32f_C1IR(amount, b.data, b.step, w, h);
  primAdd_32f_C1R(a.data, a.step, b.data, b.step, plane.data, plane.step, w, h);
}

void referenceSplit(Plane& plane, Plane& detail, float r, int s) {
  copyImage(plane, detail);
  if (r >= 0.05f) {
    Plane t(plane.roiWidth, plane.roiHeight);
    copyImage(plane, t);
    referenceFilter(t, plane, {0.0f, 1.0f, r}, s);
    referenceFilter(plane, t, {0.0f, 1.0f, r * 0.25f}, s);
  } else {
    Plane guide(plane.roiWidth, plane.roiHeight);
    copyImage(plane, guide);
    referenceFilter(plane, guide, {0.0f, 1.0f, r}, s);
  }
  primSub_32f_C1IR(plane.data, plane.step, detail.data, detail.step, plane.roiWidth,
                   plane.roiHeight);
}

void referenceLightness(Plane& plane, const LightnessTone& tone) {
  if (tone.eqStrength > 0.01f && tone.eqSample > 3)
    referenceEqualize(
        plane, tone.eqSample,
        {tone.eqFloor, 1.0f - tone.eqTopCut, tone.eqPeakGain, 0.4f, tone.eqStrength, tone.eqClip});
  const bool useDetail = tone.detailRange > 0.0001f && (std::fabs(tone.detailGain - 1.0f) > 1e-5f ||
                                                        std::fabs(tone.detailGamma - 1.0f) > 1e-4f);
  const bool useGamma = std::fabs(tone.gamma) > 0.0001f;
  if (!useDetail) {
    if (useGamma) gammaCurve(plane, tone.gamma);
    return;
  }
  Plane d(plane.roiWidth, plane.roiHeight);
  referenceSplit(plane, d, tone.detailRange, tone.detailSample);
  if (useGamma) gammaCurve(plane, tone.gamma);
  reshapeDetail(d, tone.detailGamma);
  scaleAndAdd(d, tone.detailGain, plane);
}

void referenceSaturation(Plane& plane, const SaturationTone& tone) {
  const int w = plane.roiWidth, h = plane.roiHeight;
  if (tone.eqStrength > 0.01f && tone.eqSample > 3)
    referenceEqualize(plane, tone.eqSample, {0.0f, 1.0f, 0.0f, 0.5f, tone.eqStrength, 1.0f});
  if (tone.mode == 0) {
    if (std::fabs(tone.contrast - 1.0f) > 0.0001f)
      primMulC_32f_C1IR(tone.contrast, plane.data, plane.step, w, h);
    if (std::fabs(tone.gamma - 1.0f) > 0.0001f) {
      float peak = 0.0f;
      primMax_32f_C1R(plane.data, plane.step, w, h, &peak);
      applyCurve(plane, std::min(peak, 1.0f), tone.gamma);
    }
    return;
  }
  if (!(std::fabs(tone.contrast - 1.0f) > 1e-5f) && !(std::fabs(tone.brightness) > 1e-5f) &&
      !(std::fabs(tone.detailGain - 1.0f) > 1e-5f) && !(std::fabs(tone.gamma - 1.0f) > 0.0001f))
    return;
  if (tone.mode == 2) {
    primAddC_32f_C1IR(1.0f, plane.data, plane.step, w, h);
    primLn_32f_C1IR(plane.data, plane.step, w, h);
    primMulC_32f_C1IR(1.442695f, plane.data, plane.step, w, h);
  }
  Plane d(w, h);
  const bool useDetail = tone.detailRange > 0.0001f;
  if (useDetail) referenceSplit(plane, d, tone.detailRange, tone.detailSample);
  const float c = tone.contrast, b = tone.brightness, kh = tone.highKnee, kl = tone.lowKnee;
  float levels[5], values[5];
  if (c < 1.0f) {
    const float l[] = {0.0f, kl, 0.5f, 1.0f - kh, 1.0f};
    const float v[] = {0.0f, (kl - 0.5f) * c + 0.5f + b, b + 0.5f, (0.5f - kh) * c + 0.5f + b,
                       1.0f};
    std::copy(l, l + 5, levels);
    std::copy(v, v + 5, values);
  } else {
    const float l[] = {0.0f, ((kl - 0.5f) - b) / c + 0.5f, 0.5f, ((0.5f - kh) - b) / c + 0.5f,
                       1.0f};
    const float v[] = {kl * 0.25f, kl, b + 0.5f, 1.0f - kh, 1.0f - kh * 0.25f};
    std::copy(l, l + 5, levels);
    std::copy(v, v + 5, values);
  }
  primLUT_Linear_32f_C1IR(plane.data, plane.step, w, h, values, levels, 5);
  if (useDetail) {
    if (std::fabs(tone.gamma - 1.0f) > 0.001f) reshapeDetail(d, tone.gamma);
    scaleAndAdd(d, tone.detailGain, plane);
  }
  if (tone.mode == 2) {
    primMulC_32f_C1IR(0.6931472f, plane.data, plane.step, w, h);
    primExp_32f_C1IR(plane.data, plane.step, w, h);
    primSubC_32f_C1IR(1.0f, plane.data, plane.step, w, h);
  }
}

void referenceStage(IMG3<float>& image, const AdjustToneStage& stage) {
  const int w = image.roiWidth, h = image.roiHeight;
  IMG3<float> hls(w, h);
  primRGBToHLS_32f_C3R(image.data, image.step, hls.data, hls.step, w, h);
  copyImage(hls, image);
  Plane plane(w, h);
  primCopy_32f_C3C1R(image.data + 1, image.step, plane.data, plane.step, w, h);
  if (std::fabs(stage.sharpenAmount - 1.0f) > 0.001f && stage.sharpenSigma > 0.5f) {
    referenceUnsharp(plane, stage.sharpenAmount, stage.sharpenSigma);
    primThreshold_LT_32f_C1IR(plane.data, plane.step, w, h, 0.0f);
    primThreshold_GT_32f_C1IR(plane.data, plane.step, w, h, 1.0f);
  }
  referenceLightness(plane, stage.lightness);
  primCopy_32f_C1C3R(plane.data, plane.step, image.data + 1, image.step, w, h);
  primCopy_32f_C3C1R(image.data + 2, image.step, plane.data, plane.step, w, h);
  referenceSaturation(plane, stage.saturation);
  primCopy_32f_C1C3R(plane.data, plane.step, image.data + 2, image.step, w, h);
  if (std::fabs(stage.hueShift) > 1e-7f) turnHue(image, stage.hueShift);
  const float zero[3] = {0.0f, 0.0f, 0.0f}, one[3] = {1.0f, 1.0f, 1.0f};
  primThreshold_LT_32f_C3IR(image.data, image.step, w, h, zero);
  primThreshold_GT_32f_C3IR(image.data, image.step, w, h, one);
  primHLSToRGB_32f_C3R(image.data, image.step, hls.data, hls.step, w, h);
  copyImage(hls, image);
}

}  // namespace vx::test
