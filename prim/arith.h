#pragma once

#include "prim/types.h"

namespace vx::prim {

int primAdd_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);
int primAdd_32f_C3IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);
int primAdd_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                    int dstStep, int width, int height);
int primSub_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);
int primSub_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                    int dstStep, int width, int height);
int primMul_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);
int primDiv_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                     int height);
int primAddC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height);
int primAddC_32f_C3IR(const float* value, float* srcDst, int srcDstStep, int width, int height);
int primSubC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height);
int primSubC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, int width,
                     int height);
int primMulC_32f_C1IR(float value, float* srcDst, int srcDstStep, int width, int height);
int primMulC_32f_C3IR(const float* value, float* srcDst, int srcDstStep, int width, int height);
int primMulC_32f_C1R(const float* src, int srcStep, float value, float* dst, int dstStep, int width,
                     int height);
int primAbs_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, int width, int height);
int primAbs_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);
int primAbsDiff_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step,
                        float* dst, int dstStep, int width, int height);
int primSqr_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);
int primExp_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);
int primLn_32f_C1IR(float* srcDst, int srcDstStep, int width, int height);

}  // namespace vx::prim
