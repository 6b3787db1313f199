#include "vxenhlib/nonlocal/nl_im_dn_cn.h"

#include <algorithm>
#include <memory>
#include <new>

#include "frame/bands.h"
#include "prim/vector.h"

namespace vx {
namespace {

// In front of all sums: a pixel that no block reaches comes out as it went in, and the division is
// safe.
constexpr float kSeed = 1e-10f;

}  // namespace

struct CNLImDnCn::Context {
  WeightedSums& sums;
  MatchRule rule;
  StackFilter filter;
  FilteredStacks stacks;
  PlaneView planes[kMostPlanes];
};

CNLImDnCn::CNLImDnCn(int stackCapacity, int exclusion, int blockSize, int searchSize)
    : CNLBase(blockSize, searchSize),
      exclusionX(exclusion),
      exclusionY(exclusion),
      window_(blockSize),
      stackLimit_(std::clamp(stackCapacity, 1, StackMatches::kMost)) {}

int CNLImDnCn::setFilterParams(float floorWeight, float strength, float kneeRatio, float noise,
                               float newMatchNoiseGain, float newMatchFloor, float deviationGain,
                               int exclusion) {
  settings = {.strength = strength,
              .kneeRatio = kneeRatio,
              .noise = noise,
              .deviationGain = deviationGain,
              .floorWeight = floorWeight};
  matchNoiseGain = newMatchNoiseGain;
  matchFloor = newMatchFloor;
  exclusionX = exclusionY = std::max(exclusion, 0);
  const float scaled = matchNoiseGain * noise;
  const float g = 1.44f * (scaled * scaled);
  const float samples = static_cast<float>(blockHeight * blockWidth);
  const float fixed = matchFloor * matchFloor;
  matchThreshold = pilot == nullptr ? samples * (g + fixed) : samples * (g * 0.5f + fixed * 0.25f);
  return kVxrcOk;
}

VXRC CNLImDnCn::filterPlanes(int newGuideCount, GIMG<float>* const* guides, GIMG<float>* newSource,
                             GIMG<float>* newPilot, int newPlaneCount, GIMG<float>* const* in,
                             GIMG<float>* const* out) {
  if (newPlaneCount < 1 || newPlaneCount > kMostPlanes || newGuideCount < 1 ||
      newGuideCount > kMostGuides)
    return kVxrcBadArgument;
  bool memory = true;
  const auto fits = [&](const GIMG<float>* image) {
    memory = memory && image->data != nullptr;
    return image->roiWidth == guides[0]->roiWidth && image->roiHeight == guides[0]->roiHeight;
  };
  bool alike = fits(newSource) && (newPilot == nullptr || fits(newPilot));
  for (int p = 0; p < newGuideCount; ++p) alike = alike && fits(guides[p]);
  for (int p = 0; p < newPlaneCount; ++p) alike = alike && fits(in[p]) && fits(out[p]);
  if (!alike) return kVxrcSizeMismatch;
  if (!memory || !ready()) return kVxrcNoMemory;

  planeCount = newPlaneCount;
  std::copy(in, in + planeCount, inPlanes);
  std::copy(out, out + planeCount, outPlanes);
  source = newSource;
  pilot = newPilot;
  const VXRC result = proc(guides, newGuideCount);
  if (result == kVxrcOk) joinShares();
  for (WeightedSums& sums : sums_) sums.release();
  return result;
}

void CNLImDnCn::clearImages() {
  std::fill(std::begin(inPlanes), std::end(inPlanes), nullptr);
  std::fill(std::begin(outPlanes), std::end(outPlanes), nullptr);
  source = pilot = nullptr;
}

void CNLImDnCn::joinShares() {
  const int width = outPlanes[0]->roiWidth;
  const int height = outPlanes[0]->roiHeight;
  parallelBands(height, bandRows(0, width, height), [&](int y, int count, int) {
    for (int i = y; i < y + count; ++i) joinRow(i);
  });
}

// The weights are joined into the first share's row, which nothing reads after this, or divided
// straight away where no share reaches.
void CNLImDnCn::joinRow(int y) {
  const int width = outPlanes[0]->roiWidth;
  float* weights = nullptr;
  for (WeightedSums& sums : sums_) {
    if (y < sums.top() || y >= sums.reached()) continue;
    float* row = sums.row(planeCount, y);
    if (weights == nullptr) {
      weights = row;
      for (int x = 0; x < width; ++x) row[x] = kSeed + row[x];
    } else {
      prim::primvAdd_32f_I(row, weights, width);
    }
  }
  for (int p = 0; p < planeCount; ++p) {
    const float* in = PlaneView(*inPlanes[p]).row(y);
    float* out = PlaneView(*outPlanes[p]).row(y);
    for (int x = 0; x < width; ++x) out[x] = in[x] * kSeed;
    for (WeightedSums& sums : sums_)
      if (y >= sums.top() && y < sums.reached()) prim::primvAdd_32f_I(sums.row(p, y), out, width);
    if (weights != nullptr) {
      prim::primvDiv_32f_I(weights, out, width);
    } else {
      for (int x = 0; x < width; ++x) out[x] = out[x] / kSeed;
    }
  }
}

void* CNLImDnCn::createContext(const Share& share, std::int32_t most) {
  WeightedSums& sums = sums_[share.index];
  if (!sums.reserve(planeCount, outPlanes[0]->roiWidth, share.top, share.bottom)) return nullptr;
  const int farthest = searchShape().lanes();
  auto context = std::make_unique<Context>(Context{
      sums,
      {stackLimit_, std::clamp(exclusionX, 0, farthest), std::clamp(exclusionY, 0, farthest), most},
      StackFilter(window_),
      {},
      {}});
  if (!context->stacks.reserve(blockWidth, stackLimit_, planeCount)) return nullptr;
  for (int p = 0; p < planeCount; ++p) context->planes[p] = PlaneView(*inPlanes[p]);
  return context.release();
}

void CNLImDnCn::deleteContext(void* context) { delete static_cast<Context*>(context); }

int CNLImDnCn::TFdoABlock(void* context, int x, int y, const SearchArea& area, const CostMap& map) {
  Context& c = *static_cast<Context*>(context);
  FilteredStacks::Stack& stack = c.stacks.replaceOldest(x, y);
  stack.depth = stackDepth(selectStack(map, area, x, y, blockWidth, c.rule, stack.matches));
  c.filter.filter(PlaneView(*source), pilot != nullptr ? PlaneView(*pilot) : PlaneView(), c.planes,
                  planeCount, stack.matches, stack.depth, settings, stack.blockWeight, stack.blocks,
                  c.stacks.planeFloats());
  c.sums.add(blockWidth, stack, c.stacks.planeFloats());
  return kVxrcOk;
}

// In photographs it is so for six blocks of ten.
bool CNLImDnCn::repeatsBlock(void* context, int x, int y, const SearchArea& area, int shift,
                             const CostMap& map) {
  Context& c = *static_cast<Context*>(context);
  const FilteredStacks::Stack* stack =
      c.stacks.sameChoice(x, y, area.x, leastCost(map, area, blockWidth, shift));
  if (stack != nullptr) c.sums.add(blockWidth, *stack, c.stacks.planeFloats());
  return stack != nullptr;
}

}  // namespace vx
