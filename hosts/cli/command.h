// What all subcommands share: files in and out, presets, and an option for each of their settings.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "hosts/cli/batch.h"
#include "hosts/cli/error.h"
#include "hosts/cli/file_options.h"
#include "hosts/cli/settings.h"

namespace vx::cli {

inline constexpr const char* kNoMemory = "not enough memory to enhance a picture of this size";

/// The result of a call of the library, which lets nothing out but a failed allocation; that
/// becomes a FileError.
template <typename Call>
int callLibrary(const Call& call) {
  try {
    return call();
  } catch (...) {
    throw FileError(kNoMemory);
  }
}

/// One subcommand. A derived class holds the settings, hands their table to addSettings() in its
/// constructor, and does the work in treat().
class Command {
 public:
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command() = default;

  bool chosen() const { return command_->parsed(); }
  /// Returns the exit code. Throws UsageError.
  int run();

 protected:
  Command(CLI::App& program, const std::string& name, const std::string& summary);

  void addPreviewOption() { cli::addPreviewOption(*command_, files_); }
  void addSettings(std::vector<Setting> table);
  /// Example command lines, two spaces before and a line break after each.
  void addExamples(const std::string& examples);

  int previewScale() const { return files_.previewScale; }

 private:
  /// Changes the raster in place. Throws FileError or Cancelled.
  virtual void treat(Raster& raster, Progress& progress) const = 0;
  /// Bytes per pixel that the library takes beside the raster, for the settings in force.
  virtual int libraryBytes() const = 0;

  void applySettings();

  std::string name_;
  CLI::App* command_;
  FileOptions files_;
  std::vector<std::string> presets_;
  std::string savePreset_;
  std::vector<Setting> table_;
  std::map<std::string_view, std::string> typed_;  // by the name of the setting
};

}  // namespace vx::cli
