// The noise of a picture, and the strength of the noise filter that fits it.
#pragma once

#include <optional>
#include <string>

#include "hosts/cli/pictures/picture.h"
#include "hosts/settings/adjust_settings.h"
#include "vxicore26.h"

namespace vx::cli {

using settings::NoiseFilter;

/// The estimate of vxDenoiseEstNoise. Throws FileError for want of memory.
NoiseProfile estimateNoise(Raster& raster);
/// The same for a file at full size; only the part that the estimate looks at is kept in memory.
/// Throws FileError, Cancelled.
NoiseProfile estimateNoise(const std::filesystem::path& input, double maxMegapixels,
                           Progress& progress);

/// The noise left when a picture with this noise, white, is reduced by `scale`. An estimate of the
/// reduced picture would not tell: reduced texture is finer and counts as noise.
NoiseProfile reducedNoise(NoiseProfile profile, int scale);

/// Whether there is an estimate. The library reports a deviation above 1, which cannot occur, for
/// pictures without pixels of middle brightness or with an axis below 4 pixels.
bool noiseKnown(const NoiseProfile& profile);

/// "luma 3.1, chroma 1.1 of 255 at a brightness of 0.43", or why nothing is known.
std::string describeNoise(const NoiseProfile& profile);

/// The strength (denoiseStrength) that came out best for the estimated noise; 0 where nothing is
/// known or the noise is below one step of 255.
float fittingStrength(const NoiseProfile& profile, NoiseFilter filter);

}  // namespace vx::cli
