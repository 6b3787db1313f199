// Presets: files of "key = value" lines (TOML). The keys are those of a command's table of
// settings, and the key `command` names the command ("adjust", "edge", "unblock").
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hosts/settings/setting.h"

namespace vx::settings {

/// Where shipped presets are looked for, in this order. Each folder has a subfolder per command.
using PresetFolders = std::vector<std::filesystem::path>;

/// The shipped presets of a program that lies beside `presets/` (in a build tree) or in the bin/ of
/// a prefix (when installed).
PresetFolders presetFoldersBeside(const std::filesystem::path& program);

/// Names of the presets for a command that ship with the product, sorted.
std::vector<std::string> shippedPresets(const PresetFolders& folders, const std::string& command);

/// Sets in the table what the preset `name` sets and leaves the rest. A plain word is a shipped
/// preset of `command` if there is one of that name, anything else a file. Throws SettingError for
/// a missing file, one of another command, an unknown or repeated key, and a value that parse()
/// refuses.
void applyPreset(const PresetFolders& folders, const std::string& name, const std::string& command,
                 BoundTable table);

/// The text of a preset file with all settings, so that it gives the same result whatever the
/// neutral set will be.
std::string presetText(const std::string& command, BoundTable table);

}  // namespace vx::settings
