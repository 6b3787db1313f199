// The subcommand "adjust": blocks, noise, tone, detail, sharpness and colour by vxAdjustRgb.
#pragma once

#include <optional>

#include "hosts/cli/commands/noise_estimate.h"
#include "hosts/cli/commands/treating_command.h"
#include "hosts/cli/commands/wisdom.h"

namespace vx::cli {

class AdjustCommand final : public TreatingCommand {
 public:
  explicit AdjustCommand(CLI::App& program);
  int run() override;

 private:
  void treat(const std::filesystem::path& input, Picture& picture, Progress& progress) override;
  int libraryBytes() const override;

  NoiseFilter filter() const { return static_cast<NoiseFilter>(static_cast<int>(denoiseMode_)); }
  float unblockStrength(const std::filesystem::path& input, std::vector<std::string>& notes) const;
  float denoiseStrength(const NoiseProfile& profile, std::vector<std::string>& notes) const;

  // The neutral set: with it the library changes nothing but float rounding.
  float lumaEqAmount_ = 0;
  float lumaEqRadius_ = 0;
  float lumaEqPeakGain_ = 0;
  float lumaEqTopCut_ = 0;
  float lumaEqFloor_ = 0;
  float lumaGamma_ = 0;
  float lumaDetailRange_ = 0;
  float lumaDetailRadius_ = 0;
  float lumaDetailGain_ = 1;
  float lumaDetailGamma_ = 1;
  float sharpenAmount_ = 1;
  float satEqAmount_ = 0;
  float satEqRadius_ = 0;
  float satContrast_ = 1;
  float satGamma_ = 1;
  float hueShift_ = 0;
  float denoise_ = 0;
  float denoiseMode_ = 0;
  float grain_ = 0;
  float unblock_ = 0;

  std::optional<Wisdom> wisdom_;  // from the first picture on that needs plans
};

}  // namespace vx::cli
