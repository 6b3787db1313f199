// The subcommand "unblock": removal of JPEG block artifacts by vxUnblock.
#pragma once

#include "hosts/cli/commands/treating_command.h"

namespace vx::cli {

class UnblockCommand final : public TreatingCommand {
 public:
  explicit UnblockCommand(CLI::App& program);

 private:
  void treat(const std::filesystem::path& input, Picture& picture, Progress& progress) override;
  int libraryBytes() const override;

  float quality_ = kAuto;
  float chroma_ = 0;
  float colours_ = 0;
  float shiftStep_ = 1;
};

}  // namespace vx::cli
