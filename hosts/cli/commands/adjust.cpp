#include "hosts/cli/commands/adjust.h"

#include <algorithm>

#include "hosts/auto/auto_tone.h"
#include "hosts/cli/commands/block_removal.h"
#include "hosts/cli/commands/noise_estimate.h"
#include "hosts/cli/console/cancel.h"
#include "vxicore26.h"

namespace vx::cli {
namespace {

int onProgress(int position, int total, void* context) {
  static_cast<Progress*>(context)->update(100 * position / total);
  return cancelRequested() ? 0 : 1;
}

VxAutoDenoise fittingFilter(const VxAutoNoise& noise, const settings::AdjustValues& values,
                            int previewScale) {
  if (values.denoise == 0) return {};
  const VxAutoNoise reduced = vxAutoReducedNoise(&noise, previewScale);
  const int mode =
      values.denoiseMode == settings::kAuto ? VX_AUTO_FAST : static_cast<int>(values.denoiseMode);
  const bool chosen = values.denoise == settings::kAuto;
  return vxAutoChooseDenoise(&reduced, mode, chosen ? 1 : static_cast<double>(values.denoise));
}

VxAutoTone chooseTone(Raster& raster, const VxAutoNoise& noise) {
  const VxAutoPicture picture = vxAutoPicture(raster.pixels(), raster.libraryFormat(),
                                              raster.rowBytes(), raster.width(), raster.height());
  VxAutoTone tone{};
  if (vxAutoChooseTone(&picture, &noise, &tone) == 0) throw FileError(kNoMemory);
  return tone;
}

std::string describeTone(const VxAutoTone& tone) {
  std::string text(vxAutoDescribeTone(&tone, nullptr, 0), '\0');
  vxAutoDescribeTone(&tone, text.data(), text.size() + 1);
  return text;
}

void joinNotes(std::vector<std::string>& notes) {
  std::string line;
  for (const std::string& note : notes) line += (line.empty() ? "" : "; ") + note;
  notes = {line};
}

// Without this the call would change nothing but float rounding.
bool changesTone(const settings::AdjustValues& v) {
  const bool detail = v.lumaDetailRange > 0 && (v.lumaDetailGain != 1 || v.lumaDetailGamma != 1);
  return detail || v.lumaEqAmount != 0 || v.lumaGamma != 0 || v.sharpenAmount != 1 ||
         v.satEqAmount != 0 || v.satContrast != 1 || v.satGamma != 1 || v.hueShift != 0;
}

void adjust(Raster& raster, const settings::AdjustValues& v, const VxAutoDenoise& filter,
            int previewScale, Progress& progress) {
  const int result = callLibrary([&] {
    return vxAdjustRgb(raster.pixels(), raster.libraryFormat(), raster.rowBytes(),
                       raster.paddedWidth(), raster.paddedHeight(), previewScale, nullptr, nullptr,
                       onProgress, &progress, v.lumaEqAmount, v.lumaEqRadius, v.lumaEqPeakGain,
                       v.lumaGamma, v.lumaEqTopCut, v.lumaEqFloor, v.lumaDetailRange,
                       v.lumaDetailRadius, v.lumaDetailGamma, v.lumaDetailGain, v.sharpenAmount,
                       v.satEqAmount, v.satEqRadius, v.satContrast, v.satGamma, v.hueShift,
                       filter.strength, &filter.profile, v.grain, 0, filter.mode);
  });
  if (result == 0) throw Cancelled();
  if (result == -1) throw FileError(kNoMemory);
  if (result != 1) throw FileError("the library refused it, code " + std::to_string(result));
}

}  // namespace

AdjustCommand::AdjustCommand(CLI::App& program)
    : TreatingCommand(program, "adjust",
                      "Remove blocks and noise, enhance tone, detail, sharpness and colour") {
  addPreviewOption();
  addSettings(settings::bind(settings::adjustSettings(), values_));
  addExamples(
      "  vxicore adjust photo.jpg -o better.jpg --auto\n"
      "  vxicore adjust photo.jpg -o richer.jpg --preset vivid\n"
      "  vxicore adjust holiday/ -o better/ --preset clean-jpeg --sharpen-amount 1.4\n"
      "  vxicore adjust dark.jpg -o clean.jpg --denoise auto --denoise-mode nonlocal --grain 0.1\n"
      "  vxicore adjust scan.tif -o small.png --preview-scale 4 --luma-gamma 0.5\n",
      "All settings start neutral: a picture then stays as it is.");
}

VxAutoNoise AdjustCommand::noiseOf(const std::filesystem::path& input, Picture& picture,
                                   Progress& progress) const {
  if (values_.noise != settings::kAuto)
    return vxAutoAssumeNoise(static_cast<double>(values_.noise));
  if (previewScale() == 1) return measureNoise(input, picture);
  // At full size for a preview too, so that it shows what the settings will do.
  Picture full = readForNoise(input, kMostMegapixels, acceptsDamage(), progress);
  return measureNoise(input, full);
}

void AdjustCommand::choose(const VxAutoNoise& noise, Picture& picture,
                           settings::AdjustValues& values) const {
  if (values.unblock == 0) values.unblock = settings::kAuto;
  if (values.denoise == 0) values.denoise = settings::kAuto;
  if (values.denoiseMode == settings::kAuto)
    values.denoiseMode = static_cast<float>(settings::NoiseFilter::kNonLocal);
  const VxAutoTone tone = chooseTone(picture.raster, noise);
  picture.notes.push_back(describeTone(tone));
  if (values.lumaGamma == 0) values.lumaGamma = tone.lumaGamma;
  if (values.lumaEqAmount == 0 && tone.lumaEqAmount != 0) {
    values.lumaEqAmount = tone.lumaEqAmount;
    values.lumaEqRadius = tone.lumaEqRadius * static_cast<float>(previewScale());
  }
  if (values.satContrast == 1) values.satContrast = tone.satContrast;
}

void AdjustCommand::treat(const std::filesystem::path& input, Picture& picture,
                          Progress& progress) {
  settings::AdjustValues values = values_;
  const bool automatic = values.automatic != 0;
  VxAutoNoise noise{};
  if (automatic || values.denoise != 0) noise = noiseOf(input, picture, progress);
  if (automatic) choose(noise, picture, values);
  const VxAutoDenoise filter = fittingFilter(noise, values, previewScale());
  if (values.denoise != 0) picture.notes.push_back(describeDenoise(&noise, &filter));
  int trips = 0;
  if (previewScale() == 1 && values.unblock != 0) {
    trips = values.unblock == settings::kAuto
                ? fittingTripQuality(input, picture.notes)
                : std::clamp(static_cast<int>(100 - 85 * values.unblock), 1, 99);
  }
  if (automatic) joinNotes(picture.notes);
  if (automatic && keepsChoice()) {
    values_ = values;
    values_.automatic = 0;
  }
  if (trips > 0) removeBlocks(picture, trips);
  if (filter.strength > 0 || changesTone(values))
    adjust(picture.raster, values, filter, previewScale(), progress);
}

// Four float planes; a tile adds some megabytes.
int AdjustCommand::libraryBytes() const { return 4 * static_cast<int>(sizeof(float)); }

}  // namespace vx::cli
