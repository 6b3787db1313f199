#include "adjust/noise_stage.h"

#include <new>

#include "frame/bands.h"
#include "frame/plane_ops.h"
#include "vxenhlib/noise/grid_denoise.h"
#include "vxenhlib/noise/luma_chroma.h"

namespace vx {
namespace {

bool keepsGrain(const AdjustSettings& settings) { return settings.grainRestore > 0.01f; }

// Rows y to y + count - 1 of the three planes.
struct Rows {
  PlaneView plane[3];

  Rows(const std::unique_ptr<GIMG<float>> planes[3], int y, int count) {
    for (int c = 0; c < 3; ++c) plane[c] = PlaneView(*planes[c]).rows(y, count);
  }
};

}  // namespace

float deriveNoiseSettings(const AdjustSettings& settings, NoiseFilterRecord& record) {
  const float s = settings.denoiseStrength;
  if (settings.denoiseMode != 0) return s * 1.2f;
  const NoiseProfile& p = record.profile;
  record.lumaSample = (p.lumaNoise * 0.5f) / (p.lumaLevel + 1e-10f) * s * 160.0f + 4.0f;
  record.chromaSample = record.lumaSample + 2.0f;
  record.lumaRange = p.lumaNoise * s * 2.5f;
  record.chromaRange = record.lumaRange * 0.75f;
  return 0.0f;
}

bool NoiseStage::active(const AdjustSettings& settings) {
  return settings.denoiseStrength > 0.001f && settings.noiseProfile != nullptr;
}

bool NoiseStage::reservePlanes(int width, int height) {
  for (auto& plane : removed_) {
    plane.reset(new (std::nothrow) GIMG<float>(width, height));
    if (plane == nullptr || plane->data == nullptr) return false;
  }
  return true;
}

void NoiseStage::forget() {
  for (auto& plane : removed_) plane.reset();
}

void NoiseStage::filter(IMG3<float>& image, const AdjustSettings& settings) {
  if (!active(settings) || image.data == nullptr) return;
  NoiseFilterRecord record;
  record.configure(*settings.noiseProfile, true, true);
  const float strength = deriveNoiseSettings(settings, record);
  const bool grain = keepsGrain(settings);
  const bool gridsAlone =
      settings.denoiseMode == 0 && record.accepts(image.roiWidth, image.roiHeight);
  // The planes hold the picture on its way through the filter, and then what was taken out.
  const bool planes = !gridsAlone || grain;
  bool filtered = !planes || reservePlanes(image.roiWidth, image.roiHeight);
  if (filtered) {
    filtered = gridsAlone ? filterOnGrids(image, record, grain)
                          : filterPlanes(image, record, strength, grain);
  }
  if (!filtered || !grain) forget();
}

bool NoiseStage::filterOnGrids(IMG3<float>& image, NoiseFilterRecord& record, bool grain) {
  GIMG<float>* const planes[3] = {removed_[0].get(), removed_[1].get(), removed_[2].get()};
  return denoiseOnGrids(image, record.lumaGrid(0.0f), record.chromaGrid(0.0f),
                        grain ? planes : nullptr);
}

bool NoiseStage::filterPlanes(IMG3<float>& image, NoiseFilterRecord& record, float strength,
                              bool grain) {
  const int w = image.roiWidth;
  const int h = image.roiHeight;
  const RgbRows pixels(image);
  const int bandHeight = bandRows(0, w, h);
  PerSlot<float> scratch;
  if (!scratch.reserve(static_cast<std::size_t>(bandHeight) * static_cast<std::size_t>(w)))
    return false;
  parallelBands(h, bandHeight, [&](int y, int count, int) {
    const Rows rows(removed_, y, count);
    for (int c = 0; c < 3; ++c) takeChannel(pixels.rows(y, count), c, rows.plane[c]);
    toLumaChroma(rows.plane, true);
  });

  GIMG<float>* const planes[3] = {removed_[0].get(), removed_[1].get(), removed_[2].get()};
  try {
    record.denoise(planes, {.strength = strength});
  } catch (const std::bad_alloc&) {
    return false;
  }

  parallelBands(h, bandHeight, [&](int y, int count, int slot) {
    const Rows rows(removed_, y, count);
    fromLumaChroma(rows.plane, true);
    const PlaneView before(scratch.at(slot), w * static_cast<int>(sizeof(float)), w, count);
    for (int c = 0; c < 3; ++c) {
      const PlaneView& plane = rows.plane[c];
      if (grain) takeChannel(pixels.rows(y, count), c, before);
      putChannel(plane, pixels.rows(y, count), c);
      if (grain) sub(before, plane, plane);
    }
  });
  return true;
}

void NoiseStage::restoreGrain(IMG3<float>& image, const AdjustSettings& settings) {
  if (!hasGrain()) return;
  const int w = image.roiWidth;
  const int h = image.roiHeight;
  const RgbRows pixels(image);
  const int bandHeight = bandRows(0, w, h);
  PerSlot<float> scratch;
  if (scratch.reserve(static_cast<std::size_t>(bandHeight) * static_cast<std::size_t>(w))) {
    parallelBands(h, bandHeight, [&](int y, int count, int slot) {
      const PlaneView sum(scratch.at(slot), w * static_cast<int>(sizeof(float)), w, count);
      for (int c = 0; c < 3; ++c) {
        const PlaneView grain = PlaneView(*removed_[c]).rows(y, count);
        takeChannel(pixels.rows(y, count), c, sum);
        scale(settings.grainRestore, grain);
        add(grain, sum);
        putChannel(sum, pixels.rows(y, count), c);
      }
    });
  }
  forget();
}

}  // namespace vx
