#include "hosts/cli/commands/unblock.h"

#include "hosts/cli/pictures/jpeg_quality.h"
#include "vxicore26.h"

namespace vx::cli {
namespace {

constexpr std::string_view kTrips = "Round trips (JPEG coding and decoding at shifted block grids)";

// The two halves of vxUnblock's jpegMode.
constexpr Word kChroma[] = {{"444", 0}, {"422", 1}, {"420", 2}};
constexpr Word kColours[] = {{"ycbcr", 0}, {"rgb", 16}};

}  // namespace

UnblockCommand::UnblockCommand(CLI::App& program)
    : TreatingCommand(program, "unblock", "Remove the block artifacts of JPEG") {
  addSettings({
      {"trip-quality", &quality_, 1, 99, kTrips,
       "JPEG quality of the trips: the lower, the stronger; best near that of the file. auto takes "
       "it from the quantisation tables of the file, tells it, and leaves pictures alone that were "
       "coded above 86 or are no JPEG",
       true, kAutoWord},
      {"trip-chroma", &chroma_, 1, 0, kTrips,
       "Sampling of the colour in the trips: full (best, also for files with reduced colour), half "
       "width, or half width and height",
       false, kChroma},
      {"trip-colours", &colours_, 1, 0, kTrips, "Colour space of the trips", false, kColours},
      {"shift-step", &shiftStep_, 1, 8, kTrips,
       "Pixels between two shifts of the grid: 1 makes 64 trips, 2 makes 16, 4 makes 4, 8 one; "
       "fewer are faster and leave more of the blocks",
       true},
  });
  addExamples(
      "  vxicore unblock old.jpg -o smooth.png\n"
      "  vxicore unblock archive/ -o smooth/ --trip-quality 40 --shift-step 2\n",
      "Works on 8 bits: 16-bit samples lose their lower half.");
}

void UnblockCommand::treat(const std::filesystem::path& input, Picture& picture, Progress&) {
  int quality = static_cast<int>(quality_);
  if (quality_ == kAuto) {
    const auto fitting = fittingTripQuality(input, picture.notes);
    if (!fitting) return;
    quality = *fitting;
  }
  Raster& raster = picture.raster;
  const bool deep = raster.depth() == 16;
  const int jpegMode = static_cast<int>(chroma_) | static_cast<int>(colours_);
  callLibrary([&] {
    return vxUnblock(deep, raster.pixels(), 3, raster.rowStep(), raster.paddedWidth(),
                     raster.paddedHeight(), quality, jpegMode, static_cast<int>(shiftStep_), 0);
  });
}

// A copy of the picture in bytes; strips of it take some megabytes.
int UnblockCommand::libraryBytes() const { return 3; }

}  // namespace vx::cli
