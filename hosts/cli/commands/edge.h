// The subcommand "edge": sharpening at edges and repair of chroma by vxYUVEdgeRGB.
#pragma once

#include "hosts/cli/commands/treating_command.h"
#include "hosts/settings/edge_settings.h"

namespace vx::cli {

class EdgeCommand final : public TreatingCommand {
 public:
  explicit EdgeCommand(CLI::App& program);

 private:
  void treat(const std::filesystem::path& input, Picture& picture, Progress& progress) override;
  int libraryBytes() const override;

  settings::EdgeValues values_;
};

}  // namespace vx::cli
