// The settings of vxAdjustRgb that a user can turn, as one table: options, help, presets and the
// call itself are all read from it, so that a setting added here appears everywhere.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vx::cli {

/// The neutral set: with it the library changes nothing but float rounding.
struct AdjustSettings {
  float lumaEqAmount = 0;
  float lumaEqRadius = 0;
  float lumaEqPeakGain = 0;
  float lumaGamma = 0;
  float lumaEqTopCut = 0;
  float lumaEqFloor = 0;
  float lumaDetailRange = 0;
  float lumaDetailRadius = 0;
  float lumaDetailGamma = 1;
  float lumaDetailGain = 1;
  float sharpenAmount = 1;
  float satEqAmount = 0;
  float satEqRadius = 0;
  float satContrast = 1;
  float satGamma = 1;
  float hueShift = 0;

  bool operator==(const AdjustSettings&) const = default;
};

struct Setting {
  std::string_view name;  // of the option (after --) and of the key in a preset
  float AdjustSettings::*value;
  float low, high;  // inclusive
  std::string_view group;
  std::string_view help;

  float neutral() const { return AdjustSettings{}.*value; }
};

std::span<const Setting> adjustSettings();

/// The number in `text` when it is one, finite and within the setting's range; otherwise UsageError
/// naming `where` (an option or a key).
float parseSetting(const Setting& setting, std::string_view text, const std::string& where);

/// The shortest text that reads back as the same float.
std::string formatNumber(float value);

/// The settings that differ from neutral, as "name value, name value", or "neutral".
std::string describe(const AdjustSettings& settings);

}  // namespace vx::cli
