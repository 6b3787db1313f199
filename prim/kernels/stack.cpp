#include "prim/kernels/stack/eight.h"

namespace vx::prim::VX_VARIANT {
namespace {

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
