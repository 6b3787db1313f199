#include "hosts/cli/pictures/parts/colour_profile.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace vx::cli {
namespace {

constexpr std::size_t kHeader = 128, kSpaceAt = 16, kDateAt = 24, kSignatureAt = 36;

struct Close {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
  void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Handle = std::unique_ptr<void, Close>;
using Curve = std::unique_ptr<cmsToneCurve, Close>;

Handle opened(Bytes profile) {
  return Handle(
      cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
}

std::optional<Profile> saved(const Handle& profile) {
  cmsUInt32Number size = 0;
  if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) return std::nullopt;
  Profile bytes(size);
  if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size) || size < kHeader)
    return std::nullopt;
  // The date of its making would give every run other bytes.
  static constexpr std::array<std::uint8_t, 12> kDate{0x07, 0xe8, 0, 1, 0, 1};
  std::copy(kDate.begin(), kDate.end(), bytes.begin() + kDateAt);
  return bytes;
}

Curve curveOf(const Transfer& transfer) {
  if (transfer.video) {
    // Y = ((X + 0.099) / 1.099)^(1 / 0.45) from X = 0.081 on, else X / 4.5.
    const double parameters[] = {1 / 0.45, 1 / 1.099, 0.099 / 1.099, 1 / 4.5, 0.081};
    return Curve(cmsBuildParametricToneCurve(nullptr, 4, parameters));
  }
  if (transfer.gamma > 0) return Curve(cmsBuildGamma(nullptr, transfer.gamma));
  const double parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  return Curve(cmsBuildParametricToneCurve(nullptr, 4, parameters));
}

std::optional<Profile> profileOf(const Chromaticities& c, cmsToneCurve* curve, bool grey) {
  if (curve == nullptr) return std::nullopt;
  const cmsCIExyY white{c.whiteX, c.whiteY, 1};
  if (grey) return saved(Handle(cmsCreateGrayProfile(&white, curve)));
  const cmsCIExyYTRIPLE primaries{
      {c.redX, c.redY, 1}, {c.greenX, c.greenY, 1}, {c.blueX, c.blueY, 1}};
  cmsToneCurve* const curves[] = {curve, curve, curve};
  return saved(Handle(cmsCreateRGBProfile(&white, &primaries, curves)));
}

// A point that light can have, with room for the primaries that lie just outside.
bool sane(double x, double y) { return x > -0.2 && x < 1.2 && y > 0.001 && y < 1.2; }

// A power that the numbers of a profile can state.
bool sane(const Transfer& transfer) {
  return transfer.gamma == 0 || (transfer.gamma >= 0.1 && transfer.gamma <= 10);
}

std::optional<Chromaticities> primariesOf(int code) {
  switch (code) {
    case 1:
      return Chromaticities{};
    case 5:
      return Chromaticities{0.3127, 0.3290, 0.64, 0.33, 0.29, 0.60, 0.15, 0.06};
    case 6:
    case 7:
      return Chromaticities{0.3127, 0.3290, 0.630, 0.340, 0.310, 0.595, 0.155, 0.070};
    case 9:
      return Chromaticities{0.3127, 0.3290, 0.708, 0.292, 0.170, 0.797, 0.131, 0.046};
    case 11:
      return Chromaticities{0.314, 0.351, 0.680, 0.320, 0.265, 0.690, 0.150, 0.060};
    case 12:
      return Chromaticities{0.3127, 0.3290, 0.680, 0.320, 0.265, 0.690, 0.150, 0.060};
    default:
      return std::nullopt;
  }
}

std::optional<Transfer> transferOf(int code) {
  switch (code) {
    case 1:
    case 6:
    case 14:
    case 15:
      return Transfer{0, true};
    case 4:
      return Transfer{2.2};
    case 5:
      return Transfer{2.8};
    case 8:
      return Transfer{1};
    case 13:
      return Transfer{};
    default:
      return std::nullopt;
  }
}

}  // namespace

ProfileSpace spaceOf(Bytes profile) {
  if (profile.size() < kHeader + 4 || textOf(profile.subspan(kSignatureAt, 4)) != "acsp")
    return ProfileSpace::kNone;
  const std::string_view space = textOf(profile.subspan(kSpaceAt, 4));
  if (space == "GRAY") return ProfileSpace::kGrey;
  return space == "RGB " ? ProfileSpace::kRgb : ProfileSpace::kOther;
}

std::optional<Profile> makeProfile(const Chromaticities& c, const Transfer& transfer, bool grey) {
  if (!sane(c.whiteX, c.whiteY) || !sane(c.redX, c.redY) || !sane(c.greenX, c.greenY) ||
      !sane(c.blueX, c.blueY) || !sane(transfer))
    return std::nullopt;
  return profileOf(c, curveOf(transfer).get(), grey);
}

std::optional<Profile> makeProfile(int primaries, int transfer, bool grey) {
  const auto colours = primariesOf(primaries);
  const auto light = transferOf(transfer);
  if (!colours || !light) return std::nullopt;
  return makeProfile(*colours, *light, grey);
}

std::optional<Profile> greyFromRgb(Bytes profile) {
  const Handle rgb = opened(profile);
  if (!rgb || !cmsIsMatrixShaper(rgb.get())) return std::nullopt;
  std::array<const cmsToneCurve*, 3> curves{};
  const std::array tags{cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
  for (std::size_t i = 0; i < curves.size(); ++i) {
    curves[i] = static_cast<const cmsToneCurve*>(cmsReadTag(rgb.get(), tags[i]));
    if (curves[i] == nullptr) return std::nullopt;
  }
  // Where the curves differ (v, v, v) has a hue.
  for (int i = 0; i <= 64; ++i) {
    const float v = static_cast<float>(i) / 64, g = cmsEvalToneCurveFloat(curves[1], v);
    for (const std::size_t other : {0U, 2U})
      if (!(std::abs(cmsEvalToneCurveFloat(curves[other], v) - g) < 1e-3F)) return std::nullopt;
  }
  const Curve curve(cmsDupToneCurve(curves[1]));
  if (!curve) return std::nullopt;
  return saved(Handle(cmsCreateGrayProfile(cmsD50_xyY(), curve.get())));
}

std::optional<Profile> rgbFromGrey(Bytes profile) {
  const Handle grey = opened(profile);
  if (!grey) return std::nullopt;
  const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(grey.get(), cmsSigGrayTRCTag));
  if (curve == nullptr) return std::nullopt;
  const Curve own(cmsDupToneCurve(curve));
  return profileOf(Chromaticities{}, own.get(), false);
}

}  // namespace vx::cli
