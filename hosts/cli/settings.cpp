#include "hosts/cli/settings.h"

#include <array>
#include <charconv>
#include <cmath>

#include "hosts/cli/error.h"

namespace vx::cli {
namespace {

constexpr std::string_view kEq = "Local contrast of lightness (histogram equalisation by place)";
constexpr std::string_view kTone = "Brightness";
constexpr std::string_view kDetail = "Fine detail of lightness (against an edge-preserving base)";
constexpr std::string_view kSharp = "Sharpness";
constexpr std::string_view kColour = "Colour";

// Ranges end where the formulas stop making pictures: a gamma of 4.5 is an exponent of 0, a top cut
// or floor of 1 leaves no output range. Radii of less than 6 pixels (after the preview reduction)
// count as 6 in the library.
constexpr std::array<Setting, 16> kSettings{{
    {"luma-eq-amount", &AdjustSettings::lumaEqAmount, 0, 1, kEq,
     "Strength: at 0.3 five sixths of the way to full equalisation with a low limit on contrast; "
     "higher values raise the limit. 0 is off"},
    {"luma-eq-radius", &AdjustSettings::lumaEqRadius, 0, 4096, kEq,
     "Size of a place, in pixels of the full picture; below 6 counts as 6. Usual: 60 to 300"},
    {"luma-eq-peak-gain", &AdjustSettings::lumaEqPeakGain, -10, 10, kEq,
     "Above 0 gives more contrast to the middle tones, below 0 to shadows and lights"},
    {"luma-eq-top-cut", &AdjustSettings::lumaEqTopCut, 0, 0.95F, kEq,
     "Share of the output range that is cut off at the top: darkens the lights"},
    {"luma-eq-floor", &AdjustSettings::lumaEqFloor, 0, 0.95F, kEq,
     "Lightness that black becomes: lifts the shadows"},
    {"luma-gamma", &AdjustSettings::lumaGamma, -4, 4, kTone,
     "Above 0 lightens (exponent 1 - g/4.5), below 0 darkens (exponent 1 - g); with fine detail "
     "on, "
     "acts on the base alone. 0 is off"},
    {"luma-detail-range", &AdjustSettings::lumaDetailRange, 0, 1, kDetail,
     "Height of a lightness step that counts as an edge and stays in the base; 0 turns this group "
     "off. Usual: 0.05 to 0.3"},
    {"luma-detail-radius", &AdjustSettings::lumaDetailRadius, 0, 4096, kDetail,
     "Size of what counts as detail, in pixels of the full picture; below 6 counts as 6"},
    {"luma-detail-gain", &AdjustSettings::lumaDetailGain, 0, 10, kDetail,
     "Gain of the detail: above 1 brings it out, below 1 smooths. 1 is neutral"},
    {"luma-detail-gamma", &AdjustSettings::lumaDetailGamma, 0.1F, 4, kDetail,
     "Below 1 lifts weak detail towards the strongest, above 1 suppresses it. 1 is neutral"},
    {"sharpen-amount", &AdjustSettings::sharpenAmount, 0, 10, kSharp,
     "Above 1 sharpens, below 1 softens. 1 is neutral"},
    {"sat-eq-amount", &AdjustSettings::satEqAmount, 0, 1, kColour,
     "Strength of the equalisation of saturation by place. 0 is off"},
    {"sat-eq-radius", &AdjustSettings::satEqRadius, 0, 4096, kColour,
     "Size of a place for it, in pixels of the full picture; below 6 counts as 6"},
    {"sat-contrast", &AdjustSettings::satContrast, 0, 4, kColour,
     "Gain of the saturation: 0 gives grey. 1 is neutral"},
    {"sat-gamma", &AdjustSettings::satGamma, 0.1F, 4, kColour,
     "Below 1 lifts pale colours towards the strongest, above 1 mutes them. 1 is neutral"},
    {"hue-shift", &AdjustSettings::hueShift, -1, 1, kColour,
     "Rotation of all hues, in turns. 0 is off"},
}};

}  // namespace

std::span<const Setting> adjustSettings() { return kSettings; }

std::string formatNumber(float value) {
  std::array<char, 32> text{};
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
  return {text.data(), result.ptr};
}

float parseSetting(const Setting& setting, std::string_view text, const std::string& where) {
  if (text.starts_with('+')) text.remove_prefix(1);
  float value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool number = result.ec == std::errc() && result.ptr == text.data() + text.size();
  if (!number || !std::isfinite(value)) {
    throw UsageError(where + ": '" + std::string(text) + "' is not a number");
  }
  if (value < setting.low || value > setting.high) {
    throw UsageError(where + ": " + std::string(text) + " is not in the range " +
                     formatNumber(setting.low) + " to " + formatNumber(setting.high));
  }
  return value;
}

std::string describe(const AdjustSettings& settings) {
  std::string text;
  for (const Setting& setting : kSettings) {
    const float value = settings.*setting.value;
    if (value == setting.neutral()) continue;
    if (!text.empty()) text += ", ";
    text += std::string(setting.name) + ' ' + formatNumber(value);
  }
  return text.empty() ? "neutral" : text;
}

}  // namespace vx::cli
