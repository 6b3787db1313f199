#include "hosts/cli/presets.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <optional>
#include <set>

#include "hosts/cli/error.h"
#include "hosts/cli/output_file.h"

namespace vx::cli {
namespace {

namespace fs = std::filesystem;

// Beside the program in the build tree, in share/ of the prefix when installed.
std::vector<fs::path> presetFolders() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (error) return {};
  return {program.parent_path() / "presets",
          program.parent_path().parent_path() / "share" / "vxicore26" / "presets"};
}

std::optional<fs::path> findShipped(const std::string& name) {
  if (name.find_first_of("/.") != std::string::npos) return std::nullopt;
  for (const fs::path& folder : presetFolders()) {
    const fs::path candidate = folder / (name + ".toml");
    std::error_code error;
    if (fs::is_regular_file(candidate, error)) return candidate;
  }
  return std::nullopt;
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

fs::path findPreset(const std::string& name) {
  if (const auto shipped = findShipped(name)) return *shipped;
  std::error_code error;
  if (fs::is_regular_file(name, error)) return name;
  throw UsageError("--preset " + name + ": no such file, nor one of the shipped presets (" +
                   listed(shippedPresets()) + ")");
}

}  // namespace

std::vector<std::string> shippedPresets() {
  std::set<std::string> names;
  for (const fs::path& folder : presetFolders()) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      if (entry->path().extension() == ".toml") names.insert(entry->path().stem().string());
    }
  }
  return {names.begin(), names.end()};
}

void applyPreset(const std::string& name, AdjustSettings& settings) {
  const fs::path path = findPreset(name);
  std::ifstream file(path);
  if (!file) throw UsageError("--preset " + name + ": cannot read " + path.string());
  std::set<std::string> seen;
  for (const CLI::ConfigItem& item : CLI::ConfigTOML().from_config(file)) {
    const std::string key = item.fullname(), where = path.string() + ": " + key;
    const auto table = adjustSettings();
    const auto setting =
        std::find_if(table.begin(), table.end(), [&](const Setting& s) { return s.name == key; });
    if (setting == table.end()) throw UsageError(where + ": no setting of this name");
    if (!seen.insert(key).second || item.inputs.size() != 1)
      throw UsageError(where + ": wants one value, once");
    settings.*setting->value = parseSetting(*setting, item.inputs.front(), where);
  }
}

void savePreset(const fs::path& path, const AdjustSettings& settings, bool force) {
  std::string text = "# Settings of vxicore adjust\n";
  std::string_view group;
  for (const Setting& setting : adjustSettings()) {
    if (setting.group != group) text += "\n# " + std::string(setting.group) + "\n";
    group = setting.group;
    text += std::string(setting.name) + " = " + formatNumber(settings.*setting.value) + "\n";
  }
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  try {
    writeFile(path, {bytes, text.size()}, force);
  } catch (const FileError& error) {
    throw FileError(path.string() + ": " + error.what());
  }
}

}  // namespace vx::cli
