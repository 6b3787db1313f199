#pragma once

// The stack of 8 blocks of 8, which most are, takes a shorter way: between the transforms along y
// its rows stay in registers. A vector holds the same z of one ky, or of two:
//
//     [ky = 1 | ky = 2]  and  [ky = 3 | first + i * last]
//
// where the last part, once it has been transformed along z, makes room for the rows that it stands
// for: kz = 1, 2, 3 of the first, then of the last. Rows and sums are those of alongX().

#include "prim/kernels/stack/weights.h"

#if defined(VX_LANES8)

namespace vx::prim::VX_VARIANT {
namespace {

template <class L, Weights kKind, bool kApply>
VX_STACK float weighEightRows(int g, const StackRule& rule, float* weights, float* sums,
                              Spectrum& s) {
  using V = typename L::V;
  constexpr int n = 8, kPitch = n * n / 2;
  const bool hasEnds = (g + 1) * L::kLanes == kPitch;
  float* reRows = s.re + g * L::kLanes;
  float* imRows = s.im + g * L::kLanes;
  V re[n], im[n];
  unrolled<n>(VX_UNROLLED {
    re[k] = L::load(reRows + k * kPitch);
    im[k] = L::load(imRows + k * kPitch);
  });
  dft<n>(re, im);
  float endsSum = 0.0f;
  if (hasEnds) {
    L::storeLast(s.real, re[0]);
    L::storeLast(s.real + n, im[0]);
    L::storeLast(s.real + 2 * n, re[n / 2]);
    L::storeLast(s.real + 3 * n, im[n / 2]);
    V fRe[3], fIm[3], hRe[3], hIm[3];
    unrolled<3>(VX_UNROLLED {
      fRe[k] = (re[k + 1] + re[7 - k]) * 0.5f;
      fIm[k] = (im[k + 1] - im[7 - k]) * 0.5f;
      hRe[k] = (im[k + 1] + im[7 - k]) * 0.5f;
      hIm[k] = (re[7 - k] - re[k + 1]) * 0.5f;
    });
    unrolled<3>(VX_UNROLLED {
      re[k] = L::withLast(re[k], fRe[k]);
      im[k] = L::withLast(im[k], fIm[k]);
      re[k + 3] = L::withLast(re[k + 3], hRe[k]);
      im[k + 3] = L::withLast(im[k + 3], hIm[k]);
    });
    unrolled<2>(VX_UNROLLED {
      re[k + 6] = L::withLast(re[k + 6], L::set(0.0f));
      im[k + 6] = L::withLast(im[k + 6], L::set(0.0f));
    });
    endsSum = weighEnds<n, kKind, kApply>(n, rule, weights, s.real);
  }
  turnEights<L>(re);
  turnEights<L>(im);
  weighColumns<L, n, kKind, kApply>(re, im, g * L::kLanes, complexRows(n, n), rule, weights, sums);
  if constexpr (kApply) {
    turnEights<L>(re);
    turnEights<L>(im);
    if (hasEnds) {
      V fRe[3], fIm[3], hRe[3], hIm[3];
      unrolled<3>(VX_UNROLLED {
        fRe[k] = re[k];
        fIm[k] = im[k];
        hRe[k] = re[k + 3];
        hIm[k] = im[k + 3];
      });
      re[0] = L::withLast(re[0], L::loadLast(s.real));
      im[0] = L::withLast(im[0], L::loadLast(s.real + n));
      re[n / 2] = L::withLast(re[n / 2], L::loadLast(s.real + 2 * n));
      im[n / 2] = L::withLast(im[n / 2], L::loadLast(s.real + 3 * n));
      unrolled<3>(VX_UNROLLED {
        re[k + 1] = L::withLast(re[k + 1], fRe[k] - hIm[k]);
        im[k + 1] = L::withLast(im[k + 1], fIm[k] + hRe[k]);
        re[7 - k] = L::withLast(re[7 - k], fRe[k] + hIm[k]);
        im[7 - k] = L::withLast(im[7 - k], hRe[k] - fIm[k]);
      });
    }
    dft<n>(im, re);
    unrolled<n>(VX_UNROLLED {
      L::store(reRows + k * kPitch, re[k]);
      L::store(imRows + k * kPitch, im[k]);
    });
  }
  return endsSum;
}

template <Weights kKind, bool kApply>
float weighEight(const StackRule& rule, float* weights, Spectrum& s) {
  alignas(64) float sums[kChunk] = {};
  float ends = 0.0f;
  for (int g = 0; g < 32 / RowLanes::kLanes; ++g)
    ends = weighEightRows<RowLanes, kKind, kApply>(g, rule, weights, sums, s);
  return sumOf(sums, ends);
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT

#endif
