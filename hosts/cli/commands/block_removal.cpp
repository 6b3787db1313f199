#include "hosts/cli/commands/block_removal.h"

#include "hosts/auto/auto_jpeg.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/pictures/jpeg_table.h"

namespace vx::cli {

int fittingTripQuality(const std::filesystem::path& path, std::vector<std::string>& notes) {
  const auto table = jpegTable(path);
  if (!table) {
    notes.emplace_back("nothing known about its JPEG coding; blocks left alone");
    return 0;
  }
  const int quality = vxAutoJpegQuality(table->data());
  const std::string coded = "JPEG coded at quality " + std::to_string(quality);
  const int trips = vxAutoTripQuality(quality);
  notes.push_back(coded + (trips > 0 ? "; blocks removed at that quality"
                                     : ", fine enough; blocks left alone"));
  return trips;
}

void removeBlocks(Raster& raster, int quality, int jpegMode, int shiftStep) {
  raster.deepen();
  constexpr int kWhite = 32767;  // of the raster
  auto* samples = reinterpret_cast<unsigned short*>(raster.pixels());
  if (vxAutoRemoveBlocks(samples, raster.rowStep(), raster.paddedWidth(), raster.paddedHeight(),
                         kWhite, quality, jpegMode, shiftStep) == 0) {
    throw FileError(kNoMemory);
  }
}

}  // namespace vx::cli
