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
  BandSums& sums;
  StackSelection selection;
  StackFilter filter;
  FilteredStacks stacks;
  StackMatches matches{};

  Context(BandSums& s, const StackShape& shape) : sums(s), filter(shape) {}
};

CNLImDnCn::CNLImDnCn(int stackCapacity, int exclusion, int blockSize, int searchSize)
    : CNLBase(blockSize, searchSize),
      exclusionX(exclusion),
      exclusionY(exclusion),
      shape_(blockSize, blockSize, stackCapacity) {}

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
  if (!memory) return kVxrcNoMemory;

  planeCount = newPlaneCount;
  std::copy(in, in + planeCount, inPlanes);
  std::copy(out, out + planeCount, outPlanes);
  source = newSource;
  pilot = newPilot;
  const VXRC result = proc(guides, newGuideCount);
  if (result == kVxrcOk) joinBands();
  for (BandSums& sums : sums_) sums.release();
  return result;
}

void CNLImDnCn::clearImages() {
  std::fill(std::begin(inPlanes), std::end(inPlanes), nullptr);
  std::fill(std::begin(outPlanes), std::end(outPlanes), nullptr);
  source = pilot = nullptr;
}

void CNLImDnCn::joinBands() {
  const int width = outPlanes[0]->roiWidth;
  const int height = outPlanes[0]->roiHeight;
  parallelBands(height, bandRows(0, width, height), [&](int y, int count, int) {
    for (int i = y; i < y + count; ++i) joinRow(i);
  });
}

// The weights are joined into the first band's row, which nothing reads after this, or divided
// straight away where no band reaches.
void CNLImDnCn::joinRow(int y) {
  const int width = outPlanes[0]->roiWidth;
  float* weights = nullptr;
  for (BandSums& sums : sums_) {
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
    for (BandSums& sums : sums_)
      if (y >= sums.top() && y < sums.reached()) prim::primvAdd_32f_I(sums.row(p, y), out, width);
    if (weights != nullptr) {
      prim::primvDiv_32f_I(weights, out, width);
    } else {
      for (int x = 0; x < width; ++x) out[x] = out[x] / kSeed;
    }
  }
}

void* CNLImDnCn::createContext(const Band& band) {
  BandSums& sums = sums_[band.index];
  if (!sums.reserve(planeCount, outPlanes[0]->roiWidth, band.top, band.bottom)) return nullptr;
  auto context = std::make_unique<Context>(sums, shape_);
  if (!context->filter.reserve() || !context->selection.reserve(searchHeight) ||
      !context->stacks.reserve(shape_, planeCount))
    return nullptr;
  return context.release();
}

void CNLImDnCn::deleteContext(void* context) { delete static_cast<Context*>(context); }

int CNLImDnCn::TFdoABlock(void* context, int x, int y, int tileX, int tileY, float /*energy*/,
                          GIMG<float>& costMap) {
  Context& c = *static_cast<Context*>(context);
  const int count =
      c.selection.select(PlaneView(costMap), x - tileX, y - tileY, tileX, tileY, shape_.stackLimit,
                         exclusionX, exclusionY, matchThreshold, c.matches);
  const int depth = stackDepth(count);
  const FilteredStacks::Stack* stack = c.stacks.find(c.matches, depth);
  if (stack == nullptr) {
    FilteredStacks::Stack& fresh = c.stacks.replaceOldest(c.matches, depth);
    filterStack(c, fresh);
    stack = &fresh;
  }
  c.sums.add(shape_, *stack);
  return kVxrcOk;
}

// In photographs it is so for six blocks of ten.
bool CNLImDnCn::repeatsBlock(void* context, int x, int y, int tileX, float leastNew) {
  Context& c = *static_cast<Context*>(context);
  const FilteredStacks::Stack* stack = c.stacks.find(x, y, tileX, leastNew);
  if (stack != nullptr) c.sums.add(shape_, *stack);
  return stack != nullptr;
}

void CNLImDnCn::filterStack(Context& c, FilteredStacks::Stack& stack) {
  const PlaneView guide = pilot != nullptr ? PlaneView(*pilot) : PlaneView();
  c.filter.weigh(PlaneView(*source), pilot != nullptr ? &guide : nullptr, stack.matches,
                 stack.depth, settings, stack.blockWeight);
  for (int p = 0; p < planeCount; ++p) {
    const bool fromSource = p == 0 && pilot == nullptr && inPlanes[0] == source;
    c.filter.filter(PlaneView(*inPlanes[p]), stack.matches, fromSource, stack.blockWeight,
                    stack.blocks + std::ptrdiff_t{p} * shape_.stackFloats);
  }
}

}  // namespace vx
