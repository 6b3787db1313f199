// The subcommand "adjust": blocks, noise, tone, detail, sharpness and colour by vxAdjustRgb.
#pragma once

#include <optional>

#include "hosts/cli/commands/noise_estimate.h"
#include "hosts/cli/commands/treating_command.h"
#include "hosts/cli/commands/wisdom.h"
#include "hosts/settings/adjust_settings.h"

namespace vx::cli {

class AdjustCommand final : public TreatingCommand {
 public:
  explicit AdjustCommand(CLI::App& program);
  int run() override;

 private:
  void treat(const std::filesystem::path& input, Picture& picture, Progress& progress) override;
  int libraryBytes() const override;

  NoiseFilter filter() const {
    return static_cast<NoiseFilter>(static_cast<int>(values_.denoiseMode));
  }
  int tripQuality(const std::filesystem::path& input, std::vector<std::string>& notes) const;
  float denoiseStrength(const NoiseProfile& profile, std::vector<std::string>& notes) const;

  settings::AdjustValues values_;

  std::optional<Wisdom> wisdom_;  // from the first picture on that needs plans
};

}  // namespace vx::cli
