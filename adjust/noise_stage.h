#pragma once

#include <memory>

#include "adjust/adjust_settings.h"
#include "frame/img.h"
#include "vxenhlib/noise/noise_filter_record.h"

namespace vx {

/// Sets what the fast mode fixes in the record: grids of the bilateral passes that grow with the
/// noise, chroma two pixels coarser than luma. The non-local mode leaves the record alone.
///
/// @return the strength of the non-local passes: 0 in the fast mode
float deriveNoiseSettings(const AdjustSettings& settings, NoiseFilterRecord& record);

/// The noise filter over an image, and the grain that it took out.
class NoiseStage {
 public:
  /// Whether filter() has work: a denoiseStrength above 0.001 and a profile.
  static bool active(const AdjustSettings& settings);

  /// Filters the image in place when active. Does nothing when memory is short: for some rows in
  /// the fast mode without grain, else for three planes.
  void filter(IMG3<float>& image, const AdjustSettings& settings);

  /// Whether filter() kept what it took out.
  bool hasGrain() const { return removed_[0] != nullptr; }

  /// Adds the share grainRestore of what filter() took out, above 0.01, and forgets it.
  void restoreGrain(IMG3<float>& image, const AdjustSettings& settings);

 private:
  bool reservePlanes(int width, int height);
  void forget();
  bool filterOnGrids(IMG3<float>& image, NoiseFilterRecord& record, bool grain);
  bool filterPlanes(IMG3<float>& image, NoiseFilterRecord& record, float strength, bool grain);

  std::unique_ptr<GIMG<float>> removed_[3];
};

}  // namespace vx
