// Presets: files of "key = value" lines (TOML). The keys are those of a subcommand's table of
// settings, and `command` names the subcommand.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hosts/cli/commands/settings.h"

namespace vx::cli {

/// Names of the presets for a subcommand that ship with the program, sorted.
std::vector<std::string> shippedPresets(const std::string& command);

/// Sets in the table's settings what the preset `name` sets and leaves the rest. A plain word is a
/// shipped preset of `command` if there is one of that name, anything else a file. Throws
/// UsageError for a missing file, one of another subcommand, an unknown or repeated key, and a
/// value that parseSetting() refuses.
void applyPreset(const std::string& name, const std::string& command, SettingTable table);

/// Writes all settings, so that the file gives the same result whatever the neutral set will be.
void savePreset(const std::filesystem::path& path, const std::string& command, SettingTable table,
                bool force);

}  // namespace vx::cli
