#include "hosts/cli/commands/unblock.h"

#include "hosts/cli/pictures/jpeg_quality.h"
#include "vxicore26.h"

namespace vx::cli {

UnblockCommand::UnblockCommand(CLI::App& program)
    : TreatingCommand(program, "unblock", "Remove the block artifacts of JPEG") {
  addSettings(settings::bind(settings::unblockSettings(), values_));
  addExamples(
      "  vxicore unblock old.jpg -o smooth.png\n"
      "  vxicore unblock archive/ -o smooth/ --trip-quality 40 --shift-step 2\n",
      "Works on 8 bits: 16-bit samples lose their lower half.");
}

void UnblockCommand::treat(const std::filesystem::path& input, Picture& picture, Progress&) {
  int quality = static_cast<int>(values_.quality);
  if (values_.quality == settings::kAuto) {
    const auto fitting = fittingTripQuality(input, picture.notes);
    if (!fitting) return;
    quality = *fitting;
  }
  Raster& raster = picture.raster;
  const bool deep = raster.depth() == 16;
  const int jpegMode = static_cast<int>(values_.chroma) | static_cast<int>(values_.colours);
  callLibrary([&] {
    return vxUnblock(deep, raster.pixels(), 3, raster.rowStep(), raster.paddedWidth(),
                     raster.paddedHeight(), quality, jpegMode, static_cast<int>(values_.shiftStep),
                     0);
  });
}

// A copy of the picture in bytes; strips of it take some megabytes.
int UnblockCommand::libraryBytes() const { return 3; }

}  // namespace vx::cli
