// A picture file in memory: its pixels as the library wants them, and what its file said about
// them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "hosts/cli/console/progress.h"
#include "hosts/cli/pictures/coding.h"
#include "hosts/cli/pictures/formats.h"
#include "hosts/cli/pictures/raster.h"

namespace vx::cli {

struct Picture {
  Format format;    // of the file it came from
  int sourceDepth;  // 8 or 16
  int colours;      // 1 (grey) or 3, of the file that will be written
  Raster raster;
  double xResolution, yResolution;  // pixels per millimetre
  std::vector<std::uint8_t> icc;    // empty: none
  // What libvips found; Exiv2 0.27 does not read it from every PNG.
  std::vector<std::uint8_t> exif, xmp, iptc;
  int orientation = 1;             // as in EXIF; the encoder turns the pixels by it
  bool damaged = false;            // the decoder had to guess
  int leastQuality = 0;            // of a lossy result, so that what was done is not undone
  std::vector<std::string> notes;  // what was converted on the way in, one line each
};

/// What the output requires of the reader.
struct ReadOptions {
  Format output;
  int depth = 0;  // of the output: 8, 16, or 0 for the input's as far as the output format goes
  int previewScale = 1;
  double maxMegapixels = 500;
  bool acceptDamage = false;  // take what can be read of a damaged file
  int libraryBytes = 0;       // per pixel, that the library will take beside the raster
  // Longer axes are cut to this many pixels around their centre, though all are read; 0: no limit.
  int centre = 0;
  // For transparency that the output cannot hold, as six hexadecimal digits; empty: refused.
  std::string background = {};
  // Called with the bytes that the work will need, before they are taken; may be empty.
  std::function<void(double bytes)> claim = {};
};

/// Bits per sample of the file to be written.
int outputDepth(const ReadOptions& options, int sourceDepth);

/// Reads the whole picture, reduced by `previewScale` (an axis becomes its ceil(size / scale)).
/// Any Format with 8 or 16-bit grey, RGB or CMYK; grey becomes three equal colours,
/// CMYK goes to sRGB by its profile. Throws FileError for anything else, for damaged files and for
/// what the output cannot hold; Cancelled on a signal.
Picture readPicture(const std::filesystem::path& path, const ReadOptions& options,
                    Progress& progress);

/// The bytes of a file that shows the picture, with its ICC profile and resolution.
/// Metadata is not there yet, but where the encoder writes them. Throws FileError,
/// Cancelled.
std::vector<std::uint8_t> encodePicture(const Picture& picture, Format format, int depth,
                                        const Coding& coding, Progress& progress);

}  // namespace vx::cli
