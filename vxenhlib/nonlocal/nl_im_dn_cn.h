#pragma once

#include "vxenhlib/nonlocal/nl_base.h"
#include "vxenhlib/nonlocal/stack_filter.h"
#include "vxenhlib/nonlocal/weighted_sums.h"

namespace vx {

/// The collaborative transform filter: for each block of the walk, the most similar blocks of its
/// search area make a stack, the stack is filtered in up to twelve planes with the same weights,
/// and all of its blocks are added, windowed, at their places. Every pixel becomes the weighted
/// mean of the estimates of all stacks that it belongs to.
///
/// A filter serves one call at a time, which opens the parallel loops.
class CNLImDnCn : public CNLBase {
 public:
  static constexpr int kMostPlanes = 12;

  StackSettings settings;
  float matchNoiseGain = 0.01f;  ///< scales the noise in matchThreshold
  float matchFloor = 0.0f;       ///< fixed part of matchThreshold
  float matchThreshold = 0.0f;   ///< sum of squared differences above which a block is refused
  int exclusionX, exclusionY;    ///< half-width of the square blanked around each block taken
  int planeCount = 1;
  GIMG<float>* inPlanes[kMostPlanes] = {};
  GIMG<float>* outPlanes[kMostPlanes] = {};
  GIMG<float>* source = nullptr;  ///< where weights and local deviation come from
  GIMG<float>* pilot = nullptr;   ///< the picture already filtered, or null

  /// @param stackCapacity  most blocks of a stack, limited to 1..16
  CNLImDnCn(int stackCapacity, int exclusion, int blockSize, int searchSize);

  /// False when memory is short; filterPlanes() then answers kVxrcNoMemory.
  bool ready() const { return window_.data() != nullptr; }

  /// Takes the settings of the next pass. The threshold of the match is, with g = 1.44 *
  /// (matchNoiseGain * noise)^2, the block's samples times (g + matchFloor^2), or (g / 2 +
  /// matchFloor^2 / 4) when the last pass left a pilot. Returns 0.
  int setFilterParams(float floorWeight, float strength, float kneeRatio, float noise,
                      float newMatchNoiseGain, float newMatchFloor, float deviationGain,
                      int exclusion);

  /// Runs one pass. Blocks are searched in the guides; with a pilot the weights are Wiener weights
  /// from the pilot, else thresholds on the source. Where no block reaches, out is in. The out
  /// planes are none of the others, and stay as they are unless the result is 0.
  ///
  /// @return kVxrcBadArgument for a count outside 1 to 12 (planes) or 1 to 3 (guides), or what
  ///   proc() says; kVxrcSizeMismatch unless all images have one size; kVxrcNoMemory
  VXRC filterPlanes(int newGuideCount, GIMG<float>* const* guides, GIMG<float>* newSource,
                    GIMG<float>* newPilot, int newPlaneCount, GIMG<float>* const* in,
                    GIMG<float>* const* out);

  /// Forgets the images of the last pass.
  void clearImages();

 protected:
  float searchThreshold() const override { return matchThreshold; }
  void* createContext(const Share& share, std::int32_t most) override;
  int TFdoABlock(void* context, int x, int y, const SearchArea& area, const CostMap& map) override;
  bool repeatsBlock(void* context, int x, int y, const SearchArea& area, int shift,
                    const CostMap& map) override;
  void deleteContext(void* context) override;

 private:
  struct Context;

  void joinShares();
  void joinRow(int y);

  BlockWindow window_;
  int stackLimit_;
  WeightedSums sums_[kShares];
};

}  // namespace vx
