#include "prim/kernels/stack_lanes.h"

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
#define VX_ACROSS [&]<class L>(int x) __attribute__((always_inline))

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
          unrolled<d / 2 - 1>([&]<int j>() __attribute__((always_inline)) {
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
          unrolled<d / 2 - 1>([&]<int j>() __attribute__((always_inline)) {
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

#if defined(VX_LANES8)

// The stack of 8 blocks of 8, which most are, takes a shorter way: between the transforms along y
// its rows stay in registers. A vector holds the same z of one ky, or of two:
//
//     [ky = 1 | ky = 2]  and  [ky = 3 | first + i * last]
//
// where the last part, once it has been transformed along z, makes room for the rows that it stands
// for: kz = 1, 2, 3 of the first, then of the last. Rows and sums are those of alongX().
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

#endif

template <int n, Weights kKind, bool kApply>
float weighStack(int depth, const StackRule& rule, float* weights, Spectrum& s) {
#if defined(VX_LANES8)
  if (n == 8 && depth == 8) return weighEight<kKind, kApply>(rule, weights, s);
#endif
  alongZ(n, depth, s);
  const float sum = alongX<n, kKind, kApply>(depth, rule, weights, s);
  if (kApply) backAlongZ(n, depth, s);
  return sum;
}

template <int n>
VX_STACK float runStack(const float* const* blocks, int step, int depth, const StackRule* rule,
                        float* weights, float* dst, Spectrum& s, const Places& p) {
  alongY<n>(blocks, step, depth, p);
  float sum = 0.0f;
  if (rule == nullptr)
    weighStack<n, Weights::given, true>(depth, {}, weights, s);
  else if (rule->wiener)
    sum = dst == nullptr ? weighStack<n, Weights::wiener, false>(depth, *rule, weights, s)
                         : weighStack<n, Weights::wiener, true>(depth, *rule, weights, s);
  else
    sum = dst == nullptr ? weighStack<n, Weights::threshold, false>(depth, *rule, weights, s)
                         : weighStack<n, Weights::threshold, true>(depth, *rule, weights, s);
  if (dst != nullptr) backAlongY<n>(p, depth, dst);
  return sum;
}

template <int n>
float runStack(const float* const* blocks, int step, int depth, const StackRule* rule,
               float* weights, float* dst) {
  Spectrum s;
#if defined(VX_LANES8)
  if (n == 8 && depth == 8)
    return runStack<n>(blocks, step, 8, rule, weights, dst, s,
                       {s.re, s.im, s.re + 3 * n, s.im + 3 * n, n, 4 * n, 4 * n});
#endif
  return runStack<n>(blocks, step, depth, rule, weights, dst, s,
                     {s.re, s.im, s.first, s.last, depth * n, n, n});
}

float runStack(const float* const* blocks, int step, int size, int depth, const StackRule* rule,
               float* weights, float* dst) {
  return size == 8    ? runStack<8>(blocks, step, depth, rule, weights, dst)
         : size == 12 ? runStack<12>(blocks, step, depth, rule, weights, dst)
                      : runStack<16>(blocks, step, depth, rule, weights, dst);
}

bool badBlock(int size) { return size != 8 && size != 12 && size != 16; }
bool badStack(int size, int depth) {
  return badBlock(size) ||
         (depth != 1 && depth != 2 && depth != 4 && depth != 8 && depth != 12 && depth != 16);
}

// Block by block, so that where they overlap the order of sums is theirs in every body.
template <int n>
void addStack(const float* src, const float* window, int depth, float* const* totals,
              float* const* weights, int step) {
  for (int z = 0; z < depth; ++z, src += n * n)
    acrossRow(
        n, VX_ACROSS {
          typename L::V w[n];
          unrolled<n>(VX_UNROLLED {
            w[k] = L::load(window + k * n + x);
            float* at = row(totals[z], step, k) + x;
            L::store(at, L::load(at) + L::load(src + k * n + x) * w[k]);
          });
          if (weights == nullptr) return;
          unrolled<n>(VX_UNROLLED {
            float* at = row(weights[z], step, k) + x;
            L::store(at, L::load(at) + w[k]);
          });
        });
}

}  // namespace

int primStackWeigh_32f(const float* const* blocks, int step, int size, int depth,
                       const StackRule* rule, float* weights, float* sum, float* dst) {
  if (blocks == nullptr || rule == nullptr || weights == nullptr || sum == nullptr)
    return kStatusNullPtr;
  if (badStack(size, depth)) return kStatusBadSize;
  *sum = runStack(blocks, step, size, depth, rule, weights, dst);
  return kStatusOk;
}

int primStackFilter_32f(const float* const* blocks, int step, int size, int depth,
                        const float* weights, float* dst) {
  if (blocks == nullptr || weights == nullptr || dst == nullptr) return kStatusNullPtr;
  if (badStack(size, depth)) return kStatusBadSize;
  runStack(blocks, step, size, depth, nullptr, const_cast<float*>(weights), dst);
  return kStatusOk;
}

int primStackAdd_32f(const float* src, const float* window, int size, int depth,
                     float* const* totals, float* const* weights, int step) {
  if (src == nullptr || window == nullptr || totals == nullptr) return kStatusNullPtr;
  if (badStack(size, depth)) return kStatusBadSize;
  if (size == 8)
    addStack<8>(src, window, depth, totals, weights, step);
  else if (size == 12)
    addStack<12>(src, window, depth, totals, weights, step);
  else
    addStack<16>(src, window, depth, totals, weights, step);
  return kStatusOk;
}

int primStackDifference_32f(const float* src1, int src1Step, const float* src2, int src2Step,
                            int size, float* mean) {
  if (src1 == nullptr || src2 == nullptr || mean == nullptr) return kStatusNullPtr;
  if (badBlock(size)) return kStatusBadSize;
  // Down the columns first, then along the row.
  alignas(64) float columns[kStackMostSize];
  acrossRow(
      size, VX_ACROSS {
        auto sum = L::set(0.0f);
        for (int y = 0; y < size; ++y)
          sum = sum +
                L::size(L::load(row(src1, src1Step, y) + x) - L::load(row(src2, src2Step, y) + x));
        L::store(columns + x, sum);
      });
  float sum = 0.0f;
  for (int x = 0; x < size; ++x) sum += columns[x];
  *mean = sum / static_cast<float>(size * size);
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
