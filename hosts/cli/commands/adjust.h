// The subcommand "adjust": blocks, noise, tone, detail, sharpness and colour by vxAdjustRgb.
#pragma once

#include "hosts/auto/auto_noise.h"
#include "hosts/cli/commands/treating_command.h"
#include "hosts/settings/adjust_settings.h"

namespace vx::cli {

class AdjustCommand final : public TreatingCommand {
 public:
  explicit AdjustCommand(CLI::App& program);

 private:
  void treat(const std::filesystem::path& input, Picture& picture, Progress& progress) override;
  int libraryBytes() const override;

  bool choosesSettings() const override { return values_.automatic != 0; }

  /// Chooses what is neutral in `values`.
  void choose(const VxAutoNoise& noise, Picture& picture, settings::AdjustValues& values) const;
  VxAutoNoise noiseOf(const std::filesystem::path& input, Picture& picture,
                      Progress& progress) const;

  settings::AdjustValues values_;
};

}  // namespace vx::cli
