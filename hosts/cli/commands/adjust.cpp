#include "hosts/cli/commands/adjust.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "hosts/cli/commands/block_removal.h"
#include "hosts/cli/console/cancel.h"
#include "vxicore26.h"

namespace vx::cli {
namespace {

int onProgress(int position, int total, void* context) {
  static_cast<Progress*>(context)->update(100 * position / total);
  return cancelRequested() ? 0 : 1;
}

}  // namespace

AdjustCommand::AdjustCommand(CLI::App& program)
    : TreatingCommand(program, "adjust",
                      "Remove blocks and noise, enhance tone, detail, sharpness and colour") {
  addPreviewOption();
  addSettings(settings::bind(settings::adjustSettings(), values_));
  addExamples(
      "  vxicore adjust photo.jpg -o better.jpg --preset vivid\n"
      "  vxicore adjust holiday/ -o better/ --preset clean-jpeg --sharpen-amount 1.4\n"
      "  vxicore adjust dark.jpg -o clean.jpg --denoise auto --denoise-mode nonlocal --grain 0.1\n"
      "  vxicore adjust scan.tif -o small.png --preview-scale 4 --luma-gamma 0.5\n",
      "All settings start neutral.");
}

int AdjustCommand::run() {
  const int code = TreatingCommand::run();
  if (wisdom_) wisdom_->keep();
  return code;
}

int AdjustCommand::tripQuality(const std::filesystem::path& input,
                               std::vector<std::string>& notes) const {
  if (previewScale() != 1 || values_.unblock == 0) return 0;
  if (values_.unblock == settings::kAuto) return fittingTripQuality(input, notes);
  return std::clamp(static_cast<int>(100 - 85 * values_.unblock), 1, 99);
}

float AdjustCommand::denoiseStrength(const NoiseProfile& profile,
                                     std::vector<std::string>& notes) const {
  if (values_.denoise != settings::kAuto && noiseKnown(profile)) return values_.denoise;
  const float strength = fittingStrength(profile, filter());
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%.2f", static_cast<double>(strength));
  notes.push_back("denoise " + std::string(text.data()) + "; noise " + describeNoise(profile));
  return strength;
}

void AdjustCommand::treat(const std::filesystem::path& input, Picture& picture,
                          Progress& progress) {
  Raster& raster = picture.raster;
  const int trips = tripQuality(input, picture.notes);
  NoiseProfile profile{};
  float denoise = 0;
  if (values_.denoise != 0) {
    // At full size for a preview too, so that it shows what the settings will do.
    profile = previewScale() == 1 ? estimateNoise(raster)
                                  : estimateNoise(input, kMostMegapixels, progress);
    denoise = denoiseStrength(profile, picture.notes);
    profile = reducedNoise(profile, previewScale());
  }
  if (trips > 0) removeBlocks(raster, trips);
  if (denoise > 0 && filter() == NoiseFilter::kNonLocal && !wisdom_) wisdom_.emplace();
  const int result = callLibrary([&] {
    return vxAdjustRgb(raster.pixels(), raster.libraryFormat(), raster.rowBytes(),
                       raster.paddedWidth(), raster.paddedHeight(), previewScale(), nullptr,
                       nullptr, onProgress, &progress, values_.lumaEqAmount, values_.lumaEqRadius,
                       values_.lumaEqPeakGain, values_.lumaGamma, values_.lumaEqTopCut,
                       values_.lumaEqFloor, values_.lumaDetailRange, values_.lumaDetailRadius,
                       values_.lumaDetailGamma, values_.lumaDetailGain, values_.sharpenAmount,
                       values_.satEqAmount, values_.satEqRadius, values_.satContrast,
                       values_.satGamma, values_.hueShift, denoise, &profile, values_.grain, 0,
                       static_cast<int>(values_.denoiseMode));
  });
  if (result == 0) throw Cancelled();
  if (result == -1) throw FileError(kNoMemory);
  if (result != 1) throw FileError("the library refused it, code " + std::to_string(result));
}

// Four float planes; a tile adds some megabytes.
int AdjustCommand::libraryBytes() const { return 4 * static_cast<int>(sizeof(float)); }

}  // namespace vx::cli
