#pragma once

#include "frame/image_buffer.h"

namespace vx {

/// One float plane of the edge enhancer.
using EdgePlane = ImageBuffer<float>;

/// What the realignment of chroma is told.
struct AlignSettings {
  float alignSigmaX;     ///< sigma of the luminance reference in pixels; + 0.4 truncated: radius
  float alignSigmaY;     ///< the same downward
  float alignThreshold;  ///< luminance closer to its reference than this keeps its chroma
};

/// The edge enhancer: sharpens the luminance of a YUV image with a gain that grows in the middle of
/// transitions, and repairs chroma at edges by blurring, shifting and realigning it.
///
/// The fields are set between construction and enhanceAll; an object serves one image and one
/// thread. Planes are float, nominally Y in 0..1, of one size. Any size is allowed: regions too
/// small for a filter stay as they are. Memory failure throws MemoryException.
///
/// All stages run over tiles of the planes that stay in the second-level cache; the size of a tile
/// does not change any result.
class EnhEdge {
 public:
  float blurSigmaX;           ///< sigma of the base layer, pixels; at most 0.4: no filter
  float blurSigmaY;           ///< the same downward
  float rangeFloor;           ///< added to the smoothed local range before the division
  float adaptiveGain = 0.0f;  ///< gain on the edge ratio
  float gainLimit = 1000.0f;  ///< upper clip of the adaptive term, where below 99
  float baseGain = 1.0f;      ///< gain of the detail everywhere
  double scaleX;              ///< resampling of the luminance stage
  double scaleY;
  int scaledWidth = 0;  ///< size after resampling, set by enhanceLuma
  int scaledHeight = 0;
  // Of the tile last worked on, which may fill only a part of them.
  EdgePlane blurred;         ///< base layer
  EdgePlane detail;          ///< input minus base
  EdgePlane ratio;           ///< edge ratio
  float alignSigmaX = 0.0f;  ///< see AlignSettings; the stage runs when a sigma is above 0.4
  float alignSigmaY = 0.0f;
  float alignThreshold = 0.0f;
  float chromaBlurX = 0.0f;  ///< sigma of the chroma blur, pixels; at most 0.4: no filter
  float chromaBlurY = 0.0f;
  int chromaShiftX = 0;  ///< pixels to the right, bounded to -7..7 when used
  int chromaShiftY = 0;  ///< pixels downward
  int edgeReserved = 0;  ///< never read

  /// Pixels of a tile; the default keeps the dozen buffers of a tile within half a megabyte.
  int tileWidth = 256;
  int tileHeight = 32;

  /// `rangeFloor` below 1e-5 becomes 1e-5 here; a value written to the field later stands as it is.
  EnhEdge(float sigmaX, float sigmaY, float floor, double scalingX, double scalingY);
  EnhEdge(const EnhEdge&) = delete;
  EnhEdge& operator=(const EnhEdge&) = delete;
  virtual ~EnhEdge();

  /// Runs the stages on the planes in place: luminance when a gain is above 1 or a blur sigma above
  /// 0.45; then chroma blur, shift, realignment, each when its settings ask for it.
  /// @return 1
  int enhanceAll(EdgePlane& Y, EdgePlane& U, EdgePlane& V);

  /// Sharpens: with B the Gaussian of the blur sigmas, G the Gaussian of twice those, and the
  /// extremes of the 3x3 neighbourhood,
  ///
  ///     output = B + (I - B) * (baseGain + adaptiveGain * ratio)
  ///     ratio = min(max3 - I, I - min3) / (G(max3 - min3) + rangeFloor)
  ///
  /// The outer three pixels are the input. Where `scaleX` or `scaleY` differs from 1 by more than
  /// 0.0001, I is the input resampled by cubic interpolation.
  /// @param output  resized to the working size; not the input
  /// @return 1
  int enhanceLuma(const EdgePlane& input, EdgePlane& output);

  /// The last step on a tile held in `blurred`, `detail` and `ratio`, written to `output`:
  /// (ratio * adaptiveGain, limited, + baseGain) * detail + blurred.
  void combineLuma(float* output, int outputStep, int width, int height);

  /// Separable Gaussian in place. Three columns at each side keep their values when the horizontal
  /// filter runs, three rows at the top and bottom are not filtered vertically.
  /// @return 1
  int blurChroma(EdgePlane& plane, float sigmaX, float sigmaY);

  /// Moves both planes by whole pixels, repeating the edges; stores the bounded shifts back.
  void shiftChroma(EdgePlane& U, EdgePlane& V);

  /// Gives each pixel the chroma of that neighbour within the radii whose blurred luminance,
  /// weighted by distance, comes closest to the pixel's own luminance. The first of equals in row
  /// order wins. Pixels closer to the border than the radii, and those whose luminance lies within
  /// `alignThreshold` of its blur, keep their chroma.
  /// @param outU,outV  resized to the size of Y where they differ; none of the inputs
  void alignChroma(const AlignSettings& settings, const EdgePlane& Y, const EdgePlane& U,
                   const EdgePlane& V, EdgePlane& outU, EdgePlane& outV);

  /// Copies a frame: the first and last bh rows over the whole width, then the first and last bw
  /// columns over the whole height; never more than there is.
  static void copyBorder(const EdgePlane& source, EdgePlane& destination, int bw, int bh);

 private:
  struct LumaScratch;
  void enhanceTile(const EdgePlane& image, int x0, int y0, int x1, int y1, EdgePlane& output,
                   LumaScratch& scratch);
};

}  // namespace vx
