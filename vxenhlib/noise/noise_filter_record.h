#pragma once

#include <memory>

#include "frame/img.h"
#include "vxenhlib/grid/bilateral_filter.h"
#include "vxenhlib/nonlocal/nl_im_dn_cn.h"
#include "vxenhlib/vxrc.h"
#include "vxicore26.h"

namespace vx {

/// What the non-local filter compares: square blocks of blockSize pixels on a grid of blockStep,
/// each with all positions of a square tile of searchSize, at most stackLimit blocks in one stack.
struct BlockGeometry {
  int stackLimit = 0;
  int blockSize = 0;
  int blockStep = 4;
  int searchSize = 0;
};

/// One grid of the bilateral filter: pixels and value steps per cell, and the values it covers.
struct GridStep {
  int sample;
  float range;
  float low, high;

  /// Fixes the geometry of a filter for planes of that size. False when the
  /// grid cannot be allocated; the pass is left out then.
  bool setUp(BilateralFilter& filter, int width, int height) const {
    return filter.setupGrid(width, height, low, high, sample, range, 0) == kVxrcOk;
  }
};

/// What denoise() is asked for. The defaults are what the pipeline uses: the non-local passes
/// alone.
struct DenoiseSettings {
  float floorWeight = 0.01f;     ///< smallest weight that the transform filter leaves
  float strength = 0.0f;         ///< of the non-local passes, which run above 0.009
  float detailShare = 1.0f;      ///< multiplies the strength of the full-size passes
  float kneeRatio = 3.0f;        ///< of the transform filter
  float deviationGain = 1.5f;    ///< of the transform filter
  float chromaGuideGain = 1.0f;  ///< weight of chroma in the block search of the half-size pass
  float sharpen = 0.0f;          ///< deconvolution of the luma, runs above 0.01
  float lumaBilateral = 0.0f;    ///< amounts of the bilateral passes, which run above 0.01
  float chromaBilateral = 0.0f;
};

/// The state of the noise filter between the settings and its passes.
///
/// Two engines work one after the other where both are on; the settings of the pipeline switch on
/// one. The bilateral passes smooth luma and chroma on coarse grids. The non-local passes filter
/// stacks of similar blocks: all planes at half size, then the detail of the luma at full size,
/// then the luma again, guided by the result so far.
class NoiseFilterRecord {
 public:
  NoiseProfile profile{};
  /// Made when the non-local passes first need it.
  std::unique_ptr<CNLImDnCn> nonLocal;
  float strength = 1.2f;       ///< last strength given to denoise()
  float deviationGain = 1.5f;  ///< last one given to denoise()
  float kneeRatio = 3.0f;      ///< last one given to denoise()
  BlockGeometry geometry;
  bool twoStage = true;   ///< strong factors, and the last, guided pass
  bool tierFlag = false;  ///< selects rows of the table of geometries
  // Where a sample is positive, the bilateral filter of that plane group runs with these two
  // values, whatever amount denoise() is given.
  float lumaSample = -1.0f;
  float lumaRange = -1.0f;
  float chromaSample = -1.0f;
  float chromaRange = -1.0f;

  NoiseFilterRecord() = default;
  NoiseFilterRecord(const NoiseFilterRecord&) = delete;
  NoiseFilterRecord& operator=(const NoiseFilterRecord&) = delete;

  /// Takes the profile and chooses the geometry by its luma noise, in dark pictures scaled up to
  /// mid-grey: the stronger the noise, the larger the blocks. Returns 0.
  int configure(const NoiseProfile& newProfile, bool newTierFlag, bool newTwoStage);

  /// False for planes narrower or lower than the search tile: denoise() refuses them.
  bool accepts(int width, int height) const {
    return width >= geometry.searchSize && height >= geometry.searchSize;
  }

  /// Filters a luma and two chroma planes (the centred form of toLumaChroma) in place.
  ///
  /// @param planes   luma, chroma 1, chroma 2, of one size
  /// @return kVxrcBadArgument for a luma plane narrower or lower than the search tile,
  ///   kVxrcSizeMismatch for planes of different sizes, kVxrcNoMemory for one without memory; with
  ///   nothing changed. 0 else; a pass that cannot have its memory is left out
  int denoise(GIMG<float>* const planes[3], const DenoiseSettings& settings);

  /// The grids of the two bilateral passes; a sample of 0 is a pass that does not run.
  GridStep lumaGrid(float amount) const;
  GridStep chromaGrid(float amount) const;

 private:
  bool prepareNonLocal();
  void sharpenLuma(GIMG<float>& luma, float sigma);
};

/// The row of the table for a luma noise `n` at mid-grey.
BlockGeometry chooseGeometry(bool twoStage, bool tierFlag, float n);

}  // namespace vx
