// The subcommand "presets": lists the presets that have a name.
#pragma once

#include "hosts/cli/commands/command.h"
#include "hosts/settings/presets.h"

namespace vx::cli {

/// The folders of this program's user and installation.
settings::PresetFolders presetFolders();

class PresetsCommand final : public Command {
 public:
  explicit PresetsCommand(CLI::App& program);
  int run() override;
};

}  // namespace vx::cli
