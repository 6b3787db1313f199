#include "prim/prims.h"
#include "tests/grid/reference.h"
#include "tests/tone/reference.h"

namespace vx::test {
namespace {

using namespace vx::prim;

/// Every value v at (x, y) becomes f(v, x, y).
template <class Change>
void each(Plane& p, const Change& f) {
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x) at(p, x, y) = f(at(p, x, y), x, y);
}
void multiply(Plane& p, float factor) {
  each(p, [&](float v, int, int) { return v * factor; });
}
void add(Plane& p, const Plane& q) {
  each(p, [&](float v, int x, int y) { return v + at(q, x, y); });
}
void subtract(Plane& p, const Plane& q) {
  each(p, [&](float v, int x, int y) { return v - at(q, x, y); });
}
float clip(float v) { return v < 0.0f ? 0.0f : v > 1.0f ? 1.0f : v; }
bool differs(float a, float b, float threshold) { return std::fabs(a - b) > threshold; }

float peakOf(Plane& p) {
  float peak = at(p, 0, 0);
  each(p, [&](float v, int, int) { return peak = std::max(peak, v), v; });
  return peak;
}

void applyCurve(Plane& p, float top, float exponent) {
  std::array<float, 9> levels, values;
  for (int i = 0; i <= 8; ++i) {
    const auto n = static_cast<std::size_t>(i);
    levels[n] = (static_cast<float>(i) * top) / 8.0f;
    values[n] = std::pow(static_cast<float>(i) / 8.0f, exponent) * top;
  }
  primLUT_Cubic_32f_C1IR(p.data, p.step, p.width, p.height, values.data(), levels.data(), 9);
}

void reshapeDetail(Plane& d, float exponent) {
  Plane m(d.width, d.height);
  each(m, [&](float, int x, int y) { return std::fabs(at(d, x, y)) + 1e-12f; });
  each(d, [&](float v, int x, int y) { return v / at(m, x, y); });
  applyCurve(m, peakOf(m), exponent);
  each(d, [&](float v, int x, int y) { return v * at(m, x, y); });
}

void lightness(Plane& plane, const LightnessTone& tone) {
  if (tone.eqStrength > 0.01f && tone.eqSample > 3)
    referenceEqualize(
        plane, tone.eqSample,
        {tone.eqFloor, 1.0f - tone.eqTopCut, tone.eqPeakGain, 0.4f, tone.eqStrength, tone.eqClip});
  const bool useDetail = tone.detailRange > 0.0001f && (differs(tone.detailGain, 1.0f, 1e-5f) ||
                                                        differs(tone.detailGamma, 1.0f, 1e-4f));
  Plane d(plane.width, plane.height);
  if (useDetail) referenceSplit(plane, d, tone.detailRange, tone.detailSample);
  const float gamma = tone.gamma;
  if (std::fabs(gamma) > 0.0001f)
    applyCurve(plane, 1.001f, gamma <= 0.0f ? 1.0f - gamma : (4.5f - gamma) / 4.5f);
  if (!useDetail) return;
  reshapeDetail(d, tone.detailGamma);
  multiply(d, tone.detailGain);
  add(plane, d);
}

void saturationCurve(Plane& plane, const SaturationTone& tone) {
  const float c = tone.contrast, b = tone.brightness, kh = tone.highKnee, kl = tone.lowKnee;
  if (!differs(c, 1.0f, 1e-5f) && !differs(b, 0.0f, 1e-5f) &&
      !differs(tone.detailGain, 1.0f, 1e-5f) && !differs(tone.gamma, 1.0f, 0.0001f))
    return;
  const auto primitive = [&](auto function, float constant) {
    function(constant, plane.data, plane.step, plane.width, plane.height);
  };
  if (tone.mode == 2) {
    primitive(primAddC_32f_C1IR, 1.0f);
    primLn_32f_C1IR(plane.data, plane.step, plane.width, plane.height);
    primitive(primMulC_32f_C1IR, 1.442695f);
  }
  Plane d(plane.width, plane.height);
  const bool useDetail = tone.detailRange > 0.0001f;
  if (useDetail) referenceSplit(plane, d, tone.detailRange, tone.detailSample);
  using Points = std::array<float, 5>;
  const float left = (kl - 0.5f), right = (0.5f - kh);
  const Points levels =
      c < 1.0f ? Points{0.0f, kl, 0.5f, 1.0f - kh, 1.0f}
               : Points{0.0f, (left - b) / c + 0.5f, 0.5f, (right - b) / c + 0.5f, 1.0f};
  const Points values =
      c < 1.0f ? Points{0.0f, left * c + 0.5f + b, b + 0.5f, right * c + 0.5f + b, 1.0f}
               : Points{kl * 0.25f, kl, b + 0.5f, 1.0f - kh, 1.0f - kh * 0.25f};
  primLUT_Linear_32f_C1IR(plane.data, plane.step, plane.width, plane.height, values.data(),
                          levels.data(), 5);
  if (useDetail) {
    if (differs(tone.gamma, 1.0f, 0.001f)) reshapeDetail(d, tone.gamma);
    multiply(d, tone.detailGain);
    add(plane, d);
  }
  if (tone.mode == 2) {
    primitive(primMulC_32f_C1IR, 0.6931472f);
    primExp_32f_C1IR(plane.data, plane.step, plane.width, plane.height);
    primitive(primSubC_32f_C1IR, 1.0f);
  }
}

void saturation(Plane& plane, const SaturationTone& tone) {
  if (tone.eqStrength > 0.01f && tone.eqSample > 3)
    referenceEqualize(plane, tone.eqSample, {0.0f, 1.0f, 0.0f, 0.5f, tone.eqStrength, 1.0f});
  if (tone.mode != 0) return saturationCurve(plane, tone);
  if (differs(tone.contrast, 1.0f, 0.0001f)) multiply(plane, tone.contrast);
  if (differs(tone.gamma, 1.0f, 0.0001f))
    applyCurve(plane, std::min(peakOf(plane), 1.0f), tone.gamma);
}

}  // namespace

void referenceSplit(Plane& plane, Plane& detail, float r, int s) {
  Plane guide(plane.width, plane.height);
  copyImage(plane, detail);
  copyImage(plane, guide);
  if (r >= 0.05f) {
    referenceFilter(guide, plane, {0.0f, 1.0f, r}, s);
    r *= 0.25f;
  }
  referenceFilter(plane, guide, {0.0f, 1.0f, r}, s);
  subtract(detail, plane);
}

void referenceUnsharp(Plane& plane, float amount, float sigma) {
  if (!differs(amount, 1.0f, 0.001f) || !(sigma > 0.4f)) return;
  const int w = plane.width, h = plane.height;
  float kernel[7], sum = 0.0f;
  for (int i = -3; i <= 3; ++i)
    sum += kernel[i + 3] = std::exp(-static_cast<float>(i * i) / (sigma * 2.0f * sigma + 1e-14f));
  for (float& k : kernel) k /= sum;
  Plane wide(w + 6, h + 6), column(w + 6, h), blur(w, h);
  each(wide, [&](float, int x, int y) {
    return at(plane, std::clamp(x - 3, 0, w - 1), std::clamp(y - 3, 0, h - 1));
  });
  primFilterColumn_32f_C1R(wide.row(3), wide.step, column.data, column.step, w + 6, h, kernel, 7,
                           3);
  primFilterRow_32f_C1R(column.data + 3, column.step, blur.data, blur.step, w, h, kernel, 7, 3);
  subtract(plane, blur);
  multiply(plane, amount);
  add(plane, blur);
}

void referenceStage(IMG3<float>& image, const AdjustToneStage& stage) {
  const int w = image.width, h = image.height;
  IMG3<float> hls(w, h);
  Plane planes[3] = {{w, h}, {w, h}, {w, h}};
  primRGBToHLS_32f_C3R(image.data, image.step, hls.data, hls.step, w, h);
  for (int c = 0; c < 3; ++c)
    each(planes[c], [&](float, int x, int y) { return hls.row(y)[3 * x + c]; });
  if (stage.sharpenSigma > 0.5f && differs(stage.sharpenAmount, 1.0f, 0.001f)) {
    referenceUnsharp(planes[1], stage.sharpenAmount, stage.sharpenSigma);
    each(planes[1], [](float v, int, int) { return clip(v); });
  }
  lightness(planes[1], stage.lightness);
  saturation(planes[2], stage.saturation);
  if (const float shift = stage.hueShift; std::fabs(shift) > 1e-7f)
    each(planes[0], [&](float v, int, int) {
      const float hue = v + shift;
      return shift > 0.0f ? (hue > 1.0f ? hue - 1.0f : hue) : (hue < 0.0f ? hue + 1.0f : hue);
    });
  for (int c = 0; c < 3; ++c)
    each(planes[c], [&](float v, int x, int y) { return hls.row(y)[3 * x + c] = clip(v); });
  primHLSToRGB_32f_C3R(hls.data, hls.step, image.data, image.step, w, h);
}

}  // namespace vx::test
