#include "vxenhlib/noise/noise_filter_record.h"

#include "frame/plane_ops.h"
#include "frame/to_int.h"
#include "vxenhlib/noise/deconvolver.h"
#include "vxenhlib/noise/non_local_passes.h"

namespace vx {
namespace {

constexpr float kOff = 0.01f;  // amounts up to here switch a pass off

// The range of values that luma and the centred chroma have for planes of 0 to 1. Chroma beyond it
// is clipped in the grid's coordinate only.
constexpr float kLumaRange[2] = {0.0f, 1.0f};
constexpr float kChromaRange[2] = {-0.61176f, 0.46275002f};
constexpr float kLeastRange = 0.005f;
constexpr float kLeastChromaRange = 0.0053725503f;  // 0.005 times the span of the chroma range

float larger(float value, float limit) { return value > limit ? value : limit; }

int sampleOf(float amount) {
  const int sample = toInt(amount * 10.0f + 8.0f + 0.5f);
  return sample > 3 ? sample : 3;
}

// Amounts above a half widen the range by far more than the noise asks for.
float boost(float amount) {
  if (!(amount > 0.5f)) return 0.0f;
  const float t = (amount - 0.5f) * 2.0f;
  return (t + 4.0f * t * t * t * t) * 0.02f;
}

void smooth(const GridStep& grid, GIMG<float>& first, GIMG<float>* second) {
  BilateralFilter filter;
  if (!grid.setUp(filter, first.roiWidth, first.roiHeight)) return;
  filter.filter(first, first, 0.0f);
  if (second != nullptr) filter.filter(*second, *second, 0.0f);
}

}  // namespace

BlockGeometry chooseGeometry(bool twoStage, bool tierFlag, float n) {
  struct Row {
    float below;
    BlockGeometry geometry;
  };
  constexpr float kAny = 0.0f;  // the last row of a group is not compared
  static constexpr Row kTable[2][2][3] = {
      {{{30.0f / 255.0f, {8, 8, 4, 32}},
        {45.0f / 255.0f, {12, 12, 6, 48}},
        {kAny, {12, 16, 8, 48}}},
       {{40.0f / 255.0f, {8, 12, 7, 32}}, {kAny, {12, 16, 9, 48}}, {kAny, {12, 16, 9, 48}}}},
      {{{30.0f / 255.0f, {12, 8, 3, 48}},
        {45.0f / 255.0f, {16, 12, 5, 64}},
        {kAny, {16, 16, 7, 64}}},
       {{30.0f / 255.0f, {8, 8, 4, 32}},
        {45.0f / 255.0f, {12, 12, 6, 48}},
        {kAny, {12, 16, 8, 48}}}}};
  const Row(&rows)[3] = kTable[twoStage ? 1 : 0][tierFlag ? 1 : 0];
  if (n < rows[0].below) return rows[0].geometry;
  return n < rows[1].below ? rows[1].geometry : rows[2].geometry;
}

int NoiseFilterRecord::configure(const NoiseProfile& newProfile, bool newTierFlag,
                                 bool newTwoStage) {
  profile = newProfile;
  float n = profile.lumaNoise;
  if (profile.lumaLevel <= 0.5f) n = profile.lumaNoise * 0.5f / profile.lumaLevel;
  tierFlag = newTierFlag;
  twoStage = newTwoStage;
  geometry = chooseGeometry(twoStage, tierFlag, n);
  nonLocal.reset();
  return kVxrcOk;
}

bool NoiseFilterRecord::prepareNonLocal() {
  if (nonLocal == nullptr && geometry.blockSize > 0) {
    const BlockGeometry& g = geometry;
    nonLocal = std::make_unique<CNLImDnCn>(g.stackLimit, 2, g.blockSize, g.searchSize);
    nonLocal->stepX = nonLocal->stepY = g.blockStep > g.blockSize ? g.blockSize - 1 : g.blockStep;
  }
  return nonLocal != nullptr && nonLocal->ready();
}

GridStep NoiseFilterRecord::lumaGrid(float amount) const {
  GridStep grid = {0, 0.0f, kLumaRange[0], kLumaRange[1]};
  if (lumaSample > 0.0f) {
    grid.sample = toInt(lumaSample);
    grid.range = larger(lumaRange, kLeastRange);
  } else if (amount > kOff) {
    grid.sample = sampleOf(amount);
    grid.range = larger(profile.lumaNoise * 0.5f * amount + boost(amount), kLeastRange);
  }
  return grid;
}

// Unlike the luma's, the range is limited before the boost is added, and once more at the end.
GridStep NoiseFilterRecord::chromaGrid(float amount) const {
  GridStep grid = {0, 0.0f, kChromaRange[0], kChromaRange[1]};
  if (chromaSample > 0.0f) {
    grid.sample = toInt(chromaSample);
    grid.range = larger(chromaRange, kLeastChromaRange);
  } else if (amount > kOff) {
    grid.sample = sampleOf(amount);
    const float range = larger(profile.lumaNoise * 0.5f * amount, kLeastRange) + boost(amount);
    grid.range = larger(range, kLeastChromaRange);
  }
  return grid;
}

int NoiseFilterRecord::denoise(GIMG<float>* const planes[3], const DenoiseSettings& settings) {
  GIMG<float>& luma = *planes[0];
  if (!accepts(luma.roiWidth, luma.roiHeight)) return kVxrcBadArgument;
  for (int c = 0; c < 3; ++c) {
    if (planes[c]->roiWidth != luma.roiWidth || planes[c]->roiHeight != luma.roiHeight)
      return kVxrcSizeMismatch;
    if (planes[c]->data == nullptr) return kVxrcNoMemory;
  }
  strength = settings.strength;
  kneeRatio = settings.kneeRatio;
  deviationGain = settings.deviationGain;

  if (strength > 0.009f && prepareNonLocal()) {
    filterNonLocal(*nonLocal, planes,
                   {.floorWeight = settings.floorWeight,
                    .strength = strength,
                    .detailShare = settings.detailShare,
                    .kneeRatio = kneeRatio,
                    .deviationGain = deviationGain,
                    .chromaGuideGain = settings.chromaGuideGain,
                    .lumaNoise = profile.lumaNoise,
                    .chromaNoise = profile.chromaNoise,
                    .twoStage = twoStage});
  }
  if (settings.sharpen > kOff) sharpenLuma(luma, settings.sharpen + 0.2f);
  smooth(lumaGrid(settings.lumaBilateral), luma, nullptr);
  smooth(chromaGrid(settings.chromaBilateral), *planes[1], planes[2]);
  return kVxrcOk;
}

void NoiseFilterRecord::sharpenLuma(GIMG<float>& luma, float sigma) {
  GIMG<float> sharp(luma.roiWidth, luma.roiHeight);
  if (Deconvolver().deconvolve(luma, sharp, sigma) != kVxrcOk) return;
  luma.status = copy(sharp, luma);
}

}  // namespace vx
