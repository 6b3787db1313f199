#include "hosts/settings/presets.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "hosts/settings/nearest.h"

namespace vx::settings {
namespace {

namespace fs = std::filesystem;

using Items = std::vector<CLI::ConfigItem>;

constexpr const char* kCommandKey = "command";
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";  // Windows' editors put it first

std::vector<fs::path> entries(const fs::path& folder) {
  std::vector<fs::path> paths;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    paths.push_back(entry->path());
  }
  return paths;
}

std::optional<fs::path> findNamed(const PresetFolders& folders, const std::string& name,
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

// The first sentence of the comment that a preset begins with.
std::string firstSentence(const fs::path& path) {
  std::ifstream file(path);
  std::string text, line;
  while (std::getline(file, line)) {
    if (line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    const std::size_t start = line.find_first_not_of("# ");
    if (!line.starts_with('#') || start == std::string::npos) break;
    text += (text.empty() ? "" : " ") + line.substr(start, line.find('\r') - start);
  }
  return text.substr(0, text.find(". "));
}

// What the user may have meant, and what there is.
std::string offer(const PresetFolders& folders, const std::string& name,
                  const std::string& command) {
  std::vector<std::string> names;
  for (const PresetFile& preset : presetsFor(folders, command)) names.push_back(preset.name);
  if (const std::string near = nearest(name, names); !near.empty())
    return "; did you mean " + near + "?";
  std::string text;
  for (const std::string& other : names) text += (text.empty() ? "" : ", ") + other;
  return text.empty() ? "" : ", nor one of the presets (" + text + ")";
}

fs::path findPreset(const PresetFolders& folders, const std::string& name,
                    const std::string& command) {
  if (const auto named = findNamed(folders, name, command)) return *named;
  std::error_code error;
  if (fs::is_regular_file(name, error)) return name;
  for (const fs::path& folder : folders) {
    for (const fs::path& entry : entries(folder)) {
      const std::string other = entry.filename().string();
      if (findNamed(folders, name, other)) refuseForeign(name, other, command);
    }
  }
  throw SettingError("preset " + name + ": no such file" + offer(folders, name, command));
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

PresetFolders presetFolders(const fs::path& program) {
  PresetFolders folders;
  const char* configuration = std::getenv("XDG_CONFIG_HOME");
  const char* home = std::getenv("HOME");
  const fs::path below = fs::path("vxicore26") / "presets";
  if (configuration != nullptr && *configuration == '/')
    folders.push_back(configuration / below);
  else if (home != nullptr && *home == '/')
    folders.push_back(home / fs::path(".config") / below);
  folders.push_back(program.parent_path() / "presets");
  folders.push_back(program.parent_path().parent_path() / "share" / below);
  return folders;
}

std::vector<PresetFile> presetsFor(const PresetFolders& folders, const std::string& command) {
  std::map<std::string, PresetFile> found;
  for (const fs::path& folder : folders) {
    for (const fs::path& entry : entries(folder / command)) {
      const std::string name = entry.stem().string();
      const bool word = name.find('.') == std::string::npos;
      if (word && entry.extension() == ".toml" && !found.contains(name))
        found[name] = {name, firstSentence(entry), entry};
    }
  }
  std::vector<PresetFile> presets;
  for (auto& [name, preset] : found) presets.push_back(std::move(preset));
  return presets;
}

void applyPreset(const PresetFolders& folders, const std::string& name, const std::string& command,
                 BoundTable table) {
  const fs::path path = findPreset(folders, name, command);
  std::ifstream file(path);
  if (!file) throw SettingError("preset " + name + ": cannot read " + path.string());
  char head[kByteOrderMark.size()] = {};
  file.read(head, sizeof head);
  if (std::string_view(head, sizeof head) != kByteOrderMark) file.clear(), file.seekg(0);
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
    if (*value == setting->neutral) continue;
    if (setting->group != group) text += "\n# " + std::string(setting->group) + "\n";
    group = setting->group;
    const std::string written = format(*setting, *value);
    const bool word = !wordFor(*setting, *value).empty();
    text += std::string(setting->name) + " = " + (word ? '"' + written + '"' : written) + "\n";
  }
  return text;
}

}  // namespace vx::settings
