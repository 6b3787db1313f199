// Compiled twice for the AVX-512 body: the second time, as the variant avx512dot, with the dot
// products of the processors that have them. Sums of integers are the same either way.

#include "prim/kernels/shared/ints.h"

#if defined(__AVX512BW__) && !defined(__AVX512VNNI__)
namespace vx::prim::avx512dot {
decltype(prim::primMatchColumn_32s) primMatchColumn_32s;
}
#endif

namespace vx::prim::VX_VARIANT {
namespace {

bool badMap(int rows, int lanes) {
  return (lanes != 32 && lanes != 48 && lanes != 64) || rows < 1 ||
         std::int64_t{rows} * lanes > 1 << matchPositionBits(lanes);
}

#if defined(VX_KERNEL_SCALAR)

int sample(const std::uint32_t* pairs, std::ptrdiff_t at) {
  return static_cast<std::int16_t>(pairs[at] & 0xFFFF);
}

void blockColumn(const std::uint32_t* block, const std::uint32_t* target, std::ptrdiff_t pitch,
                 int half, int rows, int lanes, bool add, std::int32_t* map) {
  for (int v = 0; v < rows; ++v)
    for (int u = 0; u < lanes; ++u) {
      std::uint32_t sum = 0;
      for (int r = 0; r < 2 * half; ++r)
        for (int c = 0; c < half; ++c)
          sum += static_cast<std::uint32_t>(-2 * sample(block, r * pitch + c)) *
                 static_cast<std::uint32_t>(sample(target, (v + r) * pitch + u + c));
      std::int32_t& to = map[v * lanes + u];
      to = static_cast<std::int32_t>((add ? static_cast<std::uint32_t>(to) : 0) + sum);
    }
}

#else

// The samples of three cells times -2, in pairs that follow one another.
template <int half>
void doubleCells(const std::uint32_t* block, std::ptrdiff_t pitch, int rows, std::int32_t* cells) {
  const auto doubled = [](std::uint32_t word) {
    return static_cast<std::uint16_t>(-2 * static_cast<std::int16_t>(word & 0xFFFF));
  };
  for (int r = 0; r < rows; ++r)
    for (int p = 0; p < half; p += 2) {
      const std::uint32_t pair = block[r * pitch + p];
      *cells++ = static_cast<std::int32_t>(std::uint32_t{doubled(pair)} |
                                           std::uint32_t{doubled(pair >> 16)} << 16);
    }
}

// The products of cells 0 to 2, as far as they are asked for, with kVectors vectors of positions in
// one row. A load of the target serves all cells.
template <int half, int kVectors, bool k0, bool k1, bool k2>
[[gnu::always_inline]] inline void cellRow(const std::int32_t* cells, const std::uint32_t* target,
                                           std::ptrdiff_t pitch, Ints (&sums)[3][kVectors]) {
  constexpr int kCell = half * half / 2;
  for (int z = 0; z < kVectors; ++z) sums[0][z] = sums[1][z] = sums[2][z] = Ints{};
#pragma GCC unroll 2
  for (int r = 0; r < half; ++r)
#pragma GCC unroll 4
    for (int p = 0; p < half / 2; ++p) {
      const std::int32_t* at = cells + r * (half / 2) + p;
      Ints there[kVectors];
      for (int z = 0; z < kVectors; ++z)
        there[z] = loadInts(target + r * pitch + 2 * p + kInts * z);
      if constexpr (k0)
        for (int z = 0; z < kVectors; ++z)
          sums[0][z] = dotPairs(sums[0][z], there[z], setInts(at[0]));
      if constexpr (k1)
        for (int z = 0; z < kVectors; ++z)
          sums[1][z] = dotPairs(sums[1][z], there[z], setInts(at[kCell]));
      if constexpr (k2)
        for (int z = 0; z < kVectors; ++z)
          sums[2][z] = dotPairs(sums[2][z], there[z], setInts(at[2 * kCell]));
    }
}

// Row w of the target meets the upper cell of a block at position w, the lower one at w - half.
template <int half, int kVectors, bool kLower>
void columnPart(const std::int32_t* cells, const std::uint32_t* target, std::ptrdiff_t pitch,
                int rows, int lanes, bool add, std::int32_t* upper, std::int32_t* lower) {
  Ints sums[3][kVectors];
  const auto put = [&](std::int32_t * map, int v, const Ints* from, bool onto)
      __attribute__((always_inline)) {
    for (int z = 0; z < kVectors; ++z) {
      std::int32_t* at = map + v * lanes + kInts * z;
      storeInts(at, onto ? loadInts(at) + from[z] : from[z]);
    }
  };
  const int both = rows < half ? rows : half;
  int w = 0;
  for (; w < both; ++w) {
    cellRow<half, kVectors, true, kLower, false>(cells, target + w * pitch, pitch, sums);
    put(upper, w, sums[0], add);
    if constexpr (kLower) put(lower, w, sums[1], add);
  }
  for (; w < rows; ++w) {
    cellRow<half, kVectors, true, true, kLower>(cells, target + w * pitch, pitch, sums);
    put(upper, w, sums[0], add);
    put(upper, w - half, sums[1], true);
    if constexpr (kLower) {
      put(lower, w, sums[1], add);
      put(lower, w - half, sums[2], true);
    }
  }
  for (w = w < half ? half : w; w < rows + half; ++w) {
    cellRow<half, kVectors, false, true, kLower>(cells, target + w * pitch, pitch, sums);
    put(upper, w - half, sums[1], true);
    if constexpr (kLower) put(lower, w - half, sums[2], true);
  }
}

template <int half, int kVectors>
void columnParts(const std::int32_t* cells, const std::uint32_t* target, std::ptrdiff_t pitch,
                 int rows, int lanes, bool add, std::int32_t* upper, std::int32_t* lower) {
  for (int u = 0; u < lanes; u += kVectors * kInts)
    if (lower != nullptr)
      columnPart<half, kVectors, true>(cells, target + u, pitch, rows, lanes, add, upper + u,
                                       lower + u);
    else
      columnPart<half, kVectors, false>(cells, target + u, pitch, rows, lanes, add, upper + u,
                                        nullptr);
}

template <int half>
void column(const std::uint32_t* block, const std::uint32_t* target, std::ptrdiff_t pitch, int rows,
            int lanes, bool add, std::int32_t* upper, std::int32_t* lower) {
  alignas(64) std::int32_t cells[3 * half * half / 2];
  doubleCells<half>(block, pitch, lower != nullptr ? 3 * half : 2 * half, cells);
  if (lanes == 48)
    columnParts<half, 3>(cells, target, pitch, rows, lanes, add, upper, lower);
  else
    columnParts<half, kInts == 8 ? 4 : 2>(cells, target, pitch, rows, lanes, add, upper, lower);
}

#endif

}  // namespace

int primMatchColumn_32s(const std::uint32_t* block, const std::uint32_t* target,
                        std::ptrdiff_t pitch, int half, int rows, int lanes, bool add,
                        std::int32_t* upper, std::int32_t* lower) {
#if defined(__AVX512BW__) && !defined(__AVX512VNNI__)
  if (primDotProducts)
    return avx512dot::primMatchColumn_32s(block, target, pitch, half, rows, lanes, add, upper,
                                          lower);
#endif
  if (block == nullptr || target == nullptr || upper == nullptr) return kStatusNullPtr;
  if (badMap(rows, lanes) || (half != 4 && half != 6 && half != 8)) return kStatusBadSize;
#if defined(VX_KERNEL_SCALAR)
  blockColumn(block, target, pitch, half, rows, lanes, add, upper);
  if (lower != nullptr)
    blockColumn(block + half * pitch, target, pitch, half, rows, lanes, add, lower);
#else
  if (half == 4)
    column<4>(block, target, pitch, rows, lanes, add, upper, lower);
  else if (half == 6)
    column<6>(block, target, pitch, rows, lanes, add, upper, lower);
  else
    column<8>(block, target, pitch, rows, lanes, add, upper, lower);
#endif
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
