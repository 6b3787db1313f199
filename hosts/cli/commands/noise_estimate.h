// The noise of a picture, and the strength of the noise filter that fits it.
#pragma once

#include <optional>
#include <string>

#include "hosts/cli/pictures/picture.h"
#include "vxicore26.h"

namespace vx::cli {

enum class NoiseFilter { kFast, kNonLocal };  // the denoiseMode of vxAdjustRgb

/// The estimate of vxDenoiseEstNoise. Throws FileError for want of memory.
NoiseProfile estimateNoise(Raster& raster);
/// The same of a file, at full size, of which no more is kept than the estimate looks at. Throws
/// FileError, Cancelled.
NoiseProfile estimateNoise(const std::filesystem::path& input, double maxMegapixels,
                           Progress& progress);

/// The noise left when a picture with this noise, white, is reduced by `scale`. An estimate of the
/// reduced picture would not tell: reduced texture is finer and counts as noise.
NoiseProfile reducedNoise(NoiseProfile profile, int scale);

/// Whether the estimate is one: no deviation is larger than the scale of 1, but a picture without
/// pixels of middle brightness, or below 4 pixels on an axis, is told to have more.
bool noiseKnown(const NoiseProfile& profile);

/// "luma 3.1, chroma 1.1 of 255 at a brightness of 0.43", or why nothing is known.
std::string describeNoise(const NoiseProfile& profile);

/// The strength (denoiseStrength) that came out best for the estimated noise; 0 where nothing is
/// known or the noise is below one step of 255.
float fittingStrength(const NoiseProfile& profile, NoiseFilter filter);

}  // namespace vx::cli
