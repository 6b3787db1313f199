// Presets: files of "key = value" lines (TOML). The keys are those of a command's table of
// settings, and the key `command` names the command ("adjust", "edge", "unblock").
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hosts/settings/setting.h"

namespace vx::settings {

/// Where presets are looked for by name, in this order. Each folder has a subfolder per command.
using PresetFolders = std::vector<std::filesystem::path>;

/// The user's own presets (vxicore26/presets in XDG_CONFIG_HOME or ~/.config), then the shipped
/// ones of a program that lies beside `presets/` (in a build tree) or in the bin/ of a prefix (when
/// installed).
PresetFolders presetFolders(const std::filesystem::path& program);

struct PresetFile {
  std::string name;   // without folder and extension
  std::string title;  // the first sentence of the comment on top; empty: none
  std::filesystem::path path;
};

/// The presets for a command, sorted by name; of two of one name that of the first folder.
std::vector<PresetFile> presetsFor(const PresetFolders& folders, const std::string& command);

/// Sets in the table what the preset `name` sets and leaves the rest. A plain word is a preset of
/// `command` in the folders if there is one of that name, anything else a file. Throws SettingError
/// for a missing file, one of another command, an unknown or repeated key, and a value that parse()
/// refuses.
void applyPreset(const PresetFolders& folders, const std::string& name, const std::string& command,
                 BoundTable table);

/// The text of a preset file with the settings that are not neutral, so that presets combine.
std::string presetText(const std::string& command, BoundTable table);

}  // namespace vx::settings
