#include "hosts/settings/setting.h"

#include <array>
#include <charconv>
#include <cmath>

namespace vx::settings {
namespace {

bool takesNumbers(const Setting& setting) { return setting.low <= setting.high; }

// "auto, fast or " before what else can be given.
std::string listWords(const Setting& setting, const std::string& last) {
  std::string text;
  for (const Word& word : setting.words) {
    const bool end = last.empty() && &word == &setting.words.back();
    if (!text.empty()) text += end ? " or " : ", ";
    text += word.name;
  }
  if (!last.empty()) text += (text.empty() ? "" : " or ") + last;
  return text;
}

std::string formatNumber(float value) {
  std::array<char, 32> text{};
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
  return {text.data(), result.ptr};
}

}  // namespace

std::string_view wordFor(const Setting& setting, float value) {
  for (const Word& word : setting.words) {
    if (word.value == value) return word.name;
  }
  return {};
}

std::string format(const Setting& setting, float value) {
  const std::string_view word = wordFor(setting, value);
  return word.empty() ? formatNumber(value) : std::string(word);
}

std::string valueName(const Setting& setting) {
  std::string name;
  for (const Word& word : setting.words) name += std::string(word.name) + '|';
  if (!takesNumbers(setting)) return name.substr(0, name.size() - 1);
  return name + (setting.whole ? "N" : "X");
}

float parse(const Setting& setting, std::string_view text, const std::string& where) {
  for (const Word& word : setting.words) {
    if (word.name == text) return word.value;
  }
  if (text.starts_with('+')) text.remove_prefix(1);
  float value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool number = result.ec == std::errc() && result.ptr == text.data() + text.size();
  if (!number || !std::isfinite(value) || !takesNumbers(setting)) {
    throw SettingError(where + ": '" + std::string(text) + "' is not " +
                       listWords(setting, takesNumbers(setting) ? "a number" : ""));
  }
  if (value < setting.low || value > setting.high) {
    throw SettingError(where + ": " + std::string(text) + " is not in the range " +
                       formatNumber(setting.low) + " to " + formatNumber(setting.high));
  }
  if (setting.whole && value != std::trunc(value)) {
    throw SettingError(where + ": " + std::string(text) + " is not a whole number");
  }
  return value;
}

std::string describeRange(const Setting& setting) {
  std::string numbers;
  if (takesNumbers(setting)) {
    numbers = formatNumber(setting.low) + " to " + formatNumber(setting.high);
    if (setting.whole) numbers += ", whole";
  }
  return "[" + listWords(setting, numbers) + ", default " + format(setting, setting.neutral) + "]";
}

Texts texts(BoundTable table) {
  Texts result;
  for (const auto& [setting, value] : table)
    if (*value != setting->neutral) result.emplace_back(setting->name, format(*setting, *value));
  return result;
}

std::string inWords(const Texts& texts) {
  std::string line;
  for (const auto& [name, value] : texts) line += (line.empty() ? "" : ", ") + name + ' ' + value;
  return line.empty() ? "defaults" : line;
}

}  // namespace vx::settings
