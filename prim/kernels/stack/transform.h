#pragma once

// The transform of a stack, depth d, blocks of n by n. Along y and z the lanes are the pixels of a
// row, along x they are rows of coefficients, so that no transform goes across lanes:
//
//   blocks         along y           along z            turned round     along x
//   z y [x]  ->    z ky [x]   ->     ky kz [x]    ->    x [ky kz]   ->   kx [ky kz]
//
// Samples are real, and half of the coefficients tell the others: X(-k) is the conjugate of X(k).
// Along y only ky from 0 to n / 2 is kept. The first and the last of these, real before the second
// transform, go through it as one complex number, and of each only kz from 0 to d / 2 is kept.
// There the first and the last are real again. So a spectrum is
//
//   | rows of n   | ky              | kz                              | are     |
//   |-------------|-----------------|---------------------------------|---------|
//   | (n/2 - 1) d | 1 .. n/2 - 1    | all                             | complex |
//   | d - 2       | 0, then n/2     | 1 .. d/2 - 1                    | complex |
//   | 4           | 0, n/2, 0, n/2  | 0, 0, d/2, d/2; with d = 1 two  | real    |
//
// and what goes back takes the same steps in reverse.

#include "prim/kernels/stack/lanes.h"

namespace vx::prim::VX_VARIANT {
namespace {

#if defined(VX_KERNEL_SCALAR)
using RowLanes = Lanes1;   // along x: rows
using FewLanes = Lanes1;   // where there are no more of them
using QuadLanes = Lanes1;  // the real rows
#elif defined(__AVX512F__)
using RowLanes = Lanes16;
using FewLanes = Lanes8;
using QuadLanes = Lanes4;
#elif defined(__AVX2__)
using RowLanes = Lanes8;
using FewLanes = Lanes8;
using QuadLanes = Lanes4;
#else
using RowLanes = Lanes4;
using FewLanes = Lanes4;
using QuadLanes = Lanes4;
#endif

constexpr int kChunk = 16;  // rows whose weights lie together, by kx

// Calls f.operator()<Lanes>(x) for the vectors of a row of n pixels.
template <class F>
VX_STACK void acrossRow(int n, F f) {
#if defined(VX_KERNEL_SCALAR)
  for (int x = 0; x < n; ++x) f.template operator()<Lanes1>(x);
#elif defined(VX_LANES8)
  int x = 0;
  for (; x + 8 <= n; x += 8) f.template operator()<Lanes8>(x);
  if (x < n) f.template operator()<Lanes4>(x);
#else
  for (int x = 0; x < n; x += 4) f.template operator()<Lanes4>(x);
#endif
}
#define VX_ACROSS [&]<class L>(int x) VX_INLINED

struct Spectrum {
  static constexpr int kMost = kStackMostSize * kStackMostSize * kStackMostDepth / 2;

  alignas(64) float re[kMost];
  alignas(64) float im[kMost];
  alignas(64) float real[4 * kStackMostSize];
  // ky of 0 and of n / 2 between the transforms along y and z.
  alignas(64) float first[kStackMostDepth * kStackMostSize];
  alignas(64) float last[kStackMostDepth * kStackMostSize];
};

int complexRows(int n, int depth) { return depth == 1 ? n / 2 - 1 : depth * n / 2 - 2; }
// Filled up with zeros to whole vectors.
int filledRows(int n, int depth) {
  const int rows = complexRows(n, depth);
  return (rows + RowLanes::kLanes - 1) / RowLanes::kLanes * RowLanes::kLanes;
}

// Where the rows lie between the transforms along y and z: (ky - 1) * ky + z * z, and those of the
// first and the last ky at z * ends.
struct Places {
  float *re, *im, *first, *last;
  int ky, z, ends;
};

template <int n>
VX_STACK void alongY(const float* const* blocks, int step, int depth, const Places& p) {
  for (int z = 0; z < depth; ++z)
    acrossRow(
        n, VX_ACROSS {
          typename L::V samples[n], re[n / 2 + 1], im[n / 2 + 1];
          const float* block = blocks[z] + x;
          unrolled<n>(VX_UNROLLED { samples[k] = L::load(row(block, step, k)); });
          realDft<n>(samples, re, im);
          L::store(p.first + z * p.ends + x, re[0]);
          L::store(p.last + z * p.ends + x, re[n / 2]);
          unrolled<n / 2 - 1>(VX_UNROLLED {
            const int at = k * p.ky + z * p.z + x;
            L::store(p.re + at, re[k + 1]);
            L::store(p.im + at, im[k + 1]);
          });
        });
}

template <int n>
VX_STACK void backAlongY(const Places& p, int depth, float* dst) {
  const float scale = 1.0f / static_cast<float>(n * n * depth);
  for (int z = 0; z < depth; ++z)
    acrossRow(
        n, VX_ACROSS {
          typename L::V samples[n], re[n / 2 + 1], im[n / 2 + 1];
          re[0] = L::load(p.first + z * p.ends + x);
          re[n / 2] = L::load(p.last + z * p.ends + x);
          unrolled<n / 2 - 1>(VX_UNROLLED {
            const int at = k * p.ky + z * p.z + x;
            re[k + 1] = L::load(p.re + at);
            im[k + 1] = L::load(p.im + at);
          });
          realInverse<n>(re, im, samples);
          float* block = dst + z * n * n + x;
          unrolled<n>(VX_UNROLLED { L::store(block + k * n, samples[k] * scale); });
        });
}

// kz by z of d rows n apart, in place; back with re and im exchanged.
template <int d, class L>
VX_STACK void transformRows(float* re, float* im, int n) {
  typename L::V vRe[d], vIm[d];
  unrolled<d>(VX_UNROLLED {
    vRe[k] = L::load(re + k * n);
    vIm[k] = L::load(im + k * n);
  });
  dft<d>(vRe, vIm);
  unrolled<d>(VX_UNROLLED {
    L::store(re + k * n, vRe[k]);
    L::store(im + k * n, vIm[k]);
  });
}

template <int d>
void alongZ(int n, Spectrum& s) {
  if constexpr (d == 1) {
    for (int x = 0; x < n; ++x) {
      s.real[x] = s.first[x];
      s.real[n + x] = s.last[x];
      s.real[2 * n + x] = s.real[3 * n + x] = 0.0f;
    }
  } else {
    const int body = (n / 2 - 1) * d * n;
    for (int at = 0; at < body; at += d * n)
      acrossRow(
          n, VX_ACROSS { transformRows<d, L>(s.re + at + x, s.im + at + x, n); });
    // The transforms F of `first` and H of `last` from that of first + i * last.
    acrossRow(
        n, VX_ACROSS {
          typename L::V re[d], im[d];
          unrolled<d>(VX_UNROLLED {
            re[k] = L::load(s.first + k * n + x);
            im[k] = L::load(s.last + k * n + x);
          });
          dft<d>(re, im);
          L::store(s.real + x, re[0]);
          L::store(s.real + n + x, im[0]);
          L::store(s.real + 2 * n + x, re[d / 2]);
          L::store(s.real + 3 * n + x, im[d / 2]);
          unrolled<d / 2 - 1>([&]<int j>() VX_INLINED {
            constexpr int k = j + 1;
            const int f = body + j * n + x;
            const int h = f + (d / 2 - 1) * n;
            L::store(s.re + f, (re[k] + re[d - k]) * 0.5f);
            L::store(s.im + f, (im[k] - im[d - k]) * 0.5f);
            L::store(s.re + h, (im[k] + im[d - k]) * 0.5f);
            L::store(s.im + h, (re[d - k] - re[k]) * 0.5f);
          });
        });
  }
  const int begin = complexRows(n, d) * n;
  const int end = filledRows(n, d) * n;
  for (int i = begin; i < end; ++i) s.re[i] = s.im[i] = 0.0f;
}

template <int d>
void backAlongZ(int n, Spectrum& s) {
  if constexpr (d == 1) {
    for (int x = 0; x < n; ++x) {
      s.first[x] = s.real[x];
      s.last[x] = s.real[n + x];
    }
  } else {
    const int body = (n / 2 - 1) * d * n;
    for (int at = 0; at < body; at += d * n)
      acrossRow(
          n, VX_ACROSS { transformRows<d, L>(s.im + at + x, s.re + at + x, n); });
    acrossRow(
        n, VX_ACROSS {
          typename L::V re[d], im[d];
          re[0] = L::load(s.real + x);
          im[0] = L::load(s.real + n + x);
          re[d / 2] = L::load(s.real + 2 * n + x);
          im[d / 2] = L::load(s.real + 3 * n + x);
          unrolled<d / 2 - 1>([&]<int j>() VX_INLINED {
            constexpr int k = j + 1;
            const int f = body + j * n + x;
            const int h = f + (d / 2 - 1) * n;
            const auto fRe = L::load(s.re + f), fIm = L::load(s.im + f);
            const auto hRe = L::load(s.re + h), hIm = L::load(s.im + h);
            re[k] = fRe - hIm;
            im[k] = fIm + hRe;
            re[d - k] = fRe + hIm;
            im[d - k] = hRe - fIm;
          });
          dft<d>(im, re);
          unrolled<d>(VX_UNROLLED {
            L::store(s.first + k * n + x, re[k]);
            L::store(s.last + k * n + x, im[k]);
          });
        });
  }
}

void alongZ(int n, int depth, Spectrum& s) {
  switch (depth) {
    case 1:
      return alongZ<1>(n, s);
    case 2:
      return alongZ<2>(n, s);
    case 4:
      return alongZ<4>(n, s);
    case 8:
      return alongZ<8>(n, s);
    case 12:
      return alongZ<12>(n, s);
    default:
      return alongZ<16>(n, s);
  }
}

void backAlongZ(int n, int depth, Spectrum& s) {
  switch (depth) {
    case 1:
      return backAlongZ<1>(n, s);
    case 2:
      return backAlongZ<2>(n, s);
    case 4:
      return backAlongZ<4>(n, s);
    case 8:
      return backAlongZ<8>(n, s);
    case 12:
      return backAlongZ<12>(n, s);
    default:
      return backAlongZ<16>(n, s);
  }
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
