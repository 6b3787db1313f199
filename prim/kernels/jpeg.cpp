#include "prim/kernels/jpeg_blocks.h"

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

// Forward transform over v[0..7]. Sums and differences of mirrored values fit 16 bits.
template <class L, int shift>
[[gnu::always_inline]] inline void forward(typename L::V* v, const Pass& pass) {
  using V = typename L::V;
  const int* c = pass.cosine;
  const V a0 = L::add(v[0], v[7]), a1 = L::add(v[1], v[6]);
  const V a2 = L::add(v[2], v[5]), a3 = L::add(v[3], v[4]);
  const V d0 = L::sub(v[0], v[7]), d1 = L::sub(v[1], v[6]);
  const V d2 = L::sub(v[2], v[5]), d3 = L::sub(v[3], v[4]);
  const auto a03 = pairs<L>(a0, a3), a12 = pairs<L>(a1, a2);
  const Sums<L> outer = halfUp<shift>(dot(a03, c[4], c[4]));
  const Sums<L> inner = dot(a12, c[4], c[4]);
  v[0] = narrow<shift>(outer + inner);
  v[4] = narrow<shift>(outer - inner);
  v[2] = narrow<shift>(halfUp<shift>(dot(a03, c[2], -c[2])) + dot(a12, c[6], -c[6]));
  v[6] = narrow<shift>(halfUp<shift>(dot(a03, c[6], -c[6])) + dot(a12, -c[2], c[2]));
  const auto d01 = pairs<L>(d0, d1), d23 = pairs<L>(d2, d3);
  v[1] = narrow<shift>(halfUp<shift>(dot(d01, c[1], c[3])) + dot(d23, c[5], c[7]));
  v[3] = narrow<shift>(halfUp<shift>(dot(d01, c[3], -c[7])) + dot(d23, -c[1], -c[5]));
  v[5] = narrow<shift>(halfUp<shift>(dot(d01, c[5], -c[1])) + dot(d23, c[7], c[3]));
  v[7] = narrow<shift>(halfUp<shift>(dot(d01, c[7], -c[5])) + dot(d23, c[3], -c[1]));
}

// Inverse transform over v[0..7].
template <class L, int shift>
[[gnu::always_inline]] inline void inverse(typename L::V* v, const Pass& pass) {
  const int* c = pass.cosine;
  const auto v04 = pairs<L>(v[0], v[4]), v26 = pairs<L>(v[2], v[6]);
  const Sums<L> sum = halfUp<shift>(dot(v04, c[4], c[4]));
  const Sums<L> difference = halfUp<shift>(dot(v04, c[4], -c[4]));
  const Sums<L> p = dot(v26, c[2], c[6]), q = dot(v26, c[6], -c[2]);
  const auto v13 = pairs<L>(v[1], v[3]), v57 = pairs<L>(v[5], v[7]);
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

// Dequantised blocks to samples.
template <class L>
[[gnu::always_inline]] inline void inverseBlocks(typename L::V* v, std::uint8_t* dst, int dstStep) {
  inverse<L, kFirst.shift>(v, kFirst);
  transpose<L>(v);
  inverse<L, kLast.shift>(v, kLast);
  const typename L::V middle = L::set(128);
  for (int y = 0; y < 8; y += 2)
    L::storeTwoRows(row(dst, dstStep, y), row(dst, dstStep, y + 1), L::addSat(v[y], middle),
                    L::addSat(v[y + 1], middle));
}

// The vertical transform of the samples at x, a block's width for each group.
template <class L>
[[gnu::always_inline]] inline void forwardColumns(const std::int16_t* const* rows, std::ptrdiff_t x,
                                                  std::int16_t* dst) {
  typename L::V v[8];
  for (int n = 0; n < 8; ++n) v[n] = L::load(rows[n] + x);
  forward<L, kFirst.shift>(v, kFirst);
  transpose<L>(v);
  for (int i = 0; i < 8; ++i) L::scatter(dst + 8 * i, kBlockBytes, v[i]);
}

// The coefficients of the blocks at `columns`, before quantisation.
template <class L>
[[gnu::always_inline]] inline void coefficients(const std::int16_t* columns, typename L::V* v) {
  loadBlocks<L>(columns, v);
  forward<L, kSecond.shift>(v, kSecond);
}

// A lane takes 8 levels of at most 8 from a block, so that 16 bits hold a few hundred blocks.
constexpr int kLevelRuns = 256;
constexpr int kLevelTop = 8;
template <class L>
[[gnu::always_inline]] inline void addLevels(const std::int16_t* columns, const JpegQuantiser& q,
                                             typename L::V& sum) {
  alignas(16) static constexpr std::int16_t kNoMean[8] = {0, -1, -1, -1, -1, -1, -1, -1};
  const typename L::V top = L::set(kLevelTop);
  typename L::V v[8];
  coefficients<L>(columns, v);
  v[0] = L::bitAnd(v[0], L::broadcast(kNoMean));
  for (int u = 0; u < 8; ++u) sum = L::add(sum, L::least(magnitude<L>(v[u], q, u), top));
}
template <class L>
inline std::int64_t totalOf(typename L::V sum) {
  std::int16_t lanes[8 * L::kGroups];
  L::store(lanes, sum);
  std::int64_t total = 0;
  for (const std::int16_t lane : lanes) total += lane;
  return total;
}

// Calls work(lanes, i) for all blocks, the widest vectors first; i counts blocks.
template <class Work>
[[gnu::always_inline]] inline void overBlocks(int blocks, const Work& work) {
  std::ptrdiff_t i = 0;
  for (; i + WideLanes::kGroups <= blocks; i += WideLanes::kGroups) work(WideLanes{}, i);
  for (; i < blocks; ++i) work(NarrowLanes{}, i);
}

}  // namespace

int primJpegForward_16s(const std::int16_t* const* rows, std::int16_t* dst, int length) {
  if (const int status = checkVector(length, rows, dst)) return status;
  overBlocks(
      length / 8, [=]<class L>(L, std::ptrdiff_t i) __attribute__((always_inline)) {
        forwardColumns<L>(rows, 8 * i, dst + 64 * i);
      });
  const int left = length % 8;
  if (left == 0) return kStatusOk;
  std::int16_t samples[8][8] = {}, columns[64];
  const std::int16_t* last[8];
  for (int n = 0; n < 8; ++n) {
    for (int x = 0; x < left; ++x) samples[n][x] = rows[n][length - left + x];
    last[n] = samples[n];
  }
  forwardColumns<NarrowLanes>(last, 0, columns);
  std::int16_t* out = dst + 8 * std::ptrdiff_t{length - left};
  for (int i = 0; i < 8 * left; ++i) out[i] = columns[i];
  return kStatusOk;
}

int primJpegQuantise_16s(const std::int16_t* columns, std::int16_t* dst, int blocks,
                         const JpegQuantiser* quantiser) {
  if (const int status = checkVector(blocks, columns, dst, quantiser)) return status;
  overBlocks(
      blocks, [=]<class L>(L, std::ptrdiff_t i) __attribute__((always_inline)) {
        typename L::V v[8];
        coefficients<L>(columns + 64 * i, v);
        for (int u = 0; u < 8; ++u)
          L::scatter(dst + 64 * i + 8 * u, kBlockBytes, quantise<L>(v[u], *quantiser, u));
      });
  return kStatusOk;
}

int primJpegRequantise_16s8u(const std::int16_t* columns, std::uint8_t* dst, int dstStep,
                             int blocks, const JpegQuantiser* quantiser) {
  if (const int status = checkVector(blocks, columns, dst, quantiser)) return status;
  overBlocks(
      blocks, [=]<class L>(L, std::ptrdiff_t i) __attribute__((always_inline)) {
        typename L::V v[8];
        coefficients<L>(columns + 64 * i, v);
        for (int u = 0; u < 8; ++u)
          v[u] = L::mulLow(quantise<L>(v[u], *quantiser, u), L::broadcast(quantiser->step + 8 * u));
        inverseBlocks<L>(v, dst + 8 * i, dstStep);
      });
  return kStatusOk;
}

int primJpegLevels_16s(const std::int16_t* columns, int blocks, const JpegQuantiser* quantiser,
                       double* sum) {
  if (const int status = checkVector(blocks, columns, quantiser, sum)) return status;
  std::int64_t total = 0;
  constexpr int kMost = kLevelRuns * WideLanes::kGroups;
  for (std::ptrdiff_t start = 0; start < blocks; start += kMost) {
    const int count = blocks - start < kMost ? static_cast<int>(blocks - start) : kMost;
    WideLanes::V wide = WideLanes::set(0);
    NarrowLanes::V narrow = NarrowLanes::set(0);
    overBlocks(
        count, [&]<class L>(L, std::ptrdiff_t i) __attribute__((always_inline)) {
          const std::int16_t* at = columns + 64 * (start + i);
          if constexpr (L::kGroups == WideLanes::kGroups)
            addLevels<L>(at, *quantiser, wide);
          else
            addLevels<L>(at, *quantiser, narrow);
        });
    total += totalOf<WideLanes>(wide) + totalOf<NarrowLanes>(narrow);
  }
  *sum = static_cast<double>(total);
  return kStatusOk;
}

int primJpegInverse_16s8u(const std::int16_t* coefficients, std::uint8_t* dst, int dstStep,
                          int blocks) {
  if (const int status = checkVector(blocks, coefficients, dst)) return status;
  overBlocks(
      blocks, [=]<class L>(L, std::ptrdiff_t i) __attribute__((always_inline)) {
        typename L::V v[8];
        loadBlocks<L>(coefficients + 64 * i, v);
        inverseBlocks<L>(v, dst + 8 * i, dstStep);
      });
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
