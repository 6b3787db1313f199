#pragma once

#include "prim/types.h"

namespace vx::prim {

int primvSet_32f(float value, float* dst, int length);
int primvZero_32f(float* dst, int length);
int primvCopy_32f(const float* src, float* dst, int length);
int primvAdd_32f_I(const float* src, float* srcDst, int length);
int primvAddC_32f_I(float value, float* srcDst, int length);
int primvSubC_32f_I(float value, float* srcDst, int length);
int primvMulC_32f_I(float value, float* srcDst, int length);
int primvDiv_32f_I(const float* src, float* srcDst, int length);
int primvSqr_32f_I(float* srcDst, int length);
int primvMagnitude_32fc(const Complex32f* src, float* dst, int length);
int primvMul_32fc_I(const Complex32f* src, Complex32f* srcDst, int length);
int primvMul_32f32fc_I(const float* src, Complex32f* srcDst, int length);
int primvThreshold_GT_32f_I(float* srcDst, int length, float level);
int primvThreshold_LT_32f_I(float* srcDst, int length, float level);

}  // namespace vx::prim
