#include "hosts/settings/adjust_settings.h"

namespace vx::settings {
namespace {

constexpr std::string_view kAutomatic = "Automatic";
constexpr std::string_view kBlocks = "Block artifacts of JPEG";
constexpr std::string_view kNoise = "Noise";
constexpr std::string_view kEq = "Local contrast of lightness (histogram equalisation by place)";
constexpr std::string_view kTone = "Brightness";
constexpr std::string_view kDetail = "Fine detail of lightness (against an edge-preserving base)";
constexpr std::string_view kSharp = "Sharpness";
constexpr std::string_view kColour = "Colour";

constexpr Word kFilters[] = {{"auto", kAuto},
                             {"fast", static_cast<float>(NoiseFilter::kFast)},
                             {"nonlocal", static_cast<float>(NoiseFilter::kNonLocal)}};

// Ranges end where the formulas stop making pictures: a gamma of 4.5 is an exponent of 0, a top
// cut or floor of 1 leaves no output range. Radii of less than 6 pixels (after the preview
// reduction) count as 6 in the library.
constexpr auto kFields = withNeutral(std::to_array<Field<AdjustValues>>({
    {{"auto", 1, 0, kAutomatic,
      "Choose the removal of blocks and noise and a restrained tone (luma-gamma, luma-eq-amount, "
      "sat-contrast) for each picture, where these settings are neutral, and tell it in a line. "
      "Night, drawings and what is far from usual keep their tone. Together with --save-preset, "
      "what was chosen for a single picture is written",
      false, kSwitchWords},
     &AdjustValues::automatic},
    {{"unblock", 0, 1, kBlocks,
      "Strength: JPEG quality 100 - 85 x of round trips at shifted block grids. auto takes the "
      "quality from the quantisation tables of the file, tells it, and leaves pictures alone that "
      "were coded above 86 or are no JPEG. At full size only, not in previews. 0 is off",
      false, kAutoWord},
     &AdjustValues::unblock},
    {{"denoise", 0, 4, kNoise,
      "Strength of the filter, in relation to what fits the noise of each picture: 1 takes away "
      "what was seen, and where none was seen, or a drawing, nothing is done. What was seen and "
      "chosen is told. auto is 1. 0 is off",
      false, kAutoWord},
     &AdjustValues::denoise},
    {{"noise", 0, 100, kNoise,
      "Noise to reckon with instead of the noise that is seen: standard deviation of the luma in "
      "flat places, in steps of 255",
      false, kAutoWord},
     &AdjustValues::noise},
    {{"denoise-mode", 1, 0, kNoise,
      "fast smooths beside edges; nonlocal compares places of the picture, keeps more and takes "
      "far longer. auto is nonlocal together with --auto, and fast elsewhere",
      false, kFilters},
     &AdjustValues::denoiseMode},
    {{"grain", 0, 1, kNoise,
      "Share of the removed noise that comes back at the end, against a plastic look; up to 0.01 "
      "is off"},
     &AdjustValues::grain},
    {{"luma-eq-amount", 0, 1, kEq,
      "Strength: at 0.3 five sixths of the way to full equalisation with a low limit on contrast; "
      "higher values raise the limit. 0 is off"},
     &AdjustValues::lumaEqAmount},
    {{"luma-eq-radius", 0, 4096, kEq,
      "Size of a place, in pixels of the full picture; below 6 counts as 6. Usual: 60 to 300"},
     &AdjustValues::lumaEqRadius},
    {{"luma-eq-peak-gain", -10, 10, kEq,
      "Above 0 gives more contrast to the middle tones, below 0 to shadows and lights"},
     &AdjustValues::lumaEqPeakGain},
    {{"luma-eq-top-cut", 0, 0.95F, kEq,
      "Share of the output range that is cut off at the top: darkens the lights"},
     &AdjustValues::lumaEqTopCut},
    {{"luma-eq-floor", 0, 0.95F, kEq, "Lightness that black becomes: lifts the shadows"},
     &AdjustValues::lumaEqFloor},
    {{"luma-gamma", -4, 4, kTone,
      "Above 0 lightens (exponent 1 - g/4.5), below 0 darkens (exponent 1 - g); with fine detail "
      "on, acts on the base alone. 0 is off"},
     &AdjustValues::lumaGamma},
    {{"luma-detail-range", 0, 1, kDetail,
      "Height of a lightness step that counts as an edge and stays in the base; 0 turns this "
      "group off. Usual: 0.05 to 0.3"},
     &AdjustValues::lumaDetailRange},
    {{"luma-detail-radius", 0, 4096, kDetail,
      "Size of what counts as detail, in pixels of the full picture; below 6 counts as 6"},
     &AdjustValues::lumaDetailRadius},
    {{"luma-detail-gain", 0, 10, kDetail,
      "Gain of the detail: above 1 brings it out, below 1 smooths. 1 is neutral"},
     &AdjustValues::lumaDetailGain},
    {{"luma-detail-gamma", 0.1F, 4, kDetail,
      "Below 1 lifts weak detail towards the strongest, above 1 suppresses it. 1 is neutral"},
     &AdjustValues::lumaDetailGamma},
    {{"sharpen-amount", 0, 10, kSharp, "Above 1 sharpens, below 1 softens. 1 is neutral"},
     &AdjustValues::sharpenAmount},
    {{"sat-eq-amount", 0, 1, kColour,
      "Strength of the equalisation of saturation by place. 0 is off"},
     &AdjustValues::satEqAmount},
    {{"sat-eq-radius", 0, 4096, kColour,
      "Size of a place for it, in pixels of the full picture; below 6 counts as 6"},
     &AdjustValues::satEqRadius},
    {{"sat-contrast", 0, 4, kColour, "Gain of the saturation: 0 gives grey. 1 is neutral"},
     &AdjustValues::satContrast},
    {{"sat-gamma", 0.1F, 4, kColour,
      "Below 1 lifts pale colours towards the strongest, above 1 mutes them. 1 is neutral"},
     &AdjustValues::satGamma},
    {{"hue-shift", -1, 1, kColour, "Rotation of all hues, in turns. 0 is off"},
     &AdjustValues::hueShift},
}));

}  // namespace

std::span<const Field<AdjustValues>> adjustSettings() { return kFields; }

}  // namespace vx::settings
