#pragma once

namespace vx {

// Steps of the local equalisation on one row of grid columns: `columns` columns of `depth` bins,
// one after the other. Sums run over a column in the order of its bins; several columns are taken
// side by side, since each sum is a chain of dependent additions.

struct HistogramClip {
  float clipScale;   ///< share of the clip limit, 0 to 1; above 0.8 the limit climbs to the peak
  float clipFactor;  ///< the limit in multiples of the mean bin
};

/// Limits each bin of a column and spreads what was cut off over all its bins.
void clipHistograms(float* row, int columns, int depth, const HistogramClip& clip);

/// Mixes each column with the flat histogram of the same sum:
/// h * strength + (sum / innerBins) * (1 - strength).
void flattenHistograms(float* row, int columns, int depth, float strength, int innerBins);

struct CurveScale {
  const float* emphasis;  ///< weight of each bin, `depth` of them
  int rangePad;           ///< padding bins at each end
  float outLow;           ///< value of a curve in its lower padding
  float outScale;         ///< scale above that
};

/// Integrates each column into a curve from outLow at the lower padding to
/// outLow + outScale * (1 - outLow) at the last inner bin. The scaling of a column runs `rangePad`
/// bins into the next one; behind the last column those bins exist too.
void integrateHistograms(float* row, int columns, int depth, const CurveScale& scale);

}  // namespace vx
