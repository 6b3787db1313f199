#include "prim/kernels/shared/divide.h"
#include "prim/kernels/shared/exp_ln.h"
#include "prim/kernels/shared/rows.h"

namespace vx::prim::VX_VARIANT {
namespace {

// Subtrahend and divisor are the first operand throughout.
constexpr auto kAdd = [](float a, float b) { return a + b; };
constexpr auto kSubFrom = [](float subtrahend, float b) { return b - subtrahend; };
constexpr auto kMul = [](float a, float b) { return a * b; };
constexpr auto kAbs = [](float a) { return __builtin_fabsf(a); };

}  // namespace

int primAdd_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height) {
  return mapRows(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, width, height, kAdd);
}

int primAdd_32f_C3IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height) {
  return mapRows(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, width, height, kAdd, 3);
}

int primAdd_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                    int dstStep, int width, int height) {
  return mapRows(src1, src1Step, src2, src2Step, dst, dstStep, width, height, kAdd);
}

int primSub_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height) {
  return mapRows(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, width, height, kSubFrom);
}

int primSub_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                    int dstStep, int width, int height) {
  return mapRows(src1, src1Step, src2, src2Step, dst, dstStep, width, height, kSubFrom);
}

int primMul_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height) {
  return mapRows(src, srcStep, srcDst, srcDstStep, srcDst, srcDstStep, width, height, kMul);
}

int primDiv_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height) {
  if (const int status = checkImage(width, height, src, srcDst)) return status;
  int status = kStatusOk;
  for (int y = 0; y < height; ++y) {
    if (divideRow(row(src, srcStep, y), row(srcDst, srcDstStep, y), width))
      status = kStatusDivByZero;
  }
  return status;
}

int primAddC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height) {
  return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height,
                 [value](float a) { return a + value; });
}

int primAddC_32f_C3IR(const float* value, float* srcDst, int srcDstStep, int width, int height) {
  if (value == nullptr || srcDst == nullptr) return kStatusNullPtr;
  return mapChannels(srcDst, srcDstStep, width, height, {value[0], value[1], value[2]}, kAdd);
}

int primSubC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height) {
  return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height,
                 [value](float a) { return a - value; });
}

int primSubC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, int width,
                     int height) {
  return mapRows(src, srcStep, dst, dstStep, width, height, [value](float a) { return a - value; });
}

int primMulC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height) {
  return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height,
                 [value](float a) { return a * value; });
}

int primMulC_32f_C3IR(const float* value, float* srcDst, int srcDstStep, int width, int height) {
  if (value == nullptr || srcDst == nullptr) return kStatusNullPtr;
  return mapChannels(srcDst, srcDstStep, width, height, {value[0], value[1], value[2]}, kMul);
}

int primMulC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, int width,
                     int height) {
  return mapRows(src, srcStep, dst, dstStep, width, height, [value](float a) { return a * value; });
}

int primAbs_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width, int height) {
  return mapRows(src, srcStep, dst, dstStep, width, height, kAbs);
}

int primAbs_32f_C1IR(float* srcDst, int srcDstStep, int width, int height) {
  return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height, kAbs);
}

int primAbsDiff_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step,
                        float* dst, int dstStep, int width, int height) {
  if (const int status = checkImage(width, height, src1, src2, dst)) return status;
  if (shortStep(src1Step, width, sizeof(float)) || shortStep(src2Step, width, sizeof(float)) ||
      shortStep(dstStep, width, sizeof(float)))
    return kStatusBadStep;
  return mapRows(src1, src1Step, src2, src2Step, dst, dstStep, width, height,
                 [](float a, float b) { return __builtin_fabsf(a - b); });
}

int primSqr_32f_C1IR(float* srcDst, int srcDstStep, int width, int height) {
  return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height,
                 [](float a) { return a * a; });
}

int primExp_32f_C1IR(float* srcDst, int srcDstStep, int width, int height) {
  return mapRows(srcDst, srcDstStep, srcDst, srcDstStep, width, height, expElement);
}

int primLn_32f_C1IR(float* srcDst, int srcDstStep, int width, int height) {
  if (const int status = checkImage(width, height, srcDst)) return status;
  int status = kStatusOk;
  for (int y = 0; y < height; ++y) {
    float* p = row(srcDst, srcDstStep, y);
    int zeros = 0;
    int negatives = 0;
    for (int x = 0; x < width; ++x) {
      zeros |= p[x] == 0.0f;
      negatives |= p[x] < 0.0f;
      p[x] = lnElement(p[x]);
    }
    if (status != kStatusOk) continue;
    if (zeros != 0) status = kStatusLnOfZero;
    if (negatives != 0) status = kStatusLnOfNegative;
  }
  return status;
}

}  // namespace vx::prim::VX_VARIANT
