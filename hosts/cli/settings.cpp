#include "hosts/cli/settings.h"

#include <array>
#include <charconv>
#include <cmath>

#include "hosts/cli/error.h"

namespace vx::cli {

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
  if (setting.whole && value != std::trunc(value)) {
    throw UsageError(where + ": " + std::string(text) + " is not a whole number");
  }
  return value;
}

std::string describeRange(const Setting& setting) {
  return "[" + formatNumber(setting.low) + " to " + formatNumber(setting.high) +
         (setting.whole ? ", whole" : "") + ", default " + formatNumber(setting.neutral) + "]";
}

std::string describe(SettingTable table) {
  std::string text;
  for (const Setting& setting : table) {
    if (*setting.value == setting.neutral) continue;
    if (!text.empty()) text += ", ";
    text += std::string(setting.name) + ' ' + formatNumber(*setting.value);
  }
  return text.empty() ? "neutral" : text;
}

}  // namespace vx::cli
