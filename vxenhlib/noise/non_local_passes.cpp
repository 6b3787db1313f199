#include "vxenhlib/noise/non_local_passes.h"

#include "frame/parallel.h"
#include "frame/plane_ops.h"
#include "prim/geometry.h"
#include "vxenhlib/noise/gauss_pyramid.h"

namespace vx {
namespace {

using Plane = GIMG<float>;

constexpr float kMatchNoiseGain = 1.5f;
constexpr float kMatchFloor = 0.03f;
constexpr int kExclusion = 1;

void resize(const Plane& from, Plane& to, double factor) {
  to.status = prim::primResize_32f_C1R(from.data, from.roiWidth, from.roiHeight, from.step, 0, 0,
                                       from.roiWidth, from.roiHeight, to.data, to.step, to.roiWidth,
                                       to.roiHeight, factor, factor, prim::kResizeCubic);
}

void setParams(CNLImDnCn& filter, const NonLocalSettings& s, float strength, float noise) {
  filter.setFilterParams(s.floorWeight, strength, s.kneeRatio, noise, kMatchNoiseGain, kMatchFloor,
                         s.deviationGain, kExclusion);
}

// The chroma, and level 1 of the pyramid of the luma.
bool halfSizePass(CNLImDnCn& filter, GaussPyramid& pyramid, Plane& chroma1, Plane& chroma2,
                  const NonLocalSettings& s) {
  Plane& level = *pyramid.level[1];
  const int w = level.width;
  const int h = level.height;
  Plane half1(w, h), half2(w, h), out1(w, h), out2(w, h), luma(w, h), guide(w, h);
  for (const Plane* image : {&half1, &half2, &out1, &out2, &luma, &guide})
    if (image->data == nullptr) return false;
  Plane* const chroma[] = {&chroma1, &chroma2};
  Plane* const half[] = {&half1, &half2};
  parallelFor(0, 2, [&](int c) { resize(*chroma[c], *half[c], 0.5); });
  copy(level, luma);
  add(half1, half2, guide);
  scale(s.chromaGuideGain * 0.5f, guide);

  setParams(filter, s, (s.twoStage ? 2.0f : 1.75f) * s.strength, s.chromaNoise);
  Plane* const guides[] = {&luma, &guide};
  Plane* const in[] = {&luma, &half1, &half2};
  Plane* const out[] = {&level, &out1, &out2};
  if (filter.filterPlanes(2, guides, &luma, nullptr, 3, in, out) != kVxrcOk) return false;
  parallelFor(0, 2, [&](int c) { resize(*out[1 + c], *chroma[c], 2.0); });
  return true;
}

// The detail that the filtered level 1 leaves of the luma. Blocks are searched in the noisy luma,
// which is padded as the pyramid is.
bool detailPass(CNLImDnCn& filter, GaussPyramid& pyramid, Plane& noisyLuma, Plane& luma,
                const NonLocalSettings& s) {
  Plane& level = *pyramid.level[0];
  const int w = level.width;
  const int h = level.height;
  Plane detail(w, h), filtered(w, h);
  if (filtered.data == nullptr || detail.data == nullptr) return false;
  pyramid.takeDetail(0, detail);
  pyramid.level[1].reset();

  setParams(filter, s, (s.twoStage ? 1.5f : 1.25f) * s.strength * s.detailShare, s.lumaNoise);
  Plane* const guides[] = {&noisyLuma};
  Plane* const in[] = {&detail};
  Plane* const out[] = {&filtered};
  if (filter.filterPlanes(1, guides, &detail, nullptr, 1, in, out) != kVxrcOk) return false;
  add(filtered, level);
  copyPadded(level, luma);
  return true;
}

void guidedPass(CNLImDnCn& filter, Plane& luma, Plane& noisyLuma, const NonLocalSettings& s) {
  Plane refined(luma.roiWidth, luma.roiHeight);
  noisyLuma.roiWidth = luma.roiWidth;
  noisyLuma.roiHeight = luma.roiHeight;
  setParams(filter, s, s.strength * s.detailShare, s.lumaNoise);
  Plane* const guides[] = {&luma};
  Plane* const in[] = {&noisyLuma};
  Plane* const out[] = {&refined};
  if (filter.filterPlanes(1, guides, &noisyLuma, &luma, 1, in, out) == kVxrcOk) copy(refined, luma);
}

}  // namespace

void filterNonLocal(CNLImDnCn& filter, GIMG<float>* const planes[3],
                    const NonLocalSettings& settings) {
  Plane& luma = *planes[0];
  GaussPyramid pyramid;
  if (!filter.ready() || pyramid.build(luma, 1, false) != kVxrcOk) return;
  Plane noisyLuma(pyramid.level[0]->width, pyramid.level[0]->height);
  if (noisyLuma.data == nullptr) return;
  copyPadded(luma, noisyLuma);
  if (halfSizePass(filter, pyramid, *planes[1], *planes[2], settings) &&
      detailPass(filter, pyramid, noisyLuma, luma, settings) && settings.twoStage)
    guidedPass(filter, luma, noisyLuma, settings);
  // A pilot left behind would change the thresholds of the next picture.
  filter.clearImages();
}

}  // namespace vx
