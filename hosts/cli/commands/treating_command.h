// What the subcommands that make better pictures share: files in and out, presets, and an option
// for each of their settings.
#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "hosts/cli/commands/batch.h"
#include "hosts/cli/commands/command.h"
#include "hosts/settings/presets.h"

namespace vx::cli {

/// A derived class holds the values, hands the table bound to them to addSettings() in its
/// constructor, and does the work in treat().
class TreatingCommand : public Command {
 public:
  int run() override;

 protected:
  TreatingCommand(CLI::App& program, const std::string& name, const std::string& summary);

  void addPreviewOption() { cli::addPreviewOption(app(), files_); }
  void addSettings(std::vector<settings::BoundSetting> table);

  int previewScale() const { return files_.previewScale; }
  bool acceptsDamage() const { return files_.acceptDamage; }

  /// Whether what treat() chooses for the one picture is to be saved as a preset: it then changes
  /// the bound values.
  bool keepsChoice() const;

 private:
  /// Changes the raster in place; what the user should know goes to the picture's notes. Throws
  /// FileError or Cancelled.
  virtual void treat(const std::filesystem::path& input, Picture& picture, Progress& progress) = 0;
  /// Bytes per pixel that the library takes beside the raster, for the settings in force.
  virtual int libraryBytes() const = 0;

  /// Whether treat() chooses settings for each picture.
  virtual bool choosesSettings() const { return false; }

  /// Whether the neutral settings do something.
  virtual bool treatsWhenNeutral() const { return false; }

  /// Whether no setting was asked for.
  bool neutral() const;
  void applySettings();
  /// The preset, if one is wanted. Tells why it could not be written.
  bool save() const;

  FileOptions files_;
  std::vector<std::string> presets_;
  std::string savePreset_;
  settings::PresetFolders presetFolders_;
  std::vector<settings::BoundSetting> table_;
  std::map<std::string_view, std::string> typed_;  // by the name of the setting
};

}  // namespace vx::cli
