#include "vxenhlib/nonlocal/stack_filter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "prim/arith.h"
#include "prim/geometry.h"
#include "prim/stats.h"
#include "prim/vector.h"
#include "prim/window.h"
#include "vxenhlib/nonlocal/block_width.h"

namespace vx {
namespace {

constexpr int kDepthOf[StackShape::kMostDepth + 2] = {1, 1, 2, 2,  4,  4,  4,  4,  8,
                                                      8, 8, 8, 12, 12, 12, 12, 16, 16};
constexpr int kDepth[] = {1, 2, 4, 8, 12, 16};

prim::Complex32f* complexOf(float* data) { return reinterpret_cast<prim::Complex32f*>(data); }

}  // namespace

int stackDepth(int matches) { return kDepthOf[std::clamp(matches, 0, StackShape::kMostDepth + 1)]; }

StackShape::StackShape(int width, int height, int limit)
    : blockWidth(width),
      blockHeight(height),
      stackLimit(std::clamp(limit, 1, kMostDepth)),
      blockRowFloats(fftRowFloats(width)),
      sliceFloats(blockRowFloats * height),
      stackFloats(stackLimit * sliceFloats) {
  for (int i = 0; i < kDepths; ++i) plans_[i] = FftPlan(kDepth[i], height, width);
  if (!window.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))) return;
  const int step = width * static_cast<int>(sizeof(float));
  const auto fadeRows = [&] {
    for (int y = 0; y < height; ++y)
      prim::primvWinHamming_32f_I(window.data() + std::ptrdiff_t{y} * width, width);
  };
  prim::primvSet_32f(1.0f, window.data(), width * height);
  fadeRows();
  prim::primTranspose_32f_C1IR(window.data(), step, width, height);
  fadeRows();
}

bool StackShape::ready() const {
  return window.data() != nullptr && std::none_of(std::begin(plans_), std::end(plans_),
                                                  [](const FftPlan& p) { return p.empty(); });
}

const FftPlan& StackShape::plan(int depth) const {
  const auto* at = std::find(std::begin(kDepth), std::end(kDepth), depth);
  return plans_[at - std::begin(kDepth)];
}

bool StackFilter::reserve() {
  const auto floats = static_cast<std::size_t>(shape_.stackFloats);
  const auto block =
      static_cast<std::size_t>(shape_.blockWidth) * static_cast<std::size_t>(shape_.blockHeight);
  return stack_.reserve(floats) && weights_.reserve(floats / 2) && difference_.reserve(block);
}

void StackFilter::load(const PlaneView& plane, const StackMatches& matches) {
  withBlockWidth(shape_.blockWidth, [&](const auto width) {
    const int pitch = shape_.blockRowFloats;
    for (int k = 0; k < depth_; ++k) {
      float* to = stack_.data() + std::ptrdiff_t{k} * shape_.sliceFloats;
      for (int y = 0; y < shape_.blockHeight; ++y, to += pitch) {
        const float* from = plane.row(matches.y[k] + y) + matches.x[k];
        std::memcpy(to, from, static_cast<std::size_t>(width) * sizeof(float));
        for (int x = width; x < pitch; ++x) to[x] = 0.0f;
      }
    }
  });
}

float StackFilter::meanDifference(const PlaneView& a, int ax, int ay, const PlaneView& b, int bx,
                                  int by) {
  const int step = shape_.blockWidth * static_cast<int>(sizeof(float));
  prim::primAbsDiff_32f_C1R(a.row(ay) + ax, a.step, b.row(by) + bx, b.step, difference_.data(),
                            step, shape_.blockWidth, shape_.blockHeight);
  double mean = 0.0;
  prim::primMean_32f_C1R(difference_.data(), step, shape_.blockWidth, shape_.blockHeight, &mean, 0);
  return static_cast<float>(mean);
}

void StackFilter::weigh(const PlaneView& source, const PlaneView* pilot,
                        const StackMatches& matches, int depth, const StackSettings& settings,
                        float* blockWeight) {
  depth_ = depth;
  coefficients_ = shape_.sliceFloats * depth_ / 2;
  load(pilot != nullptr ? *pilot : source, matches);

  // Two noisy blocks differ by the noise of both, which the 0.71 takes back.
  float deviation;
  if (pilot == nullptr) {
    deviation =
        meanDifference(source, matches.x[0], matches.y[0], source, matches.x[1], matches.y[1]) *
        settings.deviationGain * 0.71f;
  } else {
    deviation =
        meanDifference(source, matches.x[0], matches.y[0], *pilot, matches.x[0], matches.y[0]) *
        settings.deviationGain;
  }
  const float local = deviation + 0.0001f;
  const float sigma = local < settings.noise ? local : settings.noise;
  // The root is the norm that the unnormalised transform gives to white noise of deviation 1.
  const float norm = std::sqrt(static_cast<float>(shape_.blockHeight * shape_.blockWidth * depth_));
  formWeights(pilot != nullptr, norm * sigma * settings.strength, settings);

  double sum = 0.0;
  prim::primSum_32f_C1R(weights_.data(), coefficients_ * static_cast<int>(sizeof(float)),
                        coefficients_, 1, &sum, 0);
  const float share = static_cast<float>(static_cast<double>(depth_) / (sum + 1.0));
  const int samples = shape_.blockWidth * shape_.blockHeight;
  for (int i = 0; i < samples; ++i)
    blockWeight[i] = shape_.window[static_cast<std::size_t>(i)] * share;
}

// A threshold of 0 (a profile without noise) makes infinities, and NaN where the coefficient is 0
// too: both limits put a NaN at the floor.
void StackFilter::formWeights(bool wiener, float threshold, const StackSettings& settings) {
  float* weights = weights_.data();
  const int n = coefficients_;
  shape_.plan(depth_).forward(stack_.data());
  prim::primvMagnitude_32fc(complexOf(stack_.data()), weights, n);
  if (!wiener) {
    prim::primvSubC_32f_I(threshold, weights, n);
    prim::primvMulC_32f_I(1.0f / ((settings.kneeRatio - 1.0f) * threshold), weights, n);
    prim::primvThreshold_LT_32f_I(weights, n, settings.floorWeight);
    prim::primvThreshold_GT_32f_I(weights, n, 1.0f);
    return;
  }
  float* sums = stack_.data();  // the spectrum is not needed any more
  prim::primvSqr_32f_I(weights, n);
  prim::primvCopy_32f(weights, sums, n);
  prim::primvAddC_32f_I(threshold * threshold, sums, n);
  prim::primvDiv_32f_I(sums, weights, n);
  prim::primvThreshold_LT_32f_I(weights, n, settings.floorWeight);
}

void StackFilter::filter(const PlaneView& plane, const StackMatches& matches, bool fromSource,
                         const float* blockWeight, float* blocks) {
  const FftPlan& plan = shape_.plan(depth_);
  if (!fromSource) {
    load(plane, matches);
    plan.forward(stack_.data());
  }
  prim::primvMul_32f32fc_I(weights_.data(), complexOf(stack_.data()), coefficients_);
  plan.inverse(stack_.data());
  const float scale = 1.0f / static_cast<float>(shape_.blockHeight * shape_.blockWidth * depth_);
  withBlockWidth(shape_.blockWidth, [&](const auto width) {
    const float* row = stack_.data();
    float* out = blocks;
    for (int k = 0; k < depth_; ++k) {
      const float* weight = blockWeight;
      for (int y = 0; y < shape_.blockHeight; ++y) {
        for (int x = 0; x < width; ++x) out[x] = row[x] * scale * weight[x];
        row += shape_.blockRowFloats;
        out += shape_.blockRowFloats;
        weight += width;
      }
    }
  });
}

}  // namespace vx
