// The settings that a user can turn, as one table per subcommand: options, help, presets and the
// call itself are all read from it, so that a setting added there appears everywhere.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vx::cli {

struct Setting {
  std::string_view name;  // of the option (after --) and of the key in a preset
  float* value;           // holds the neutral value when the table is made
  float low, high;        // inclusive
  std::string_view group;
  std::string_view help;
  bool whole = false;  // a whole number
  float neutral = *value;
};

using SettingTable = std::span<const Setting>;

/// The number in `text` when it is one, finite, within the setting's range and whole where it has
/// to be; otherwise UsageError naming `where` (an option or a key).
float parseSetting(const Setting& setting, std::string_view text, const std::string& where);

/// The shortest text that reads back as the same float.
std::string formatNumber(float value);

/// The range and neutral value of a setting for its help.
std::string describeRange(const Setting& setting);

/// The settings that differ from neutral, as "name value, name value", or "neutral".
std::string describe(SettingTable table);

}  // namespace vx::cli
