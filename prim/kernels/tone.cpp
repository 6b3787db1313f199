#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
int primvClip_32f_I(float low, float high, float* srcDst, int length) {
  if (const int status = checkVector(length, srcDst)) return status;
  VX_INDEPENDENT
  for (int i = 0; i < length; ++i) {
    const float v = srcDst[i] >= low ? srcDst[i] : low;
    srcDst[i] = v <= high ? v : high;
  }
  return kStatusOk;
}

int primvTurnHue_32f_I(float shift, float* srcDst, int length) {
  if (const int status = checkVector(length, srcDst)) return status;
  if (shift > 0.0f) {
    VX_INDEPENDENT
    for (int i = 0; i < length; ++i) {
      const float v = srcDst[i] + shift;
      srcDst[i] = v > 1.0f ? v - 1.0f : v;
    }
  } else {
    VX_INDEPENDENT
    for (int i = 0; i < length; ++i) {
      const float v = srcDst[i] + shift;
      srcDst[i] = v < 0.0f ? v + 1.0f : v;
    }
  }
  return kStatusOk;
}

int primvSharpen_32f(float amount, const float* src, const float* blur, float* dst, int length) {
  if (const int status = checkVector(length, src, blur, dst)) return status;
  VX_INDEPENDENT
  for (int i = 0; i < length; ++i) dst[i] = blur[i] + (src[i] - blur[i]) * amount;
  return kStatusOk;
}

int primvDetailSize_32f(const float* src, const float* base, float* dst, int length) {
  if (const int status = checkVector(length, src, base, dst)) return status;
  VX_INDEPENDENT
  for (int i = 0; i < length; ++i) dst[i] = __builtin_fabsf(src[i] - base[i]);
  return kStatusOk;
}

int primvDetailPart_32f(float least, const float* src, const float* base, float* sign, float* size,
                        int length) {
  if (const int status = checkVector(length, src, base, sign, size)) return status;
  VX_INDEPENDENT
  for (int i = 0; i < length; ++i) {
    const float detail = src[i] - base[i];
    const float magnitude = __builtin_fabsf(detail) + least;
    sign[i] = detail / magnitude;
    size[i] = magnitude;
  }
  return kStatusOk;
}

int primvDetailJoin_32f(float gain, const float* sign, const float* size, const float* base,
                        float* dst, int length) {
  if (const int status = checkVector(length, sign, size, base, dst)) return status;
  VX_INDEPENDENT
  for (int i = 0; i < length; ++i) dst[i] = base[i] + (sign[i] * size[i]) * gain;
  return kStatusOk;
}

}  // namespace vx::prim::VX_VARIANT
