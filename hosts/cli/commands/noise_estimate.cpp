#include "hosts/cli/commands/noise_estimate.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "hosts/cli/commands/command.h"
#include "hosts/cli/pictures/evidence.h"

namespace vx::cli {
namespace {

// As readForNoise() cuts it, so that a preview sees the same noise as the full picture.
VxAutoPicture centre(Raster& raster) {
  VxAutoPicture picture = vxAutoPicture(raster.pixels(), raster.libraryFormat(), raster.rowBytes(),
                                        raster.width(), raster.height());
  const auto cut = [](int& size) {
    const int start = size <= kNoiseCentre ? 0 : (size - kNoiseCentre) / 4 * 2;
    size = std::min(size, kNoiseCentre);
    return static_cast<std::ptrdiff_t>(start);
  };
  const std::ptrdiff_t left = cut(picture.width), top = cut(picture.height);
  picture.pixels = static_cast<const std::uint8_t*>(picture.pixels) + top * picture.rowStep +
                   left * picture.pixelStep;
  return picture;
}

}  // namespace

VxAutoNoise measureNoise(const std::filesystem::path& input, Picture& picture) {
  const VxAutoPicture seen = centre(picture.raster);
  const VxAutoEvidence evidence = evidenceOf(input, picture);
  VxAutoNoise noise{};
  if (vxAutoMeasureNoise(&seen, &evidence, &noise) == 0) throw FileError(kNoMemory);
  return noise;
}

Picture readForNoise(const std::filesystem::path& input, double maxMegapixels, bool acceptDamage,
                     Progress& progress) {
  // Nothing is written; TIFF refuses the least of what can be read.
  const ReadOptions wanted{.output = Format::kTiff,
                           .maxMegapixels = maxMegapixels,
                           .acceptDamage = acceptDamage,
                           .centre = kNoiseCentre};
  return readPicture(input, wanted, progress);
}

std::string describeDenoise(const VxAutoNoise* noise, const VxAutoDenoise* choice) {
  std::string text(vxAutoDescribeDenoise(noise, choice, nullptr, 0), '\0');
  vxAutoDescribeDenoise(noise, choice, text.data(), text.size() + 1);
  return text;
}

NoiseProfile libraryEstimate(Raster& raster) {
  NoiseProfile profile{};
  // The padding is left out: it has no noise of its own.
  callLibrary([&] {
    return vxDenoiseEstNoise(raster.pixels(), raster.libraryFormat(), raster.rowBytes(),
                             raster.width(), raster.height(), &profile);
  });
  return profile;
}

bool noiseKnown(const NoiseProfile& profile) { return profile.lumaNoise <= 1; }

std::string describeNoise(const NoiseProfile& profile) {
  if (!noiseKnown(profile)) return "not known (no places of middle brightness to measure it at)";
  std::array<char, 96> text{};
  // The luma of white is 1 / 1.402.
  std::snprintf(text.data(), text.size(), "luma %.1f, chroma %.1f of 255 at a brightness of %.2f",
                255 * static_cast<double>(profile.lumaNoise),
                255 * static_cast<double>(profile.chromaNoise),
                1.402 * static_cast<double>(profile.lumaLevel));
  return text.data();
}

}  // namespace vx::cli
