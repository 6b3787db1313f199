#include "hosts/cli/commands/edge.h"

#include "vxicore26.h"

namespace vx::cli {

EdgeCommand::EdgeCommand(CLI::App& program)
    : TreatingCommand(program, "edge", "Sharpen edges and repair colour beside them") {
  addSettings(settings::bind(settings::edgeSettings(), values_));
  addExamples(
      "  vxicore edge photo.jpg -o sharper.jpg --preset soft-lens\n"
      "  vxicore edge stills/ -o repaired/ --preset chroma-bleed --chroma-shift-x -2\n",
      "All settings start neutral.");
}

void EdgeCommand::treat(const std::filesystem::path&, Picture& picture, Progress&) {
  Raster& raster = picture.raster;
  const bool deep = raster.depth() == 16;
  callLibrary([&] {
    return vxYUVEdgeRGB(deep, raster.pixels(), raster.rowStep(), raster.paddedWidth(),
                        raster.paddedHeight(), values_.baseGain, values_.rangeFloor, values_.blurX,
                        values_.blurY, values_.adaptiveGain, values_.chromaBlurX,
                        values_.chromaBlurY, static_cast<int>(values_.chromaShiftX),
                        static_cast<int>(values_.chromaShiftY), values_.alignX, values_.alignY,
                        values_.alignThreshold, 0);
  });
}

// Three float planes, and copies of them while the realignment reads and writes.
int EdgeCommand::libraryBytes() const {
  const bool aligns = values_.alignX > 0.4F || values_.alignY > 0.4F;
  return (aligns ? 6 : 3) * static_cast<int>(sizeof(float));
}

}  // namespace vx::cli
