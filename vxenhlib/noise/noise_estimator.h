#pragma once

#include <cstdint>
#include <memory>

#include "frame/img.h"

namespace vx {

/// Measures the noise of a luma plane. A median over a cross smooths the plane; the absolute
/// differences to the plane are smoothed by the same kind of cross; the median of what comes out,
/// over the pixels of middle brightness, times a fixed constant is the noise. The medians keep
/// edges and texture from counting as noise where noise is absent, and the robust statistics follow
/// F. R. Hampel, "The influence curve and its role in robust estimation", 1974.
///
/// Works on 16-bit integers, for which median and histogram are fast and exact: every processor
/// gives the same bits.
class NoiseEstimator {
 public:
  using Plane16 = GIMG<std::int16_t>;

  std::unique_ptr<Plane16> plane16;   ///< the luma times 32767, later the local deviations
  std::unique_ptr<Plane16> work16;    ///< the smoothed luma, later the absolute differences
  std::unique_ptr<Plane16> smooth16;  ///< the smoothed luma, kept for the brightness masks
  float minLevel = 0.0f;              ///< smallest luma
  float meanLevel = 0.0f;             ///< mean of the smoothed luma
  float noiseSigma = 0.0f;            ///< what estimate() returned
  int maskSize = 5;                   ///< cross of the first median, 3 or 5
  float quantile = 0.5f;              ///< share of the histogram that the result's bin exceeds
  float lowFraction = 0.1f;           ///< darkest level that counts, between minLevel and meanLevel
  float highFraction = 1.0f;          ///< brightest level that counts, as a multiple of meanLevel

  /// Measures `plane`, nominally 0 to 1; the plane is scaled up and back, which leaves it as it was
  /// but for rounding.
  ///
  /// @return the noise on the plane's scale; -1, with nothing done, for a maskSize other than 3 and
  ///   5. A plane without a pixel between the thresholds, or without memory, gives about 1.54, a
  ///   very large value
  float estimate(GIMG<float>& plane);

  /// Makes the three images unless they are there in this size; false when memory is short.
  bool prepare(int width, int height);

 private:
  void smoothAndDeviate(int firstMask);
  float medianDeviation(std::int16_t darkest);
};

}  // namespace vx
