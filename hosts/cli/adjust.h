// The subcommand "adjust": tone, detail, sharpness and colour by vxAdjustRgb.
#pragma once

#include "hosts/cli/command.h"

namespace vx::cli {

class AdjustCommand final : public Command {
 public:
  explicit AdjustCommand(CLI::App& program);

 private:
  void treat(Raster& raster, Progress& progress) const override;
  int libraryBytes() const override;

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
};

}  // namespace vx::cli
