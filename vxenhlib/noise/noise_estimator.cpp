#include "vxenhlib/noise/noise_estimator.h"

#include <algorithm>
#include <new>

#include "frame/to_int.h"
#include "prim/arith.h"
#include "prim/arith_int.h"
#include "prim/convert.h"
#include "prim/memory.h"
#include "prim/rank.h"
#include "prim/stats.h"
#include "prim/threshold.h"

namespace vx {
namespace {

constexpr float kFullScale = 32767.0f;
constexpr float kInverseScale = 3.0518509e-05f;

// Bin 0 of the histogram holds the excluded pixels, bin i from 1 the deviations from (i - 1) bin
// widths up, the last one all large deviations.
constexpr int kBins = 110;

// A median deviation is 0.6745 of the sigma of a Gaussian; the factor is a little more than its
// inverse, since the medians before it take some of the noise away.
constexpr float kSigmaOfMedian = 1.54f;

std::int16_t toLevel(float value) {
  return static_cast<std::int16_t>(std::clamp(toInt(value), -32768, 32767));
}

float sigmaOfBin(int lowerEdge, int binWidth) {
  return ((static_cast<float>(lowerEdge) - 1.0f) + static_cast<float>(binWidth) * 0.5f) /
         kFullScale * kSigmaOfMedian;
}

// The median needs two pixels around; an image without any such pixel stays as it is.
void medianOfInterior(NoiseEstimator::Plane16& from, NoiseEstimator::Plane16& to, int mask) {
  if (from.width < 5 || from.height < 5) return;
  to.status = prim::primFilterMedianCross_16s_C1R(from.row(2) + 2, from.step, to.row(2) + 2,
                                                  to.step, from.width - 4, from.height - 4, mask);
}

}  // namespace

bool NoiseEstimator::prepare(int width, int height) {
  if (plane16 == nullptr || plane16->width != width || plane16->height != height) {
    for (auto* image : {&plane16, &work16, &smooth16})
      image->reset(new (std::nothrow) Plane16(width, height));
  }
  const auto hasMemory = [](const auto& image) {
    return image != nullptr && image->data != nullptr;
  };
  return hasMemory(plane16) && hasMemory(work16) && hasMemory(smooth16);
}

float NoiseEstimator::estimate(GIMG<float>& plane) {
  if (maskSize != 3 && maskSize != 5) return -1.0f;
  minLevel = meanLevel = 0.0f;
  noiseSigma = sigmaOfBin(32767, 1);
  if (!prepare(plane.roiWidth, plane.roiHeight) || plane.data == nullptr) return noiseSigma;

  const int w = plane.roiWidth;
  const int h = plane.roiHeight;
  prim::primMulC_32f_C1IR(kFullScale, plane.data, plane.step, w, h);
  prim::primConvert_32f16s_C1R(plane.data, plane.step, plane16->data, plane16->step, w, h,
                               prim::primRndNear);
  std::int16_t darkest = 0;
  prim::primMin_16s_C1R(plane16->data, plane16->step, w, h, &darkest);
  minLevel = static_cast<float>(darkest) / kFullScale;

  smoothAndDeviate(maskSize == 3 ? prim::kMask33 : prim::kMask55);
  noiseSigma = medianDeviation(darkest);
  plane.status = prim::primMulC_32f_C1IR(kInverseScale, plane.data, plane.step, w, h);
  return noiseSigma;
}

// Leaves the smoothed luma in smooth16 and the local deviations in plane16. The deviations have a
// frame of two pixels that no median reaches: it still holds the luma, and counts. On small
// pictures that widens the bins, which is part of the estimate.
void NoiseEstimator::smoothAndDeviate(int firstMask) {
  const int w = plane16->width;
  const int h = plane16->height;
  prim::primCopy_16s_C1R(plane16->data, plane16->step, work16->data, work16->step, w, h);
  medianOfInterior(*plane16, *work16, firstMask);
  prim::primCopy_16s_C1R(work16->data, work16->step, smooth16->data, smooth16->step, w, h);
  double mean = 0.0;
  prim::primMean_16s_C1R(smooth16->data, smooth16->step, w, h, &mean);
  meanLevel = static_cast<float>(mean / 32767.0);

  prim::primSub_16s_C1IRSfs(plane16->data, plane16->step, work16->data, work16->step, w, h, 0);
  prim::primAbs_16s_C1IR(work16->data, work16->step, w, h);
  medianOfInterior(*work16, *plane16, prim::kMask55);
}

float NoiseEstimator::medianDeviation(std::int16_t darkest) {
  const int w = plane16->width;
  const int h = plane16->height;
  double mean = 0.0;
  prim::primMean_16s_C1R(plane16->data, plane16->step, w, h, &mean);
  const float twice = static_cast<float>(2.0 * mean);
  const float range = twice < kFullScale ? twice : kFullScale;

  // One more for each deviation keeps 0 free as the mark of an excluded pixel. Thresholds in single
  // precision at every step: in double a flat grey may lie above its own mean.
  const float dark = static_cast<float>(darkest);
  const std::int16_t low = toLevel(dark + (meanLevel * kFullScale - dark) * lowFraction);
  const std::int16_t high = toLevel(highFraction * meanLevel * kFullScale);
  GIMG<std::uint8_t> mask(w, h);
  const auto exclude = [&](std::int16_t level, prim::CompareSelector relation) {
    prim::primCompareC_16s_C1R(smooth16->data, smooth16->step, level, mask.data, mask.step, w, h,
                               relation);
    plane16->status =
        prim::primSet_16s_C1MR(0, plane16->data, plane16->step, w, h, mask.data, mask.step);
  };
  prim::primAddC_16s_C1IRSfs(1, plane16->data, plane16->step, w, h, 0);
  exclude(low, prim::kCompareLess);
  exclude(high, prim::kCompareGreater);

  const int binWidth = std::max(toInt(range / static_cast<float>(kBins)), 1);
  int levels[kBins + 2] = {};
  for (int i = 1; i < kBins; ++i) levels[i] = (i - 1) * binWidth + 1;
  levels[kBins] = 32767;
  levels[kBins + 1] = 32768;
  int counts[kBins + 1] = {};
  prim::primHistogramRange_16s_C1R(plane16->data, plane16->step, w, h, counts, levels, kBins + 2);

  float total = 0.0f;
  for (int i = 1; i < kBins; ++i) total += static_cast<float>(counts[i]);
  total *= quantile;
  int bin = 1;
  for (float sum = 0.0f; bin < kBins; ++bin) {
    sum += static_cast<float>(counts[bin]);
    if (sum > total) break;
  }
  return sigmaOfBin(levels[bin], binWidth);
}

}  // namespace vx
