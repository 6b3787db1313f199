#include "hosts/cli/commands/adjust.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/pictures/jpeg_quality.h"
#include "vxicore26.h"

namespace vx::cli {
namespace {

constexpr std::string_view kBlocks = "Block artifacts of JPEG";
constexpr std::string_view kNoise = "Noise";
constexpr std::string_view kEq = "Local contrast of lightness (histogram equalisation by place)";
constexpr std::string_view kTone = "Brightness";
constexpr std::string_view kDetail = "Fine detail of lightness (against an edge-preserving base)";
constexpr std::string_view kSharp = "Sharpness";
constexpr std::string_view kColour = "Colour";

constexpr Word kFilters[] = {{"fast", static_cast<float>(NoiseFilter::kFast)},
                             {"nonlocal", static_cast<float>(NoiseFilter::kNonLocal)}};

int onProgress(int position, int total, void* context) {
  static_cast<Progress*>(context)->update(100 * position / total);
  return cancelRequested() ? 0 : 1;
}

}  // namespace

AdjustCommand::AdjustCommand(CLI::App& program)
    : TreatingCommand(program, "adjust",
                      "Remove blocks and noise, enhance tone, detail, sharpness and colour") {
  addPreviewOption();
  // Ranges end where the formulas stop making pictures: a gamma of 4.5 is an exponent of 0, a top
  // cut or floor of 1 leaves no output range. Radii of less than 6 pixels (after the preview
  // reduction) count as 6 in the library.
  addSettings({
      {"unblock", &unblock_, 0, 1, kBlocks,
       "Strength: JPEG quality 100 - 85 x of round trips at shifted block grids. auto takes the "
       "quality from the quantisation tables of the file, tells it, and leaves pictures alone that "
       "were coded above 86 or are no JPEG. Works on 8 bits, and at full size only (not in "
       "previews). 0 is off",
       false, kAutoWord},
      {"denoise", &denoise_, 0, 1.5F, kNoise,
       "Strength of the filter, in relation to the noise that is estimated in each picture. auto "
       "chooses it by the estimate (20 times the noise on a scale of 1, at most 0.8; nonlocal: "
       "0.25 and 15 times the noise, at most 0.6; none for a noise below one step of 255) and "
       "tells it. 0 is off",
       false, kAutoWord},
      {"denoise-mode", &denoiseMode_, 1, 0, kNoise,
       "fast smooths beside edges; nonlocal compares places of the picture, keeps more and takes "
       "far longer",
       false, kFilters},
      {"grain", &grain_, 0, 1, kNoise,
       "Share of the removed noise that comes back at the end, against a plastic look; up to 0.01 "
       "is off"},
      {"luma-eq-amount", &lumaEqAmount_, 0, 1, kEq,
       "Strength: at 0.3 five sixths of the way to full equalisation with a low limit on contrast; "
       "higher values raise the limit. 0 is off"},
      {"luma-eq-radius", &lumaEqRadius_, 0, 4096, kEq,
       "Size of a place, in pixels of the full picture; below 6 counts as 6. Usual: 60 to 300"},
      {"luma-eq-peak-gain", &lumaEqPeakGain_, -10, 10, kEq,
       "Above 0 gives more contrast to the middle tones, below 0 to shadows and lights"},
      {"luma-eq-top-cut", &lumaEqTopCut_, 0, 0.95F, kEq,
       "Share of the output range that is cut off at the top: darkens the lights"},
      {"luma-eq-floor", &lumaEqFloor_, 0, 0.95F, kEq,
       "Lightness that black becomes: lifts the shadows"},
      {"luma-gamma", &lumaGamma_, -4, 4, kTone,
       "Above 0 lightens (exponent 1 - g/4.5), below 0 darkens (exponent 1 - g); with fine detail "
       "on, acts on the base alone. 0 is off"},
      {"luma-detail-range", &lumaDetailRange_, 0, 1, kDetail,
       "Height of a lightness step that counts as an edge and stays in the base; 0 turns this "
       "group off. Usual: 0.05 to 0.3"},
      {"luma-detail-radius", &lumaDetailRadius_, 0, 4096, kDetail,
       "Size of what counts as detail, in pixels of the full picture; below 6 counts as 6"},
      {"luma-detail-gain", &lumaDetailGain_, 0, 10, kDetail,
       "Gain of the detail: above 1 brings it out, below 1 smooths. 1 is neutral"},
      {"luma-detail-gamma", &lumaDetailGamma_, 0.1F, 4, kDetail,
       "Below 1 lifts weak detail towards the strongest, above 1 suppresses it. 1 is neutral"},
      {"sharpen-amount", &sharpenAmount_, 0, 10, kSharp,
       "Above 1 sharpens, below 1 softens. 1 is neutral"},
      {"sat-eq-amount", &satEqAmount_, 0, 1, kColour,
       "Strength of the equalisation of saturation by place. 0 is off"},
      {"sat-eq-radius", &satEqRadius_, 0, 4096, kColour,
       "Size of a place for it, in pixels of the full picture; below 6 counts as 6"},
      {"sat-contrast", &satContrast_, 0, 4, kColour,
       "Gain of the saturation: 0 gives grey. 1 is neutral"},
      {"sat-gamma", &satGamma_, 0.1F, 4, kColour,
       "Below 1 lifts pale colours towards the strongest, above 1 mutes them. 1 is neutral"},
      {"hue-shift", &hueShift_, -1, 1, kColour, "Rotation of all hues, in turns. 0 is off"},
  });
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

float AdjustCommand::unblockStrength(const std::filesystem::path& input,
                                     std::vector<std::string>& notes) const {
  if (unblock_ != kAuto || previewScale() != 1) return std::max(unblock_, 0.0F);
  const auto quality = fittingTripQuality(input, notes);
  // The library truncates 100 - 85 * strength: aim at the middle between two qualities.
  return quality ? (99.5F - static_cast<float>(*quality)) / 85 : 0;
}

float AdjustCommand::denoiseStrength(const NoiseProfile& profile,
                                     std::vector<std::string>& notes) const {
  if (denoise_ != kAuto && noiseKnown(profile)) return denoise_;
  const float strength = fittingStrength(profile, filter());
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%.2f", static_cast<double>(strength));
  notes.push_back("denoise " + std::string(text.data()) + "; noise " + describeNoise(profile));
  return strength;
}

void AdjustCommand::treat(const std::filesystem::path& input, Picture& picture,
                          Progress& progress) {
  Raster& raster = picture.raster;
  const float unblock = unblockStrength(input, picture.notes);
  NoiseProfile profile{};
  float denoise = 0;
  if (denoise_ != 0) {
    // At full size for a preview too, so that it shows what the settings will do.
    profile = previewScale() == 1 ? estimateNoise(raster)
                                  : estimateNoise(input, kMostMegapixels, progress);
    denoise = denoiseStrength(profile, picture.notes);
    profile = reducedNoise(profile, previewScale());
  }
  if (denoise > 0 && filter() == NoiseFilter::kNonLocal && !wisdom_) wisdom_.emplace();
  const int result = callLibrary([&] {
    return vxAdjustRgb(raster.pixels(), raster.libraryFormat(), raster.rowBytes(),
                       raster.paddedWidth(), raster.paddedHeight(), previewScale(), nullptr,
                       nullptr, onProgress, &progress, lumaEqAmount_, lumaEqRadius_,
                       lumaEqPeakGain_, lumaGamma_, lumaEqTopCut_, lumaEqFloor_, lumaDetailRange_,
                       lumaDetailRadius_, lumaDetailGamma_, lumaDetailGain_, sharpenAmount_,
                       satEqAmount_, satEqRadius_, satContrast_, satGamma_, hueShift_, denoise,
                       &profile, grain_, unblock, static_cast<int>(denoiseMode_));
  });
  if (result == 0) throw Cancelled();
  if (result == -1) throw FileError(kNoMemory);
  if (result != 1) throw FileError("the library refused it, code " + std::to_string(result));
}

// Four float planes; a tile adds some megabytes.
int AdjustCommand::libraryBytes() const { return 4 * static_cast<int>(sizeof(float)); }

}  // namespace vx::cli
