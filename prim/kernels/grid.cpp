#include "prim/kernels/shared/floats.h"
#include "prim/kernels/shared/kernel.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Steps of different kinds run apart, over strips that stay in the first-level cache.
constexpr int kStrip = 256;

// Written out per step so that each loop has one form for the vectoriser.
inline void coordinates(const float* src, float* dst, int length, const GridAxis& axis) {
  const float origin = axis.origin;
  const float scale = axis.scale;
  const float offset = axis.offset;
  if (axis.clip) {
    const float low = axis.low;
    const float high = axis.high;
    for (int i = 0; i < length; ++i) {
      const float v = src[i];
      const float below = v <= high ? v : high;
      const float inside = below >= low ? below : low;
      dst[i] = (inside - origin) * scale + offset;
    }
  } else {
    for (int i = 0; i < length; ++i) dst[i] = (src[i] - origin) * scale + offset;
  }
}

// Truncation with saturation to 0..255.
inline int cellOf(float coordinate, float zero, float top) {
  const float positive = coordinate > zero ? coordinate : zero;  // NaN becomes 0
  return static_cast<int>(positive < top ? positive : top);
}

inline float readOne(const float* cell, float fx, float fy, float fz) {
  const float gx = 1.0f - fx;
  const float gy = 1.0f - fy;
  const float gz = 1.0f - fz;
  const float nearLeft = cell[4] * fz + cell[0] * gz;
  const float nearRight = cell[5] * fz + cell[1] * gz;
  const float farLeft = cell[6] * fz + cell[2] * gz;
  const float farRight = cell[7] * fz + cell[3] * gz;
  const float nearRow = fx * nearRight + gx * nearLeft;
  const float farRow = fx * farRight + gx * farLeft;
  return gy * nearRow + fy * farRow;
}

// Several pixels at a time: the eight corners of each are loaded side by side and transposed, so
// that a register holds one corner of all pixels. `cell` counts pairs of floats from `packed`,
// which makes the address one operand. A gather per corner ran at half the speed.
#if defined(VX_KERNEL_SCALAR)
constexpr int kPixels = 1;
inline void readSome(const float* packed, const unsigned* cell, const float* fz, const float* fx,
                     float fy, float* dst) {
  dst[0] = readOne(packed + 2 * std::size_t{cell[0]}, fx[0], fy, fz[0]);
}
#else
constexpr int kPixels = kFloats;
// One corner of all pixels in each register.
struct Corners {
  Floats nearLeft, nearRight, farLeft, farRight;
};
// The corners at z and at z + 1.
struct Cells {
  Corners low, high;
};

#if defined(__AVX512F__)
inline __m512 twoPixels(const float* packed, unsigned first, unsigned second) {
  return _mm512_insertf32x8(
      _mm512_castps256_ps512(_mm256_loadu_ps(packed + 2 * std::size_t{first})),
      _mm256_loadu_ps(packed + 2 * std::size_t{second}), 1);
}
// Of pixels 0 to 3 and 4 to 7: in quads 0 and 2 at z, in quads 1 and 3 at z + 1.
inline Corners eightPixels(const float* packed, const unsigned* cell) {
  const __m512 p0 = twoPixels(packed, cell[0], cell[4]);
  const __m512 p1 = twoPixels(packed, cell[1], cell[5]);
  const __m512 p2 = twoPixels(packed, cell[2], cell[6]);
  const __m512 p3 = twoPixels(packed, cell[3], cell[7]);
  const __m512 near01 = _mm512_unpacklo_ps(p0, p1);
  const __m512 near23 = _mm512_unpacklo_ps(p2, p3);
  const __m512 far01 = _mm512_unpackhi_ps(p0, p1);
  const __m512 far23 = _mm512_unpackhi_ps(p2, p3);
  return {_mm512_shuffle_ps(near01, near23, 0x44), _mm512_shuffle_ps(near01, near23, 0xee),
          _mm512_shuffle_ps(far01, far23, 0x44), _mm512_shuffle_ps(far01, far23, 0xee)};
}
template <int kQuads>
inline Corners quads(const Corners& a, const Corners& b) {
  return {_mm512_shuffle_f32x4(a.nearLeft, b.nearLeft, kQuads),
          _mm512_shuffle_f32x4(a.nearRight, b.nearRight, kQuads),
          _mm512_shuffle_f32x4(a.farLeft, b.farLeft, kQuads),
          _mm512_shuffle_f32x4(a.farRight, b.farRight, kQuads)};
}
inline Cells cellsOf(const float* packed, const unsigned* cell) {
  const Corners a = eightPixels(packed, cell);
  const Corners b = eightPixels(packed, cell + 8);
  return {quads<0x88>(a, b), quads<0xdd>(a, b)};
}
#elif defined(__AVX2__)
// Of four pixels: in the low half at z, in the high half at z + 1.
inline Corners fourPixels(const float* packed, const unsigned* cell) {
  const __m256 p0 = _mm256_loadu_ps(packed + 2 * std::size_t{cell[0]});
  const __m256 p1 = _mm256_loadu_ps(packed + 2 * std::size_t{cell[1]});
  const __m256 p2 = _mm256_loadu_ps(packed + 2 * std::size_t{cell[2]});
  const __m256 p3 = _mm256_loadu_ps(packed + 2 * std::size_t{cell[3]});
  const __m256 near01 = _mm256_unpacklo_ps(p0, p1);
  const __m256 near23 = _mm256_unpacklo_ps(p2, p3);
  const __m256 far01 = _mm256_unpackhi_ps(p0, p1);
  const __m256 far23 = _mm256_unpackhi_ps(p2, p3);
  return {_mm256_shuffle_ps(near01, near23, 0x44), _mm256_shuffle_ps(near01, near23, 0xee),
          _mm256_shuffle_ps(far01, far23, 0x44), _mm256_shuffle_ps(far01, far23, 0xee)};
}
template <int kHalves>
inline Corners halves(const Corners& a, const Corners& b) {
  return {_mm256_permute2f128_ps(a.nearLeft, b.nearLeft, kHalves),
          _mm256_permute2f128_ps(a.nearRight, b.nearRight, kHalves),
          _mm256_permute2f128_ps(a.farLeft, b.farLeft, kHalves),
          _mm256_permute2f128_ps(a.farRight, b.farRight, kHalves)};
}
inline Cells cellsOf(const float* packed, const unsigned* cell) {
  const Corners a = fourPixels(packed, cell);
  const Corners b = fourPixels(packed, cell + 4);
  return {halves<0x20>(a, b), halves<0x31>(a, b)};
}
#else
inline Corners fourPixels(const float* packed, const unsigned* cell) {
  Corners c = {_mm_loadu_ps(packed + 2 * std::size_t{cell[0]}),
               _mm_loadu_ps(packed + 2 * std::size_t{cell[1]}),
               _mm_loadu_ps(packed + 2 * std::size_t{cell[2]}),
               _mm_loadu_ps(packed + 2 * std::size_t{cell[3]})};
  _MM_TRANSPOSE4_PS(c.nearLeft, c.nearRight, c.farLeft, c.farRight);
  return c;
}
inline Cells cellsOf(const float* packed, const unsigned* cell) {
  return {fourPixels(packed, cell), fourPixels(packed + 4, cell)};
}
#endif

// readOne's operations on all pixels.
inline void readSome(const float* packed, const unsigned* cell, const float* fz, const float* fx,
                     float fy, float* dst) {
  const Cells c = cellsOf(packed, cell);
  const Floats one = setFloats(1.0f);
  const Floats z = loadFloats(fz);
  const Floats zr = one - z;
  const Floats x = loadFloats(fx);
  const Floats xr = one - x;
  const Floats y = setFloats(fy);
  const Floats nearRow = x * (c.high.nearRight * z + c.low.nearRight * zr) +
                         xr * (c.high.nearLeft * z + c.low.nearLeft * zr);
  const Floats farRow = x * (c.high.farRight * z + c.low.farRight * zr) +
                        xr * (c.high.farLeft * z + c.low.farLeft * zr);
  storeFloats(dst, (one - y) * nearRow + y * farRow);
}
#endif

}  // namespace

int primvGridCells_32f8u(const float* src, std::uint8_t* dst, int length, const GridAxis* axis) {
  if (const int status = checkVector(length, src, dst, axis)) return status;
  const float zero = opaque(0.0f);
  const float top = opaque(static_cast<float>(axis->topCell));
  float coordinate[kStrip];
  for (int start = 0; start < length; start += kStrip) {
    const int n = length - start < kStrip ? length - start : kStrip;
    coordinates(src + start, coordinate, n, *axis);
    std::uint8_t* out = dst + start;
    for (int i = 0; i < n; ++i)
      out[i] = static_cast<std::uint8_t>(cellOf(coordinate[i], zero, top));
  }
  return kStatusOk;
}

int primvGridPack_32f(const float* near, const float* far, int depth, float* packed, int cells) {
  if (const int status = checkVector(cells, near, far, packed)) return status;
  const float* nearRight = near + depth;
  const float* farRight = far + depth;
  int p = 0;
#if !defined(VX_KERNEL_SCALAR)
  for (; p + 4 <= cells; p += 4) {
    __m128 a = _mm_loadu_ps(near + p);
    __m128 b = _mm_loadu_ps(nearRight + p);
    __m128 c = _mm_loadu_ps(far + p);
    __m128 d = _mm_loadu_ps(farRight + p);
    _MM_TRANSPOSE4_PS(a, b, c, d);
    float* out = packed + 4 * std::ptrdiff_t{p};
    _mm_storeu_ps(out, a);
    _mm_storeu_ps(out + 4, b);
    _mm_storeu_ps(out + 8, c);
    _mm_storeu_ps(out + 12, d);
  }
#endif
  for (; p < cells; ++p) {
    float* out = packed + 4 * std::ptrdiff_t{p};
    out[0] = near[p];
    out[1] = nearRight[p];
    out[2] = far[p];
    out[3] = farRight[p];
  }
  return kStatusOk;
}

int primvGridRead_32f(const float* guide, float* dst, int length, const GridAxis* axis,
                      const float* packed, const int* column, const float* fraction,
                      float rowFraction) {
  if (const int status = checkVector(length, guide, dst, axis, packed, column, fraction))
    return status;
  const float zero = opaque(0.0f);
  const float top = opaque(255.0f);
  float along[kStrip];
  unsigned cell[kStrip];
  for (int start = 0; start < length; start += kStrip) {
    const int n = length - start < kStrip ? length - start : kStrip;
    const int* left = column + start;
    const float* fx = fraction + start;
    float* out = dst + start;
    coordinates(guide + start, along, n, *axis);
    for (int i = 0; i < n; ++i) {
      const int z = cellOf(along[i], zero, top);
      along[i] -= static_cast<float>(z);
      cell[i] = 2 * static_cast<unsigned>(left[i] + z);
    }
    int i = 0;
    for (; i + kPixels <= n; i += kPixels)
      readSome(packed, cell + i, along + i, fx + i, rowFraction, out + i);
    for (; i < n; ++i)
      out[i] = readOne(packed + 2 * std::size_t{cell[i]}, fx[i], rowFraction, along[i]);
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
