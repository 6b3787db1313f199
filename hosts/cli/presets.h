// Presets: files of "key = value" lines (TOML), the keys those of the settings table.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hosts/cli/settings.h"

namespace vx::cli {

/// Names of the presets that ship with the program, sorted.
std::vector<std::string> shippedPresets();

/// Sets in `settings` what the preset `name` sets and leaves the rest. A plain word is a shipped
/// preset if there is one of that name, anything else a file. Throws UsageError for a missing file,
/// an unknown or repeated key, and a value that is no number in its range.
void applyPreset(const std::string& name, AdjustSettings& settings);

/// Writes all settings, so that the file gives the same result whatever the neutral set will be.
void savePreset(const std::filesystem::path& path, const AdjustSettings& settings, bool force);

}  // namespace vx::cli
