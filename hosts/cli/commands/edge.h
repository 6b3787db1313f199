// The subcommand "edge": sharpening at edges and repair of chroma by vxYUVEdgeRGB.
#pragma once

#include "hosts/cli/commands/treating_command.h"

namespace vx::cli {

class EdgeCommand final : public TreatingCommand {
 public:
  explicit EdgeCommand(CLI::App& program);

 private:
  void treat(const std::filesystem::path& input, Picture& picture, Progress& progress) override;
  int libraryBytes() const override;

  float baseGain_ = 1;
  float rangeFloor_ = 0.01F;
  float blurX_ = 0;
  float blurY_ = 0;
  float adaptiveGain_ = 0;
  float chromaBlurX_ = 0;
  float chromaBlurY_ = 0;
  float chromaShiftX_ = 0;
  float chromaShiftY_ = 0;
  float alignX_ = 0;
  float alignY_ = 0;
  float alignThreshold_ = 0;
};

}  // namespace vx::cli
