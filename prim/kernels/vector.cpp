#include "prim/kernels/shared/divide.h"
#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
namespace {

// A vector is a row of an image; its step is never used.
template <class T, class F>
int mapVector(T* srcDst, int length, F f) {
  return mapRows(srcDst, 0, srcDst, 0, length, 1, f);
}

template <class S, class T, class F>
int mapVector(const S* src, T* srcDst, int length, F f) {
  return mapRows(src, 0, srcDst, 0, srcDst, 0, length, 1, f);
}

}  // namespace

int primvSet_32f(float value, float* dst, int length) {
  return mapVector(dst, length, [value](float) { return value; });
}

int primvZero_32f(float* dst, int length) {
  if (const int status = checkVector(length, dst)) return status;
  __builtin_memset(dst, 0, static_cast<std::size_t>(length) * sizeof(float));
  return kStatusOk;
}

int primvCopy_32f(const float* src, float* dst, int length) {
  if (const int status = checkVector(length, src, dst)) return status;
  __builtin_memmove(dst, src, static_cast<std::size_t>(length) * sizeof(float));
  return kStatusOk;
}

int primvAdd_32f_I(const float* src, float* srcDst, int length) {
  return mapVector(src, srcDst, length, [](float a, float b) { return a + b; });
}

int primvAddC_32f_I(float value, float* srcDst, int length) {
  if (const int status = checkVector(length, srcDst)) return status;
  if (value == 0.0f) return kStatusOk;
  return mapVector(srcDst, length, [value](float a) { return a + value; });
}

int primvSubC_32f_I(float value, float* srcDst, int length) {
  if (const int status = checkVector(length, srcDst)) return status;
  if (value == 0.0f) return kStatusOk;
  return mapVector(srcDst, length, [value](float a) { return a - value; });
}

int primvMulC_32f_I(float value, float* srcDst, int length) {
  if (const int status = checkVector(length, srcDst)) return status;
  if (value == 1.0f) return kStatusOk;
  if (value == 0.0f) return VX_VARIANT::primvZero_32f(srcDst, length);
  return mapVector(srcDst, length, [value](float a) { return a * value; });
}

int primvDiv_32f_I(const float* src, float* srcDst, int length) {
  if (const int status = checkVector(length, src, srcDst)) return status;
  return divideRow(src, srcDst, length) ? kStatusDivByZero : kStatusOk;
}

int primvSqr_32f_I(float* srcDst, int length) {
  return mapVector(srcDst, length, [](float a) { return a * a; });
}

// The root in float is the root in double rounded to float: a double has more than twice the digits
// of a float plus two.
int primvMagnitude_32fc(const Complex32f* src, float* dst, int length) {
  if (const int status = checkVector(length, src, dst)) return status;
  VX_INDEPENDENT
  for (int i = 0; i < length; ++i)
    dst[i] = __builtin_sqrtf(src[i].re * src[i].re + src[i].im * src[i].im);
  return kStatusOk;
}

int primvMul_32fc_I(const Complex32f* src, Complex32f* srcDst, int length) {
  if (const int status = checkVector(length, src, srcDst)) return status;
  // With AVX-512 at hand g++ 12 makes one fused operation of the alternating difference and sum, in
  // spite of -ffp-contract=off, and rounds once instead of twice. The product with a -1 that it
  // cannot see is exact and leaves two sums.
  const float minus = opaque(-1.0f);
  VX_INDEPENDENT
  for (int i = 0; i < length; ++i) {
    const Complex32f a = src[i];
    const Complex32f b = srcDst[i];
    srcDst[i].re = a.re * b.re + (minus * a.im) * b.im;
    srcDst[i].im = a.re * b.im + a.im * b.re;
  }
  return kStatusOk;
}

int primvMul_32f32fc_I(const float* src, Complex32f* srcDst, int length) {
  if (const int status = checkVector(length, src, srcDst)) return status;
  VX_INDEPENDENT
  for (int i = 0; i < length; ++i) {
    const float factor = src[i];
    srcDst[i].re *= factor;
    srcDst[i].im *= factor;
  }
  return kStatusOk;
}

int primvThreshold_GT_32f_I(float* srcDst, int length, float level) {
  return mapVector(srcDst, length, [level](float x) { return x <= level ? x : level; });
}

int primvThreshold_LT_32f_I(float* srcDst, int length, float level) {
  return mapVector(srcDst, length, [level](float x) { return x >= level ? x : level; });
}

}  // namespace vx::prim::VX_VARIANT
