#include "hosts/cli/commands/block_removal.h"

#include "hosts/auto/auto_jpeg.h"
#include "hosts/cli/commands/command.h"
#include "hosts/cli/pictures/jpeg_header.h"

namespace vx::cli {
namespace {

// Blocks of it cannot be seen at the usual distance; files are half as large as at the usual 92.
constexpr int kSmoothQuality = 80;

}  // namespace

int fittingTripQuality(const std::filesystem::path& path, std::vector<std::string>& notes) {
  const auto header = jpegHeader(path);
  if (!header) {
    notes.emplace_back("nothing known about its JPEG coding; blocks left alone");
    return 0;
  }
  const int quality = vxAutoJpegQuality(header->lumaSteps.data());
  const std::string coded = "JPEG coded at quality " + std::to_string(quality);
  const int trips = vxAutoTripQuality(quality);
  notes.push_back(coded + (trips > 0 ? "; blocks removed at that quality"
                                     : ", fine enough; blocks left alone"));
  return trips;
}

void removeBlocks(Picture& picture, int quality, int jpegMode, int shiftStep) {
  Raster& raster = picture.raster;
  raster.deepen();
  constexpr int kWhite = 32767;  // of the raster
  auto* samples = reinterpret_cast<unsigned short*>(raster.pixels());
  if (vxAutoRemoveBlocks(samples, raster.rowStep(), raster.paddedWidth(), raster.paddedHeight(),
                         kWhite, quality, jpegMode, shiftStep) == 0) {
    throw FileError(kNoMemory);
  }
  picture.leastQuality = kSmoothQuality;
}

}  // namespace vx::cli
