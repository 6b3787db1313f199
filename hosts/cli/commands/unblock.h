// The subcommand "unblock": removal of JPEG block artifacts by vxUnblock.
#pragma once

#include "hosts/cli/commands/treating_command.h"
#include "hosts/settings/unblock_settings.h"

namespace vx::cli {

class UnblockCommand final : public TreatingCommand {
 public:
  explicit UnblockCommand(CLI::App& program);

 private:
  void treat(const std::filesystem::path& input, Picture& picture, Progress& progress) override;
  int libraryBytes() const override;
  bool treatsWhenNeutral() const override { return true; }

  settings::UnblockValues values_;
};

}  // namespace vx::cli
