// The noise of pictures in files and rasters.
#pragma once

#include <string>

#include "hosts/auto/auto_noise.h"
#include "hosts/cli/pictures/picture.h"
#include "vxicore26.h"

namespace vx::cli {

/// Of a longer axis the noise is looked for in so many pixels around the centre.
inline constexpr int kNoiseCentre = 4096;

/// The noise in the centre of a picture that was read from `input` at full size. Throws FileError
/// for want of memory.
VxAutoNoise measureNoise(const std::filesystem::path& input, Picture& picture);

/// A picture at full size; of a longer axis only the part in which noise is looked for. Throws
/// FileError, Cancelled.
Picture readForNoise(const std::filesystem::path& input, double maxMegapixels, bool acceptDamage,
                     Progress& progress);

/// What was seen and what is done about it, in a line. Either may be null.
std::string describeDenoise(const VxAutoNoise* noise, const VxAutoDenoise* choice);

/// The estimate of vxDenoiseEstNoise. Throws FileError for want of memory.
NoiseProfile libraryEstimate(Raster& raster);

/// Whether there is an estimate. The library reports a deviation above 1, which cannot occur, for
/// pictures without pixels of middle brightness or with an axis below 4 pixels.
bool noiseKnown(const NoiseProfile& profile);

/// "luma 3.1, chroma 1.1 of 255 at a brightness of 0.43", or why nothing is known.
std::string describeNoise(const NoiseProfile& profile);

}  // namespace vx::cli
