#pragma once

#include "prim/types.h"

namespace vx::prim {

int primAdd_8u_C1RSfs(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                      int src2Step, std::uint8_t* dst, int dstStep, int width, int height,
                      int scaleFactor);
int primAdd_8u_C1IRSfs(const std::uint8_t* src, int srcStep, std::uint8_t* srcDst, int srcDstStep,
                       int width, int height, int scaleFactor);
int primSub_8u_C1IRSfs(const std::uint8_t* src, int srcStep, std::uint8_t* srcDst, int srcDstStep,
                       int width, int height, int scaleFactor);
int primSub_16s_C1IRSfs(const std::int16_t* src, int srcStep, std::int16_t* srcDst, int srcDstStep,
                        int width, int height, int scaleFactor);
int primSubC_8u_C1IRSfs(std::uint8_t value, std::uint8_t* srcDst, int srcDstStep, int width,
                        int height, int scaleFactor);
int primAddC_16s_C1IRSfs(std::int16_t value, std::int16_t* srcDst, int srcDstStep, int width,
                         int height, int scaleFactor);
int primAbs_16s_C1IR(std::int16_t* srcDst, int srcDstStep, int width, int height);
int primAbsDiff_8u_C1R(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                       int src2Step, std::uint8_t* dst, int dstStep, int width, int height);
int primAddProduct_8u32f_C1IR(const std::uint8_t* src1, int src1Step, const std::uint8_t* src2,
                              int src2Step, float* srcDst, int srcDstStep, int width, int height);

}  // namespace vx::prim
