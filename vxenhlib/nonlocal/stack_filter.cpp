#include "vxenhlib/nonlocal/stack_filter.h"

#include <algorithm>
#include <cmath>

#include "prim/geometry.h"
#include "prim/vector.h"
#include "prim/window.h"

namespace vx {
namespace {

constexpr int kDepthOf[prim::kStackMostDepth + 2] = {1, 1, 2, 2,  4,  4,  4,  4,  8,
                                                     8, 8, 8, 12, 12, 12, 12, 16, 16};

// The blocks of a stack in one plane.
struct Blocks {
  const float* first[prim::kStackMostDepth];

  Blocks(const PlaneView& plane, const StackMatches& matches, int depth) {
    for (int k = 0; k < depth; ++k) first[k] = plane.row(matches.y[k]) + matches.x[k];
  }
};

}  // namespace

int stackDepth(int matches) { return kDepthOf[std::clamp(matches, 0, prim::kStackMostDepth + 1)]; }

BlockWindow::BlockWindow(int size) : size_(size) {
  if (size < 1 || !values_.reserve(static_cast<std::size_t>(size) * static_cast<std::size_t>(size)))
    return;
  const auto fadeRows = [&] {
    for (int y = 0; y < size; ++y)
      prim::primvWinHamming_32f_I(values_.data() + std::ptrdiff_t{y} * size, size);
  };
  prim::primvSet_32f(1.0f, values_.data(), size * size);
  fadeRows();
  prim::primTranspose_32f_C1IR(values_.data(), size * static_cast<int>(sizeof(float)), size, size);
  fadeRows();
}

// A threshold of 0 (a profile without noise) makes infinities, and NaN where the coefficient is 0
// too: the rule puts these at the floor.
prim::StackRule StackFilter::ruleOf(const PlaneView& source, const PlaneView& pilot,
                                    const StackMatches& matches, int depth,
                                    const StackSettings& settings) const {
  const int size = window_.size();
  const bool guided = !pilot.empty();
  const int other = guided ? 0 : 1;
  const PlaneView& second = guided ? pilot : source;
  float difference = 0.0f;
  prim::primStackDifference_32f(source.row(matches.y[0]) + matches.x[0], source.step,
                                second.row(matches.y[other]) + matches.x[other], second.step, size,
                                &difference);
  const float deviation = difference * settings.deviationGain * (guided ? 1.0f : 0.71f);
  const float local = deviation + 0.0001f;
  const float sigma = local < settings.noise ? local : settings.noise;
  // The root is the norm that the unnormalised transform gives to white noise of deviation 1.
  const float norm = std::sqrt(static_cast<float>(size * size * depth));
  const float threshold = norm * sigma * settings.strength;
  return {guided, threshold, 1.0f / ((settings.kneeRatio - 1.0f) * threshold),
          settings.floorWeight};
}

void StackFilter::filter(const PlaneView& source, const PlaneView& pilot, const PlaneView* planes,
                         int planeCount, const StackMatches& matches, int depth,
                         const StackSettings& settings, float* blockWeight, float* blocks,
                         std::ptrdiff_t planeFloats) {
  const int size = window_.size();
  const prim::StackRule rule = ruleOf(source, pilot, matches, depth, settings);
  const PlaneView& weighed = pilot.empty() ? source : pilot;
  // The first plane is mostly the one that gives the weights, and is filtered in the same turn.
  const bool both = planes[0].data == weighed.data;
  float sum = 0.0f;
  prim::primStackWeigh_32f(Blocks(weighed, matches, depth).first, weighed.step, size, depth, &rule,
                           weights_, &sum, both ? blocks : nullptr);
  for (int p = both ? 1 : 0; p < planeCount; ++p)
    prim::primStackFilter_32f(Blocks(planes[p], matches, depth).first, planes[p].step, size, depth,
                              weights_, blocks + p * planeFloats);
  const float share = static_cast<float>(depth) / (sum + 1.0f);
  for (int i = 0; i < size * size; ++i) blockWeight[i] = window_.data()[i] * share;
}

}  // namespace vx
