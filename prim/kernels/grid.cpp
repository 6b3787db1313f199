#include "prim/kernels/kernel.h"

#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// Several pixels at a time: the eight corners of each are loaded as two quads, and transposed so
// that each register holds one corner of all pixels. A gather per corner ran at half the speed.
#if defined(VX_KERNEL_SCALAR)
constexpr int kPixels = 1;
inline void readSome(const float* packed, const int* cell, const float* fz, const float* fx,
                     float fy, float* dst) {
  dst[0] = readOne(packed + 4 * std::ptrdiff_t{cell[0]}, fx[0], fy, fz[0]);
}
#elif defined(__AVX2__)
constexpr int kPixels = 8;
struct Corners {
  __m256 nearLeft, nearRight, farLeft, farRight;
};
inline __m256 quadPair(const float* a, const float* b) {
  return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(a)), _mm_loadu_ps(b), 1);
}
inline Corners corners(const float* const* at, int shift) {
  const __m256 p0 = quadPair(at[0] + shift, at[4] + shift);
  const __m256 p1 = quadPair(at[1] + shift, at[5] + shift);
  const __m256 p2 = quadPair(at[2] + shift, at[6] + shift);
  const __m256 p3 = quadPair(at[3] + shift, at[7] + shift);
  const __m256 left01 = _mm256_unpacklo_ps(p0, p1);
  const __m256 left23 = _mm256_unpacklo_ps(p2, p3);
  const __m256 far01 = _mm256_unpackhi_ps(p0, p1);
  const __m256 far23 = _mm256_unpackhi_ps(p2, p3);
  return {_mm256_shuffle_ps(left01, left23, 0x44), _mm256_shuffle_ps(left01, left23, 0xee),
          _mm256_shuffle_ps(far01, far23, 0x44), _mm256_shuffle_ps(far01, far23, 0xee)};
}
inline void readSome(const float* packed, const int* cell, const float* fz, const float* fx,
                     float fy, float* dst) {
  const float* at[kPixels];
  for (int i = 0; i < kPixels; ++i) at[i] = packed + 4 * std::ptrdiff_t{cell[i]};
  const Corners low = corners(at, 0);
  const Corners high = corners(at, 4);
  const __m256 one = _mm256_set1_ps(1.0f);
  const __m256 z = _mm256_loadu_ps(fz);
  const __m256 zr = one - z;
  const __m256 x = _mm256_loadu_ps(fx);
  const __m256 xr = one - x;
  const __m256 y = _mm256_set1_ps(fy);
  const __m256 yr = one - y;
  const __m256 nearRow =
      x * (high.nearRight * z + low.nearRight * zr) + xr * (high.nearLeft * z + low.nearLeft * zr);
  const __m256 farRow =
      x * (high.farRight * z + low.farRight * zr) + xr * (high.farLeft * z + low.farLeft * zr);
  _mm256_storeu_ps(dst, yr * nearRow + y * farRow);
}
#else
constexpr int kPixels = 4;
struct Corners {
  __m128 nearLeft, nearRight, farLeft, farRight;
};
inline Corners corners(const float* const* at, int shift) {
  Corners c = {_mm_loadu_ps(at[0] + shift), _mm_loadu_ps(at[1] + shift),
               _mm_loadu_ps(at[2] + shift), _mm_loadu_ps(at[3] + shift)};
  _MM_TRANSPOSE4_PS(c.nearLeft, c.nearRight, c.farLeft, c.farRight);
  return c;
}
inline void readSome(const float* packed, const int* cell, const float* fz, const float* fx,
                     float fy, float* dst) {
  const float* at[kPixels];
  for (int i = 0; i < kPixels; ++i) at[i] = packed + 4 * std::ptrdiff_t{cell[i]};
  const Corners low = corners(at, 0);
  const Corners high = corners(at, 4);
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
  int cell[kStrip];
  for (int start = 0; start < length; start += kStrip) {
    const int n = length - start < kStrip ? length - start : kStrip;
    const int* left = column + start;
    const float* fx = fraction + start;
    float* out = dst + start;
    coordinates(guide + start, along, n, *axis);
    for (int i = 0; i < n; ++i) {
      const int z = cellOf(along[i], zero, top);
      along[i] -= static_cast<float>(z);
      cell[i] = left[i] + z;
    }
    int i = 0;
    for (; i + kPixels <= n; i += kPixels)
      readSome(packed, cell + i, along + i, fx + i, rowFraction, out + i);
    for (; i < n; ++i)
      out[i] = readOne(packed + 4 * std::ptrdiff_t{cell[i]}, fx[i], rowFraction, along[i]);
  }
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
