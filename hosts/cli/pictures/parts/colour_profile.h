// ICC profiles made from what other formats say of their colours.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "hosts/cli/pictures/parts/bytes.h"

namespace vx::cli {

using Profile = std::vector<std::uint8_t>;

enum class ProfileSpace { kNone, kGrey, kRgb, kOther };

/// What the pixels of a profile are; kNone for bytes that are no profile.
ProfileSpace spaceOf(Bytes profile);

/// Coordinates x, y of CIE 1931.
struct Chromaticities {
  double whiteX = 0.3127, whiteY = 0.3290;
  double redX = 0.64, redY = 0.33, greenX = 0.30, greenY = 0.60, blueX = 0.15, blueY = 0.06;
};

/// How samples from 0 to 1 become light.
struct Transfer {
  double gamma = 0;    // a power; 0: the curve of sRGB (IEC 61966-2-1), or
  bool video = false;  // that of ITU-R BT.709
};

/// Nothing for colours that no profile can state.
std::optional<Profile> makeProfile(const Chromaticities& colours, const Transfer& transfer,
                                   bool grey);

/// For the code points of ITU-T H.273, full range. Nothing for those that are not handled: the
/// transfers PQ and HLG (16, 18) need more than a profile.
std::optional<Profile> makeProfile(int primaries, int transfer, bool grey);

/// The profile under which grey pixels v mean what they mean as (v, v, v) under an RGB profile, and
/// the other way round. Nothing where none does.
std::optional<Profile> greyFromRgb(Bytes profile);
std::optional<Profile> rgbFromGrey(Bytes profile);

}  // namespace vx::cli
