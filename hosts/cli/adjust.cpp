#include "hosts/cli/adjust.h"

#include "hosts/cli/cancel.h"
#include "vxicore26.h"

namespace vx::cli {
namespace {

constexpr std::string_view kEq = "Local contrast of lightness (histogram equalisation by place)";
constexpr std::string_view kTone = "Brightness";
constexpr std::string_view kDetail = "Fine detail of lightness (against an edge-preserving base)";
constexpr std::string_view kSharp = "Sharpness";
constexpr std::string_view kColour = "Colour";

int onProgress(int position, int total, void* context) {
  static_cast<Progress*>(context)->update(100 * position / total);
  return cancelRequested() ? 0 : 1;
}

}  // namespace

AdjustCommand::AdjustCommand(CLI::App& program)
    : Command(program, "adjust", "Enhance tone, detail, sharpness and colour") {
  addPreviewOption();
  // Ranges end where the formulas stop making pictures: a gamma of 4.5 is an exponent of 0, a top
  // cut or floor of 1 leaves no output range. Radii of less than 6 pixels (after the preview
  // reduction) count as 6 in the library.
  addSettings({
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
       "group "
       "off. Usual: 0.05 to 0.3"},
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
      "  vxicore adjust scan.tif -o small.png --preview-scale 4 --luma-gamma 0.5\n");
}

void AdjustCommand::treat(Raster& raster, Progress& progress) const {
  constexpr int kRgb8 = 1, kRgb16 = 3;
  const int result = callLibrary([&] {
    return vxAdjustRgb(raster.pixels(), raster.depth() == 8 ? kRgb8 : kRgb16, raster.rowBytes(),
                       raster.paddedWidth(), raster.paddedHeight(), previewScale(), nullptr,
                       nullptr, onProgress, &progress, lumaEqAmount_, lumaEqRadius_,
                       lumaEqPeakGain_, lumaGamma_, lumaEqTopCut_, lumaEqFloor_, lumaDetailRange_,
                       lumaDetailRadius_, lumaDetailGamma_, lumaDetailGain_, sharpenAmount_,
                       satEqAmount_, satEqRadius_, satContrast_, satGamma_, hueShift_, 0, nullptr,
                       0, 0, 0);
  });
  if (result == 0) throw Cancelled();
  if (result == -1) throw FileError(kNoMemory);
  if (result != 1) throw FileError("the library refused it, code " + std::to_string(result));
}

// Four float planes; a tile adds some megabytes.
int AdjustCommand::libraryBytes() const { return 4 * static_cast<int>(sizeof(float)); }

}  // namespace vx::cli
