// The settings that a user can turn, as one table per subcommand: options, help, presets and the
// call itself are all read from it, so that a setting added there appears everywhere.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vx::cli {

/// A word that stands for a value.
struct Word {
  std::string_view name;
  float value;
};

/// For settings that the program can choose for each picture.
inline constexpr float kAuto = -1;
inline constexpr Word kAutoWord[] = {{"auto", kAuto}};

struct Setting {
  std::string_view name;  // of the option (after --) and of the key in a preset
  float* value;           // holds the neutral value when the table is made
  float low, high;        // of numbers, inclusive; words alone where low is above high
  std::string_view group;
  std::string_view help;
  bool whole = false;  // a whole number
  std::span<const Word> words = {};
  float neutral = *value;
};

using SettingTable = std::span<const Setting>;

/// The value of `text`: one of the setting's words, or a number, finite, within the range and whole
/// where it has to be; otherwise UsageError naming `where` (an option or a key).
float parseSetting(const Setting& setting, std::string_view text, const std::string& where);

/// The text of a value: its word, or the shortest number that reads back as the same float.
std::string formatValue(const Setting& setting, float value);
std::string formatNumber(float value);
/// The setting's word for a value; empty where it has none.
std::string_view wordFor(const Setting& setting, float value);

/// What stands behind the option in its help, as "X" or "auto|N".
std::string valueName(const Setting& setting);

/// The range and neutral value of a setting for its help.
std::string describeRange(const Setting& setting);

/// The settings that differ from neutral, as "name value, name value", or "defaults".
std::string describe(SettingTable table);

}  // namespace vx::cli
