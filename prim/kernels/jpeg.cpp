#include "prim/kernels/jpeg_lanes.h"

namespace vx::prim::VX_VARIANT {
namespace {

// round(scale * cos(j * pi / 16)) of a pass, and its shift; see prim/jpeg.h.
struct Pass {
  int cosine[8];
  int shift;
};
constexpr Pass kFirst = {{0, 22095, 20813, 18731, 15930, 12516, 8621, 4395}, 10};
constexpr Pass kSecond = {{0, 21913, 20641, 18577, 15798, 12412, 8550, 4359}, 16};
constexpr Pass kLast = {{0, 11687, 11009, 9907, 8426, 6620, 4560, 2325}, 20};

// Entry (frequency k, place n) of a pass's matrix.
constexpr int entry(const Pass& pass, int k, int n) {
  if (k == 0) return pass.cosine[4];
  int j = (2 * n + 1) * k % 32;
  if (j > 16) j = 32 - j;
  return j > 8 ? -pass.cosine[16 - j] : j < 8 ? pass.cosine[j] : 0;
}

struct Matrix {
  int at[8][8];  // [frequency][place]
};
constexpr Matrix matrixOf(const Pass& pass) {
  Matrix m{};
  for (int k = 0; k < 8; ++k)
    for (int n = 0; n < 8; ++n) m.at[k][n] = entry(pass, k, n);
  return m;
}
constexpr Matrix kFirstMatrix = matrixOf(kFirst);
[[maybe_unused]] constexpr Matrix kSecondMatrix = matrixOf(kSecond);
[[maybe_unused]] constexpr Matrix kLastMatrix = matrixOf(kLast);

[[maybe_unused]] inline int limit(int v, int low, int high) {
  return v < low ? low : v > high ? high : v;
}

template <int shift>
inline std::int16_t rounded(int sum) {
  return static_cast<std::int16_t>(limit((sum + (1 << (shift - 1))) >> shift, -32768, 32767));
}

// One column of the vertical transform.
inline void forwardColumn(const std::int16_t* const* rows, std::ptrdiff_t x, std::int16_t* dst) {
  for (int k = 0; k < 8; ++k) {
    int sum = 0;
    for (int n = 0; n < 8; ++n) sum += kFirstMatrix.at[k][n] * rows[n][x];
    dst[8 * x + k] = rounded<kFirst.shift>(sum);
  }
}

#if defined(VX_KERNEL_SCALAR)

inline void quantiseBlock(const std::int16_t* columns, std::int16_t* dst, const JpegQuantiser& q) {
  for (int u = 0; u < 8; ++u)
    for (int v = 0; v < 8; ++v) {
      int sum = 0;
      for (int n = 0; n < 8; ++n) sum += kSecondMatrix.at[u][n] * columns[8 * n + v];
      const int f = rounded<kSecond.shift>(sum);
      const int i = 8 * u + v;
      const unsigned magnitude = static_cast<unsigned>(f < 0 ? -f : f) + q.half[i];
      const unsigned level = (((magnitude & 0xFFFF) * q.reciprocal[i] >> 16) * q.scale[i]) >> 16;
      dst[i] =
          static_cast<std::int16_t>(f < 0 ? -static_cast<int>(level) : static_cast<int>(level));
    }
}

inline void inverseBlock(const std::int16_t* block, std::uint8_t* dst, int dstStep) {
  std::int16_t half[64];  // [place][vertical frequency]
  for (int n = 0; n < 8; ++n)
    for (int v = 0; v < 8; ++v) {
      int sum = 0;
      for (int u = 0; u < 8; ++u) sum += kFirstMatrix.at[u][n] * block[8 * u + v];
      half[8 * n + v] = rounded<kFirst.shift>(sum);
    }
  for (int y = 0; y < 8; ++y)
    for (int n = 0; n < 8; ++n) {
      int sum = 0;
      for (int v = 0; v < 8; ++v) sum += kLastMatrix.at[v][y] * half[8 * n + v];
      row(dst, dstStep, y)[n] =
          static_cast<std::uint8_t>(limit(rounded<kLast.shift>(sum) + 128, 0, 255));
    }
}

#else

// A 32-bit sum for every lane, in the order of low16 and high16.
template <class L>
struct Sums {
  typename L::V low, high;
};

template <class L>
[[gnu::always_inline]] inline Sums<L> pairs(typename L::V a, typename L::V b) {
  return {L::low16(a, b), L::high16(a, b)};
}
// a * x + b * y of the pairs (x, y).
template <class L>
[[gnu::always_inline]] inline Sums<L> dot(const Sums<L>& xy, int a, int b) {
  const typename L::V factors = L::set32(
      static_cast<int>((static_cast<unsigned>(b) << 16) | (static_cast<unsigned>(a) & 0xFFFFu)));
  return {L::madd(xy.low, factors), L::madd(xy.high, factors)};
}
template <class L>
[[gnu::always_inline]] inline Sums<L> operator+(const Sums<L>& a, const Sums<L>& b) {
  return {L::add32(a.low, b.low), L::add32(a.high, b.high)};
}
template <class L>
[[gnu::always_inline]] inline Sums<L> operator-(const Sums<L>& a, const Sums<L>& b) {
  return {L::sub32(a.low, b.low), L::sub32(a.high, b.high)};
}
template <int shift, class L>
[[gnu::always_inline]] inline Sums<L> halfUp(const Sums<L>& a) {
  const typename L::V half = L::set32(1 << (shift - 1));
  return {L::add32(a.low, half), L::add32(a.high, half)};
}
template <int shift, class L>
[[gnu::always_inline]] inline typename L::V narrow(const Sums<L>& a) {
  return L::pack32(L::template shift32<shift>(a.low), L::template shift32<shift>(a.high));
}

// Forward transform over v[0..7]. Sums and differences of mirrored values fit 16 bits.
template <class L, int shift>
[[gnu::always_inline]] inline void forward(typename L::V* v, const Pass& pass) {
  using V = typename L::V;
  const int* c = pass.cosine;
  const V a0 = L::add(v[0], v[7]), a1 = L::add(v[1], v[6]);
  const V a2 = L::add(v[2], v[5]), a3 = L::add(v[3], v[4]);
  const V d0 = L::sub(v[0], v[7]), d1 = L::sub(v[1], v[6]);
  const V d2 = L::sub(v[2], v[5]), d3 = L::sub(v[3], v[4]);
  const Sums<L> a03 = pairs<L>(a0, a3), a12 = pairs<L>(a1, a2);
  const Sums<L> outer = halfUp<shift>(dot(a03, c[4], c[4]));
  const Sums<L> inner = dot(a12, c[4], c[4]);
  v[0] = narrow<shift>(outer + inner);
  v[4] = narrow<shift>(outer - inner);
  v[2] = narrow<shift>(halfUp<shift>(dot(a03, c[2], -c[2])) + dot(a12, c[6], -c[6]));
  v[6] = narrow<shift>(halfUp<shift>(dot(a03, c[6], -c[6])) + dot(a12, -c[2], c[2]));
  const Sums<L> d01 = pairs<L>(d0, d1), d23 = pairs<L>(d2, d3);
  v[1] = narrow<shift>(halfUp<shift>(dot(d01, c[1], c[3])) + dot(d23, c[5], c[7]));
  v[3] = narrow<shift>(halfUp<shift>(dot(d01, c[3], -c[7])) + dot(d23, -c[1], -c[5]));
  v[5] = narrow<shift>(halfUp<shift>(dot(d01, c[5], -c[1])) + dot(d23, c[7], c[3]));
  v[7] = narrow<shift>(halfUp<shift>(dot(d01, c[7], -c[5])) + dot(d23, c[3], -c[1]));
}

// Inverse transform over v[0..7].
template <class L, int shift>
[[gnu::always_inline]] inline void inverse(typename L::V* v, const Pass& pass) {
  const int* c = pass.cosine;
  const Sums<L> v04 = pairs<L>(v[0], v[4]), v26 = pairs<L>(v[2], v[6]);
  const Sums<L> sum = halfUp<shift>(dot(v04, c[4], c[4]));
  const Sums<L> difference = halfUp<shift>(dot(v04, c[4], -c[4]));
  const Sums<L> p = dot(v26, c[2], c[6]), q = dot(v26, c[6], -c[2]);
  const Sums<L> v13 = pairs<L>(v[1], v[3]), v57 = pairs<L>(v[5], v[7]);
  const Sums<L> even0 = sum + p, odd0 = dot(v13, c[1], c[3]) + dot(v57, c[5], c[7]);
  v[0] = narrow<shift>(even0 + odd0);
  v[7] = narrow<shift>(even0 - odd0);
  const Sums<L> even1 = difference + q, odd1 = dot(v13, c[3], -c[7]) + dot(v57, -c[1], -c[5]);
  v[1] = narrow<shift>(even1 + odd1);
  v[6] = narrow<shift>(even1 - odd1);
  const Sums<L> even2 = difference - q, odd2 = dot(v13, c[5], -c[1]) + dot(v57, c[7], c[3]);
  v[2] = narrow<shift>(even2 + odd2);
  v[5] = narrow<shift>(even2 - odd2);
  const Sums<L> even3 = sum - p, odd3 = dot(v13, c[7], -c[5]) + dot(v57, c[3], -c[1]);
  v[3] = narrow<shift>(even3 + odd3);
  v[4] = narrow<shift>(even3 - odd3);
}

// The 8x8 values of every group, rows and columns exchanged.
template <class L>
[[gnu::always_inline]] inline void transpose(typename L::V* v) {
  using V = typename L::V;
  const V a0 = L::low16(v[0], v[1]), a1 = L::high16(v[0], v[1]);
  const V a2 = L::low16(v[2], v[3]), a3 = L::high16(v[2], v[3]);
  const V a4 = L::low16(v[4], v[5]), a5 = L::high16(v[4], v[5]);
  const V a6 = L::low16(v[6], v[7]), a7 = L::high16(v[6], v[7]);
  const V b0 = L::low32(a0, a2), b1 = L::high32(a0, a2), b2 = L::low32(a1, a3);
  const V b3 = L::high32(a1, a3), b4 = L::low32(a4, a6), b5 = L::high32(a4, a6);
  const V b6 = L::low32(a5, a7), b7 = L::high32(a5, a7);
  v[0] = L::low64(b0, b4), v[1] = L::high64(b0, b4);
  v[2] = L::low64(b1, b5), v[3] = L::high64(b1, b5);
  v[4] = L::low64(b2, b6), v[5] = L::high64(b2, b6);
  v[6] = L::low64(b3, b7), v[7] = L::high64(b3, b7);
}

template <class L>
[[gnu::always_inline]] inline typename L::V magnitude(typename L::V f, const JpegQuantiser& q,
                                                      int u) {
  const typename L::V sum = L::add(L::absolute(f), L::broadcast(q.half + 8 * u));
  return L::mulHighU(L::mulHighU(sum, L::broadcast(q.reciprocal + 8 * u)),
                     L::broadcast(q.scale + 8 * u));
}
template <class L>
[[gnu::always_inline]] inline typename L::V quantise(typename L::V f, const JpegQuantiser& q,
                                                     int u) {
  return L::withSign(magnitude<L>(f, q, u), f);
}

// Columns, or coefficients, of the blocks at p: v[i] holds vector i of each.
constexpr std::ptrdiff_t kBlockBytes = 64 * sizeof(std::int16_t);
template <class L>
[[gnu::always_inline]] inline void loadBlocks(const std::int16_t* p, typename L::V* v) {
  for (int i = 0; i < 8; ++i) v[i] = L::gather(p + 8 * i, kBlockBytes);
}

template <class L>
[[gnu::always_inline]] inline void inverseBlocks(typename L::V* v, std::uint8_t* dst, int dstStep) {
  inverse<L, kFirst.shift>(v, kFirst);
  transpose<L>(v);
  inverse<L, kLast.shift>(v, kLast);
  const typename L::V middle = L::set(128);
  for (int y = 0; y < 8; y += 2)
    L::storeTwoRows(row(dst, dstStep, y), row(dst, dstStep, y + 1),
                    L::packU(L::addSat(v[y], middle), L::addSat(v[y + 1], middle)));
}

template <class L>
[[gnu::always_inline]] inline void forwardColumns(const std::int16_t* const* rows, std::ptrdiff_t x,
                                                  std::int16_t* dst) {
  typename L::V v[8];
  for (int n = 0; n < 8; ++n) v[n] = L::load(rows[n] + x);
  forward<L, kFirst.shift>(v, kFirst);
  transpose<L>(v);
  for (int i = 0; i < 8; ++i) L::scatter(dst + 8 * (x + i), kBlockBytes, v[i]);
}

template <class L>
[[gnu::always_inline]] inline void quantiseBlocks(const std::int16_t* columns, std::int16_t* dst,
                                                  const JpegQuantiser& q) {
  typename L::V v[8];
  loadBlocks<L>(columns, v);
  forward<L, kSecond.shift>(v, kSecond);
  for (int u = 0; u < 8; ++u) L::scatter(dst + 8 * u, kBlockBytes, quantise<L>(v[u], q, u));
}

template <class L>
[[gnu::always_inline]] inline void requantiseBlocks(const std::int16_t* columns, std::uint8_t* dst,
                                                    int dstStep, const JpegQuantiser& q) {
  typename L::V v[8];
  loadBlocks<L>(columns, v);
  forward<L, kSecond.shift>(v, kSecond);
  for (int u = 0; u < 8; ++u)
    v[u] = L::mulLow(quantise<L>(v[u], q, u), L::broadcast(q.step + 8 * u));
  inverseBlocks<L>(v, dst, dstStep);
}

// A lane takes 8 levels of at most 8 from a block, so that 16 bits hold a few hundred blocks.
constexpr int kLevelRuns = 256;
template <class L>
[[gnu::always_inline]] inline void addLevels(const std::int16_t* columns, const JpegQuantiser& q,
                                             typename L::V& sum) {
  alignas(16) static constexpr std::int16_t kNoMean[8] = {0, -1, -1, -1, -1, -1, -1, -1};
  const typename L::V top = L::set(8);
  typename L::V v[8];
  loadBlocks<L>(columns, v);
  forward<L, kSecond.shift>(v, kSecond);
  v[0] = L::bitAnd(v[0], L::broadcast(kNoMean));
  for (int u = 0; u < 8; ++u) sum = L::add(sum, L::least(magnitude<L>(v[u], q, u), top));
}
template <class L>
inline std::int64_t totalOf(typename L::V sum) {
  const typename L::V pairs = L::madd(sum, L::set(1));
  int lanes[4 * L::kGroups];
  L::store(lanes, pairs);
  std::int64_t total = 0;
  for (const int lane : lanes) total += lane;
  return total;
}

#endif

}  // namespace

int primJpegForward_16s(const std::int16_t* const* rows, std::int16_t* dst, int length) {
  if (const int status = checkVector(length, rows, dst)) return status;
  int x = 0;
#if !defined(VX_KERNEL_SCALAR)
  constexpr int kWide = 8 * WideLanes::kGroups;
  for (; x + kWide <= length; x += kWide) forwardColumns<WideLanes>(rows, x, dst);
  for (; x + 8 <= length; x += 8) forwardColumns<Lanes128>(rows, x, dst);
#endif
  for (; x < length; ++x) forwardColumn(rows, x, dst);
  return kStatusOk;
}

int primJpegQuantise_16s(const std::int16_t* columns, std::int16_t* dst, int blocks,
                         const JpegQuantiser* quantiser) {
  if (const int status = checkVector(blocks, columns, dst, quantiser)) return status;
  int i = 0;
#if defined(VX_KERNEL_SCALAR)
  for (; i < blocks; ++i)
    quantiseBlock(columns + 64 * std::ptrdiff_t{i}, dst + 64 * std::ptrdiff_t{i}, *quantiser);
#else
  for (; i + WideLanes::kGroups <= blocks; i += WideLanes::kGroups)
    quantiseBlocks<WideLanes>(columns + 64 * std::ptrdiff_t{i}, dst + 64 * std::ptrdiff_t{i},
                              *quantiser);
  for (; i < blocks; ++i)
    quantiseBlocks<Lanes128>(columns + 64 * std::ptrdiff_t{i}, dst + 64 * std::ptrdiff_t{i},
                             *quantiser);
#endif
  return kStatusOk;
}

int primJpegRequantise_16s8u(const std::int16_t* columns, std::uint8_t* dst, int dstStep,
                             int blocks, const JpegQuantiser* quantiser) {
  if (const int status = checkVector(blocks, columns, dst, quantiser)) return status;
  int i = 0;
#if defined(VX_KERNEL_SCALAR)
  for (; i < blocks; ++i) {
    std::int16_t block[64];
    quantiseBlock(columns + 64 * std::ptrdiff_t{i}, block, *quantiser);
    for (int k = 0; k < 64; ++k)
      block[k] = static_cast<std::int16_t>(block[k] * quantiser->step[k]);
    inverseBlock(block, dst + 8 * std::ptrdiff_t{i}, dstStep);
  }
#else
  for (; i + WideLanes::kGroups <= blocks; i += WideLanes::kGroups)
    requantiseBlocks<WideLanes>(columns + 64 * std::ptrdiff_t{i}, dst + 8 * std::ptrdiff_t{i},
                                dstStep, *quantiser);
  for (; i < blocks; ++i)
    requantiseBlocks<Lanes128>(columns + 64 * std::ptrdiff_t{i}, dst + 8 * std::ptrdiff_t{i},
                               dstStep, *quantiser);
#endif
  return kStatusOk;
}

int primJpegLevels_16s(const std::int16_t* columns, int blocks, const JpegQuantiser* quantiser,
                       double* sum) {
  if (const int status = checkVector(blocks, columns, quantiser, sum)) return status;
  std::int64_t total = 0;
#if defined(VX_KERNEL_SCALAR)
  for (int i = 0; i < blocks; ++i) {
    std::int16_t block[64];
    quantiseBlock(columns + 64 * std::ptrdiff_t{i}, block, *quantiser);
    for (int k = 1; k < 64; ++k) total += limit(block[k] < 0 ? -block[k] : block[k], 0, 8);
  }
#else
  int i = 0;
  while (i < blocks) {
    typename WideLanes::V wide = WideLanes::set(0);
    typename Lanes128::V narrow = Lanes128::set(0);
    for (int run = 0; run < kLevelRuns && i < blocks; ++run) {
      const std::int16_t* at = columns + 64 * std::ptrdiff_t{i};
      if (i + WideLanes::kGroups <= blocks) {
        addLevels<WideLanes>(at, *quantiser, wide);
        i += WideLanes::kGroups;
      } else {
        addLevels<Lanes128>(at, *quantiser, narrow);
        ++i;
      }
    }
    total += totalOf<WideLanes>(wide) + totalOf<Lanes128>(narrow);
  }
#endif
  *sum = static_cast<double>(total);
  return kStatusOk;
}

int primJpegInverse_16s8u(const std::int16_t* coefficients, std::uint8_t* dst, int dstStep,
                          int blocks) {
  if (const int status = checkVector(blocks, coefficients, dst)) return status;
  int i = 0;
#if defined(VX_KERNEL_SCALAR)
  for (; i < blocks; ++i)
    inverseBlock(coefficients + 64 * std::ptrdiff_t{i}, dst + 8 * std::ptrdiff_t{i}, dstStep);
#else
  const auto run = [&]<class L>(L) __attribute__((always_inline)) {
    for (; i + L::kGroups <= blocks; i += L::kGroups) {
      typename L::V v[8];
      loadBlocks<L>(coefficients + 64 * std::ptrdiff_t{i}, v);
      inverseBlocks<L>(v, dst + 8 * std::ptrdiff_t{i}, dstStep);
    }
  };
  run(WideLanes{});
  run(Lanes128{});
#endif
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
