#pragma once

// The weights of coefficients, and the transform along x, between whose two ways they are applied.

#include "prim/kernels/stack/transform.h"

namespace vx::prim::VX_VARIANT {
namespace {

template <class L, bool kWiener>
VX_STACK typename L::V weightOf(const StackRule& rule, typename L::V re, typename L::V im) {
  const auto power = re * re + im * im;
  if constexpr (kWiener) {
    const float noise = rule.threshold * rule.threshold;
    return L::larger(power / (power + noise), L::set(rule.floor));
  } else {
    const auto rise = (L::root(power) - rule.threshold) * rule.gain;
    return L::smaller(L::larger(rise, L::set(rule.floor)), L::set(1.0f));
  }
}

enum class Weights { given, threshold, wiener };

// 1 for the first `count` lanes, 0 for the others.
template <class L>
VX_STACK typename L::V firstLanes(int count) {
  static constexpr float kOnes[2 * kChunk] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  const int ones = count < 0 ? 0 : count < L::kLanes ? count : L::kLanes;
  return L::load(kOnes + kChunk - ones);
}

// A vector of rows from r on, by columns: transforms them along x, weighs, applies the weights and
// goes back. Adds the sums of the weights of each row: those of kx = 0 and n / 2 count twice, since
// a complex row stands for its mirror image too.
template <class L, int n, Weights kKind, bool kApply>
VX_STACK void weighColumns(typename L::V* re, typename L::V* im, int r, int rows,
                           const StackRule& rule, float* weights, float* sums) {
  typename L::V w[n];
  dft<n>(re, im);
  float* at = weights + r / kChunk * kChunk * n + r % kChunk;
  if constexpr (kKind == Weights::given) {
    unrolled<n>(VX_UNROLLED { w[k] = L::load(at + k * kChunk); });
  } else {
    unrolled<n>(VX_UNROLLED {
      w[k] = weightOf<L, kKind == Weights::wiener>(rule, re[k], im[k]);
      L::store(at + k * kChunk, w[k]);
    });
    auto sum = w[0] + w[n / 2];
    unrolled<n>(VX_UNROLLED { sum = sum + w[k]; });
    float* total = sums + r % kChunk;
    L::store(total, L::load(total) + sum * firstLanes<L>(rows - r));
  }
  if constexpr (kApply) {
    unrolled<n>(VX_UNROLLED {
      re[k] = re[k] * w[k];
      im[k] = im[k] * w[k];
    });
    dft<n>(im, re);
  }
}

template <class L, int n, Weights kKind, bool kApply>
void weighRows(int r, int rows, const StackRule& rule, float* weights, float* sums, Spectrum& s) {
  typename L::V re[n], im[n];
  loadColumns<L, n>(s.re + r * n, re);
  loadColumns<L, n>(s.im + r * n, im);
  weighColumns<L, n, kKind, kApply>(re, im, r, rows, rule, weights, sums);
  if constexpr (kApply) {
    storeColumns<L, n>(re, s.re + r * n);
    storeColumns<L, n>(im, s.im + r * n);
  }
}

// The real rows. Returns the sum of their weights.
template <int n, Weights kKind, bool kApply>
float weighEnds(int depth, const StackRule& rule, float* weights, float* rows) {
  constexpr bool kWiener = kKind == Weights::wiener;
  float* ends = weights + stackWeights(n, depth) - 4 * (n / 2 + 1);
  float sums[4] = {};
  for (int r = 0; r < 4; r += QuadLanes::kLanes) {
    using L = QuadLanes;
    typename L::V samples[n], re[n / 2 + 1], im[n / 2 + 1];
    loadColumns<L, n>(rows + r * n, samples);
    realDft<n>(samples, re, im);
    im[0] = im[n / 2] = L::set(0.0f);
    auto sum = L::set(0.0f);
    unrolled<n / 2 + 1>(VX_UNROLLED {
      float* at = ends + 4 * k + r;
      typename L::V w;
      if constexpr (kKind == Weights::given) {
        w = L::load(at);
      } else {
        w = weightOf<L, kWiener>(rule, re[k], im[k]);
        L::store(at, w);
        sum = sum + w;
      }
      re[k] = re[k] * w;
      im[k] = im[k] * w;
    });
    L::store(sums + r, sum * firstLanes<L>((depth == 1 ? 2 : 4) - r));
    if constexpr (kApply) {
      realInverse<n>(re, im, samples);
      storeColumns<L, n>(samples, rows + r * n);
    }
  }
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

// Of the rows by their places modulo 16, and of the real ones.
float sumOf(float* sums, float ends) {
  for (int half = kChunk / 2; half > 0; half /= 2)
    for (int i = 0; i < half; ++i) sums[i] += sums[i + half];
  return sums[0] + ends;
}

// Returns the sum of the weights.
template <int n, Weights kKind, bool kApply>
float alongX(int depth, const StackRule& rule, float* weights, Spectrum& s) {
  const int rows = complexRows(n, depth);
  alignas(64) float sums[kChunk] = {};
  if (rows <= FewLanes::kLanes)
    weighRows<FewLanes, n, kKind, kApply>(0, rows, rule, weights, sums, s);
  else
    for (int r = 0; r < rows; r += RowLanes::kLanes)
      weighRows<RowLanes, n, kKind, kApply>(r, rows, rule, weights, sums, s);
  return sumOf(sums, weighEnds<n, kKind, kApply>(depth, rule, weights, s.real));
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
