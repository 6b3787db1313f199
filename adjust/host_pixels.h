#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/img.h"
#include "frame/picture_rows.h"

namespace vx {

// Host pixels to floats and back, the only place that knows the host's layouts:
//
//   format  bytes  samples        colour at byte  scale s   top
//   1       3      8 bits         0, 1, 2         1/256     255
//   3       6      16 bits        0, 2, 4         1/32768   32768
//   5       4      8 bits         1, 2, 3         1/256     255
//   6       8      16 bits        2, 4, 6         1/32768   32768
//
// The extra first channel of formats 5 and 6 stays out of all computation. Reading gives
// v * s + 0.49 * s, just under the middle of the sample's step, so that rounding on the way out
// gives an untouched sample back; writing multiplies by 1 / s and rounds to nearest, ties to even.
//
// Steps are signed bytes, offsets 64 bits wide; 16-bit rows may start at odd addresses. In formats
// 1 and 3 the two functions for interleaved floats refuse a host row step below 1: nothing is read
// (the floats then stand for samples of 0) or written. All others work with any step. Each function
// works through blocks that stay in the cache, and allocates nothing.

/// A picture in the host's memory; see vxAdjustRgb.
struct HostImage {
  void* pixels;
  int format;
  int rowStep;
  int width;
  int height;

  std::uint8_t* row(int y) const {
    return static_cast<std::uint8_t*>(pixels) + std::ptrdiff_t{rowStep} * y;
  }
  /// Whether two rows share memory, so that they must be written one by one, in their order.
  bool rowsOverlap() const;
};

/// Bytes of one pixel: 3, 6, 4, 8 for the formats 1, 3, 5, 6, else 0.
int bytesPerPixel(int format);

/// Fills the rows from the host pixels at (x, y) on.
///
/// @return 1, or 0 for an unknown format with the rows untouched
int readHostImage(int format, const void* pixels, int rowStep, int x, int y, const RgbRows& rows);

/// Fills three planes of one size from the three colour channels.
///
/// @return 1, or 0 for an unknown format with the planes untouched
int readHostPlanes(int format, const void* pixels, int rowStep, GIMG<float>* const planes[3]);

/// Writes the rows over the host pixels. The rows are scaled in place: their values are lost.
///
/// 8-bit samples saturate at 255, those of format 3 are cut to 32768. In format 6 the same cut runs
/// over the first three quarters of each row, extra channel included, and leaves the rest of the
/// row up to 65535: the behaviour that vxicore26.h documents.
///
/// @return 1, or 0 for an unknown format with nothing written
int writeHostImage(const RgbRows& rows, int format, void* pixels, int rowStep);

/// Writes three planes, each with its own step, over the host pixels; they are scaled in place.
/// Samples saturate at 255 or are cut to 32768, the extra channel is left alone in all formats.
///
/// @return 1, or 0 for an unknown format with nothing written
int writeHostPlanes(float* const planes[3], const int planeSteps[3], int width, int height,
                    int format, void* pixels, int rowStep);

}  // namespace vx
