#include "hosts/cli/commands/presets.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <optional>
#include <set>

#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/output_file.h"

namespace vx::cli {
namespace {

namespace fs = std::filesystem;

using Items = std::vector<CLI::ConfigItem>;

constexpr const char* kCommandKey = "command";

// Beside the program in the build tree, in share/ of the prefix when installed. Each has a folder
// per subcommand.
std::vector<fs::path> presetFolders() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (error) return {};
  return {program.parent_path() / "presets",
          program.parent_path().parent_path() / "share" / "vxicore26" / "presets"};
}

std::vector<fs::path> entries(const fs::path& folder) {
  std::vector<fs::path> paths;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    paths.push_back(entry->path());
  }
  return paths;
}

std::optional<fs::path> findShipped(const std::string& name, const std::string& command) {
  if (name.find_first_of("/.") != std::string::npos) return std::nullopt;
  for (const fs::path& folder : presetFolders()) {
    const fs::path candidate = folder / command / (name + ".toml");
    std::error_code error;
    if (fs::is_regular_file(candidate, error)) return candidate;
  }
  return std::nullopt;
}

[[noreturn]] void refuseForeign(const std::string& name, const std::string& owner,
                                const std::string& command) {
  throw UsageError("--preset " + name + ": made for vxicore " + owner + ", not for " + command);
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

fs::path findPreset(const std::string& name, const std::string& command) {
  if (const auto shipped = findShipped(name, command)) return *shipped;
  std::error_code error;
  if (fs::is_regular_file(name, error)) return name;
  for (const fs::path& folder : presetFolders()) {
    for (const fs::path& entry : entries(folder)) {
      const std::string other = entry.filename().string();
      if (findShipped(name, other)) refuseForeign(name, other, command);
    }
  }
  const std::string shipped = listed(shippedPresets(command));
  throw UsageError("--preset " + name + ": no such file" +
                   (shipped.empty() ? "" : ", nor one of the shipped presets (" + shipped + ")"));
}

// Before any key is looked at: "made for another subcommand" says more than "no setting of this
// name".
void refuseOtherCommands(const Items& items, const std::string& name, const std::string& command) {
  for (const CLI::ConfigItem& item : items) {
    if (item.fullname() != kCommandKey || item.inputs.size() != 1) continue;
    if (item.inputs.front() != command) refuseForeign(name, item.inputs.front(), command);
  }
}

}  // namespace

std::vector<std::string> shippedPresets(const std::string& command) {
  std::set<std::string> names;
  for (const fs::path& folder : presetFolders()) {
    for (const fs::path& entry : entries(folder / command)) {
      if (entry.extension() == ".toml") names.insert(entry.stem().string());
    }
  }
  return {names.begin(), names.end()};
}

void applyPreset(const std::string& name, const std::string& command, SettingTable table) {
  const fs::path path = findPreset(name, command);
  std::ifstream file(path);
  if (!file) throw UsageError("--preset " + name + ": cannot read " + path.string());
  const Items items = CLI::ConfigTOML().from_config(file);
  refuseOtherCommands(items, name, command);
  std::set<std::string> seen;
  for (const CLI::ConfigItem& item : items) {
    const std::string key = item.fullname(), where = path.string() + ": " + key;
    const auto setting =
        std::find_if(table.begin(), table.end(), [&](const Setting& s) { return s.name == key; });
    if (setting == table.end() && key != kCommandKey)
      throw UsageError(where + ": " + command + " has no setting of this name");
    if (!seen.insert(key).second || item.inputs.size() != 1)
      throw UsageError(where + ": wants one value, once");
    if (key == kCommandKey) continue;
    *setting->value = parseSetting(*setting, item.inputs.front(), where);
  }
}

void savePreset(const fs::path& path, const std::string& command, SettingTable table, bool force) {
  std::string text = std::string(kCommandKey) + " = \"" + command + "\"\n";
  std::string_view group;
  for (const Setting& setting : table) {
    if (setting.group != group) text += "\n# " + std::string(setting.group) + "\n";
    group = setting.group;
    const std::string value = formatValue(setting, *setting.value);
    const bool word = !wordFor(setting, *setting.value).empty();
    text += std::string(setting.name) + " = " + (word ? '"' + value + '"' : value) + "\n";
  }
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  try {
    writeFile(path, {bytes, text.size()}, force);
  } catch (const FileError& error) {
    throw FileError(path.string() + ": " + error.what());
  }
}

}  // namespace vx::cli
