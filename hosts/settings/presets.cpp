#include "hosts/settings/presets.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <optional>
#include <set>

namespace vx::settings {
namespace {

namespace fs = std::filesystem;

using Items = std::vector<CLI::ConfigItem>;

constexpr const char* kCommandKey = "command";

std::vector<fs::path> entries(const fs::path& folder) {
  std::vector<fs::path> paths;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    paths.push_back(entry->path());
  }
  return paths;
}

std::optional<fs::path> findShipped(const PresetFolders& folders, const std::string& name,
                                    const std::string& command) {
  if (name.find_first_of("/.") != std::string::npos) return std::nullopt;
  for (const fs::path& folder : folders) {
    const fs::path candidate = folder / command / (name + ".toml");
    std::error_code error;
    if (fs::is_regular_file(candidate, error)) return candidate;
  }
  return std::nullopt;
}

[[noreturn]] void refuseForeign(const std::string& name, const std::string& owner,
                                const std::string& command) {
  throw SettingError("preset " + name + ": made for " + owner + ", not for " + command);
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

fs::path findPreset(const PresetFolders& folders, const std::string& name,
                    const std::string& command) {
  if (const auto shipped = findShipped(folders, name, command)) return *shipped;
  std::error_code error;
  if (fs::is_regular_file(name, error)) return name;
  for (const fs::path& folder : folders) {
    for (const fs::path& entry : entries(folder)) {
      const std::string other = entry.filename().string();
      if (findShipped(folders, name, other)) refuseForeign(name, other, command);
    }
  }
  const std::string shipped = listed(shippedPresets(folders, command));
  throw SettingError("preset " + name + ": no such file" +
                     (shipped.empty() ? "" : ", nor one of the shipped presets (" + shipped + ")"));
}

// Before any key is looked at: "made for another command" says more than "no setting of this
// name".
void refuseOtherCommands(const Items& items, const std::string& name, const std::string& command) {
  for (const CLI::ConfigItem& item : items) {
    if (item.fullname() != kCommandKey || item.inputs.size() != 1) continue;
    if (item.inputs.front() != command) refuseForeign(name, item.inputs.front(), command);
  }
}

}  // namespace

PresetFolders presetFoldersBeside(const fs::path& program) {
  return {program.parent_path() / "presets",
          program.parent_path().parent_path() / "share" / "vxicore26" / "presets"};
}

std::vector<std::string> shippedPresets(const PresetFolders& folders, const std::string& command) {
  std::set<std::string> names;
  for (const fs::path& folder : folders) {
    for (const fs::path& entry : entries(folder / command)) {
      if (entry.extension() == ".toml") names.insert(entry.stem().string());
    }
  }
  return {names.begin(), names.end()};
}

void applyPreset(const PresetFolders& folders, const std::string& name, const std::string& command,
                 BoundTable table) {
  const fs::path path = findPreset(folders, name, command);
  std::ifstream file(path);
  if (!file) throw SettingError("preset " + name + ": cannot read " + path.string());
  const Items items = CLI::ConfigTOML().from_config(file);
  refuseOtherCommands(items, name, command);
  std::set<std::string> seen;
  for (const CLI::ConfigItem& item : items) {
    const std::string key = item.fullname(), where = path.string() + ": " + key;
    const auto row = std::find_if(table.begin(), table.end(),
                                  [&](const BoundSetting& s) { return s.setting->name == key; });
    if (row == table.end() && key != kCommandKey)
      throw SettingError(where + ": " + command + " has no setting of this name");
    if (!seen.insert(key).second || item.inputs.size() != 1)
      throw SettingError(where + ": wants one value, once");
    if (key == kCommandKey) continue;
    *row->value = parse(*row->setting, item.inputs.front(), where);
  }
}

std::string presetText(const std::string& command, BoundTable table) {
  std::string text = std::string(kCommandKey) + " = \"" + command + "\"\n";
  std::string_view group;
  for (const auto& [setting, value] : table) {
    if (setting->group != group) text += "\n# " + std::string(setting->group) + "\n";
    group = setting->group;
    const std::string written = format(*setting, *value);
    const bool word = !wordFor(*setting, *value).empty();
    text += std::string(setting->name) + " = " + (word ? '"' + written + '"' : written) + "\n";
  }
  return text;
}

}  // namespace vx::settings
