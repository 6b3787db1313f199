// The subcommand "noise": reports the noise of pictures.
#pragma once

#include "hosts/cli/commands/command.h"
#include "hosts/cli/commands/file_options.h"

namespace vx::cli {

class NoiseCommand final : public Command {
 public:
  explicit NoiseCommand(CLI::App& program);
  int run() override;

 private:
  FileOptions files_;
  bool json_ = false;
};

}  // namespace vx::cli
