#include "hosts/settings/unblock_settings.h"

namespace vx::settings {
namespace {

constexpr std::string_view kTrips = "Round trips (JPEG coding and decoding at shifted block grids)";

// The two halves of vxUnblock's jpegMode.
constexpr Word kChroma[] = {{"444", 0}, {"422", 1}, {"420", 2}};
constexpr Word kColours[] = {{"ycbcr", 0}, {"rgb", 16}};

constexpr auto kFields = withNeutral(std::to_array<Field<UnblockValues>>({
    {{"trip-quality", 1, 99, kTrips,
      "JPEG quality of the trips: the lower, the stronger; best near that of the file. auto takes "
      "it from the quantisation tables of the file, tells it, and leaves pictures alone that were "
      "coded above 86 or are no JPEG",
      true, kAutoWord},
     &UnblockValues::quality},
    {{"trip-chroma", 1, 0, kTrips,
      "Sampling of the colour in the trips: full (best, also for files with reduced colour), half "
      "width, or half width and height",
      false, kChroma},
     &UnblockValues::chroma},
    {{"trip-colours", 1, 0, kTrips, "Colour space of the trips", false, kColours},
     &UnblockValues::colours},
    {{"shift-step", 1, 8, kTrips,
      "Pixels between two shifts of the grid: 1 makes 64 trips, 2 makes 16, 4 makes 4, 8 one; "
      "fewer are faster and leave more of the blocks",
      true},
     &UnblockValues::shiftStep},
}));

}  // namespace

std::span<const Field<UnblockValues>> unblockSettings() { return kFields; }

}  // namespace vx::settings
