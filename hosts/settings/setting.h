// A setting that a user can turn: its name, range, neutral value and texts. One table per service
// (adjust_settings.h and its siblings) is the source of options, help, presets, dialogs and keyword
// arguments in all hosts, so that a setting added there appears everywhere.
#pragma once

#include <array>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vx::settings {

/// A setting, a value or a preset that does not exist. The text is a complete reason on one line.
class SettingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A word that stands for a value.
struct Word {
  std::string_view name;
  float value;
};

/// For settings that a host can choose for each picture.
inline constexpr float kAuto = -1;
inline constexpr Word kAutoWord[] = {{"auto", kAuto}};

/// For settings that are switched on by their name alone.
inline constexpr Word kSwitchWords[] = {{"off", 0}, {"on", 1}};

struct Setting {
  std::string_view name;   // in lower case with hyphens; also the key in a preset
  float low, high;         // of numbers, inclusive; words alone where low is above high
  std::string_view group;  // the heading that it stands under
  std::string_view help;   // one or more sentences without the last full stop
  bool whole = false;      // a whole number
  std::span<const Word> words = {};
  float neutral = 0;  // comes from the struct of values, see Field
};

/// A row of a service's table. `Values` is a struct of floats whose initialisers are the neutral
/// set.
template <typename Values>
struct Field {
  Setting setting;
  float Values::*member;
};

/// The rows with the neutral values of their members.
template <typename Values, std::size_t kCount>
constexpr std::array<Field<Values>, kCount> withNeutral(std::array<Field<Values>, kCount> fields) {
  for (Field<Values>& field : fields) field.setting.neutral = Values{}.*field.member;
  return fields;
}

/// A setting together with the place of its value, for code that serves all tables alike.
struct BoundSetting {
  const Setting* setting;
  float* value;
};
using BoundTable = std::span<const BoundSetting>;

/// `fields` and `values` have to outlive the result.
template <typename Values>
std::vector<BoundSetting> bind(std::span<const Field<Values>> fields, Values& values) {
  std::vector<BoundSetting> table;
  table.reserve(fields.size());
  for (const Field<Values>& field : fields) {
    table.push_back({&field.setting, &(values.*field.member)});
  }
  return table;
}

inline bool isSwitch(const Setting& setting) { return setting.words.data() == kSwitchWords; }

/// The value of `text`: one of the setting's words, or a number, finite, within the range and whole
/// where it has to be. Otherwise throws SettingError, which names `where` (an option or a key).
float parse(const Setting& setting, std::string_view text, const std::string& where);

/// The text of a value: its word, or the shortest number that reads back as the same float.
std::string format(const Setting& setting, float value);
/// The setting's word for a value; empty where it has none.
std::string_view wordFor(const Setting& setting, float value);

/// What stands for the value in a help text, as "X" or "auto|N".
std::string valueName(const Setting& setting);

/// The range and neutral value of a setting for its help.
std::string describeRange(const Setting& setting);

using Texts = std::vector<std::pair<std::string, std::string>>;

/// The settings that differ from neutral, in the order of the table: name and value.
Texts texts(BoundTable table);

/// As "name value, name value", or "defaults".
std::string inWords(const Texts& texts);

}  // namespace vx::settings
