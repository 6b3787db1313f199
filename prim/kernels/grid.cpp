#include "prim/kernels/intrinsics.h"
#include "prim/kernels/kernel.h"

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
#elif defined(__AVX512F__)
constexpr int kPixels = 16;
inline __m512 twoPixels(const float* packed, unsigned first, unsigned second) {
  return _mm512_insertf32x8(
      _mm512_castps256_ps512(_mm256_loadu_ps(packed + 2 * std::size_t{first})),
      _mm256_loadu_ps(packed + 2 * std::size_t{second}), 1);
}
// One corner of pixels 0 to 3 and 4 to 7: in quads 0 and 2 at z, in quads 1 and 3 at z + 1.
struct EightPixels {
  __m512 nearLeft, nearRight, farLeft, farRight;
};
inline EightPixels eightPixels(const float* packed, const unsigned* cell) {
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
inline __m512 alongValue(__m512 first, __m512 second, __m512 z, __m512 zr) {
  return _mm512_shuffle_f32x4(first, second, 0xdd) * z +
         _mm512_shuffle_f32x4(first, second, 0x88) * zr;
}
inline void readSome(const float* packed, const unsigned* cell, const float* fz, const float* fx,
                     float fy, float* dst) {
  const EightPixels a = eightPixels(packed, cell);
  const EightPixels b = eightPixels(packed, cell + 8);
  const __m512 one = _mm512_set1_ps(1.0f);
  const __m512 z = _mm512_loadu_ps(fz);
  const __m512 zr = one - z;
  const __m512 x = _mm512_loadu_ps(fx);
  const __m512 xr = one - x;
  const __m512 y = _mm512_set1_ps(fy);
  const __m512 yr = one - y;
  const __m512 nearRow = x * alongValue(a.nearRight, b.nearRight, z, zr) +
                         xr * alongValue(a.nearLeft, b.nearLeft, z, zr);
  const __m512 farRow =
      x * alongValue(a.farRight, b.farRight, z, zr) + xr * alongValue(a.farLeft, b.farLeft, z, zr);
  _mm512_storeu_ps(dst, yr * nearRow + y * farRow);
}
#elif defined(__AVX2__)
constexpr int kPixels = 8;
// One corner of four pixels: in the low half at z, in the high half at z + 1.
struct FourPixels {
  __m256 nearLeft, nearRight, farLeft, farRight;
};
inline FourPixels fourPixels(const float* packed, const unsigned* cell) {
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
inline __m256 alongValue(__m256 first, __m256 second, __m256 z, __m256 zr) {
  const __m256 low = _mm256_insertf128_ps(first, _mm256_castps256_ps128(second), 1);
  const __m256 high = _mm256_permute2f128_ps(first, second, 0x31);
  return high * z + low * zr;
}
inline void readSome(const float* packed, const unsigned* cell, const float* fz, const float* fx,
                     float fy, float* dst) {
  const FourPixels a = fourPixels(packed, cell);
  const FourPixels b = fourPixels(packed, cell + 4);
  const __m256 one = _mm256_set1_ps(1.0f);
  const __m256 z = _mm256_loadu_ps(fz);
  const __m256 zr = one - z;
  const __m256 x = _mm256_loadu_ps(fx);
  const __m256 xr = one - x;
  const __m256 y = _mm256_set1_ps(fy);
  const __m256 yr = one - y;
  const __m256 nearRow = x * alongValue(a.nearRight, b.nearRight, z, zr) +
                         xr * alongValue(a.nearLeft, b.nearLeft, z, zr);
  const __m256 farRow =
      x * alongValue(a.farRight, b.farRight, z, zr) + xr * alongValue(a.farLeft, b.farLeft, z, zr);
  _mm256_storeu_ps(dst, yr * nearRow + y * farRow);
}
#else
constexpr int kPixels = 4;
struct Corners {
  __m128 nearLeft, nearRight, farLeft, farRight;
};
inline Corners corners(const float* packed, const unsigned* cell) {
  Corners c = {_mm_loadu_ps(packed + 2 * std::size_t{cell[0]}),
               _mm_loadu_ps(packed + 2 * std::size_t{cell[1]}),
               _mm_loadu_ps(packed + 2 * std::size_t{cell[2]}),
               _mm_loadu_ps(packed + 2 * std::size_t{cell[3]})};
  _MM_TRANSPOSE4_PS(c.nearLeft, c.nearRight, c.farLeft, c.farRight);
  return c;
}
inline void readSome(const float* packed, const unsigned* cell, const float* fz, const float* fx,
                     float fy, float* dst) {
  const Corners low = corners(packed, cell);
  const Corners high = corners(packed + 4, cell);
  const __m128 one = _mm_set1_ps(1.0f);
  const __m128 z = _mm_loadu_ps(fz);
  const __m128 zr = one - z;
  const __m128 x = _mm_loadu_ps(fx);
  const __m128 xr = one - x;
  const __m128 y = _mm_set1_ps(fy);
  const __m128 yr = one - y;
  const __m128 nearRow =
      x * (high.nearRight * z + low.nearRight * zr) + xr * (high.nearLeft * z + low.nearLeft * zr);
  const __m128 farRow =
      x * (high.farRight * z + low.farRight * zr) + xr * (high.farLeft * z + low.farLeft * zr);
  _mm_storeu_ps(dst, yr * nearRow + y * farRow);
}
#endif

}  // namespace

int primvGridCells_32f8u(const float* src, std::uint8_t* dst, int length, const GridAxis* axis) {
  if (!src || !dst || !axis) return kStatusNullPtr;
  if (length < 1) return kStatusBadSize;
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
  if (!near || !far || !packed) return kStatusNullPtr;
  if (cells < 1) return kStatusBadSize;
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
  if (!guide || !dst || !axis || !packed || !column || !fraction) return kStatusNullPtr;
  if (length < 1) return kStatusBadSize;
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
