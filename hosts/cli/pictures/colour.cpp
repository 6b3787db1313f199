#include "hosts/cli/pictures/colour.h"

#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/parts/colour_profile.h"

namespace vx::cli {
namespace {

constexpr double kPngUnit = 100000;

// Of cHRM, or those of sRGB without it.
Chromaticities chromaticitiesOf(const std::string& chrm) {
  if (chrm.empty()) return {};
  double v[8];
  for (std::size_t i = 0; i < 8; ++i) v[i] = big32(bytesOf(chrm).data() + 4 * i) / kPngUnit;
  return {v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]};
}

// gAMA tells the power from light to samples.
std::optional<Transfer> transferOf(const std::string& gama) {
  if (gama.empty()) return Transfer{};
  const std::uint32_t number = big32(bytesOf(gama).data());
  if (number == 0) return std::nullopt;
  return Transfer{kPngUnit / number};
}

const char* nameOfTransfer(int code) {
  return code == 16 ? "PQ" : code == 18 ? "HLG" : "code points";
}

void fromCicp(Picture& picture, const std::string& cicp, Format result) {
  const auto at = [&cicp](std::size_t i) { return int{static_cast<std::uint8_t>(cicp[i])}; };
  const int primaries = at(0), transfer = at(1);
  const bool plain = at(2) == 0 && at(3) == 1;  // RGB over the full range
  // sRGB is what pixels without a profile are taken for.
  if (plain && primaries == 1 && transfer == 13) return;
  const auto profile =
      plain ? makeProfile(primaries, transfer, picture.colours == 1) : std::nullopt;
  if (!profile)
    throw FileError(std::string("has its colours in ") + nameOfTransfer(transfer) +
                    " (cICP), which " + std::string(traits(result).name) +
                    " cannot state here; write PNG");
  picture.icc = *profile;
}

void fromGamma(Picture& picture, const PngContent& png) {
  const auto transfer = transferOf(png.gama);
  const auto profile =
      transfer ? makeProfile(chromaticitiesOf(png.chrm), *transfer, picture.colours == 1)
               : std::nullopt;
  if (profile)
    picture.icc = *profile;
  else
    picture.notes.emplace_back("left out: gAMA and cHRM, which state no colours that can be");
}

// Two kinds of pixels that the profile is not made for need another one.
void matchPixels(Picture& picture, Format result) {
  const bool rgbAlone =
      result == Format::kWebp || result == Format::kHeic || result == Format::kAvif;
  const bool grey = picture.colours == 1 && !rgbAlone;
  const ProfileSpace space = spaceOf(picture.icc);
  if (space == (grey ? ProfileSpace::kGrey : ProfileSpace::kRgb)) return;
  std::optional<Profile> other;
  if (space == ProfileSpace::kGrey) other = rgbFromGrey(picture.icc);
  if (space == ProfileSpace::kRgb) other = greyFromRgb(picture.icc);
  if (!other)
    picture.notes.emplace_back(std::string("left out: the colour profile, which is not one for ") +
                               (grey ? "grey" : "RGB") + " pixels");
  picture.icc = other.value_or(Profile());
}

}  // namespace

void settleColour(Picture& picture, const PngContent& png, Format result) {
  if (picture.icc.empty() && result != Format::kPng) {
    if (!png.cicp.empty())
      fromCicp(picture, png.cicp, result);
    else if (png.srgb.empty() && !(png.gama.empty() && png.chrm.empty()))
      fromGamma(picture, png);
  }
  if (!picture.icc.empty()) matchPixels(picture, result);
}

std::string colourChunks(const PngContent& png, bool hasProfile) {
  std::string chunks;
  const auto add = [&chunks](const char* type, const std::string& data) {
    if (!data.empty()) chunks += pngChunk(type, data);
  };
  add("cICP", png.cicp);
  add("gAMA", png.gama);
  add("cHRM", png.chrm);
  if (!hasProfile) add("sRGB", png.srgb);  // PNG wants one of the two
  return chunks;
}

}  // namespace vx::cli
