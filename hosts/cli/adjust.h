// The subcommand "adjust": tone, detail, sharpness and colour by vxAdjustRgb.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hosts/cli/batch.h"
#include "hosts/cli/file_options.h"
#include "hosts/cli/settings.h"

namespace vx::cli {

class AdjustCommand {
 public:
  explicit AdjustCommand(CLI::App& program);

  /// Returns the exit code. Throws UsageError.
  int run();

 private:
  AdjustSettings settings() const;

  CLI::App* command_;
  FileOptions files_;
  std::vector<std::string> presets_;
  std::string savePreset_;
  std::map<std::string_view, std::string> values_;  // as typed, by the name of the setting
};

}  // namespace vx::cli
