#ifndef VXICORE26_H
#define VXICORE26_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct NoiseProfile {
    float lumaLevel, lumaNoise, lumaReserved;
    float chromaLevel, chromaNoise, chromaReserved;
} NoiseProfile;

typedef void* (*VxHostAlloc)(size_t size, void* hostContext);
typedef void  (*VxHostFree)(void* block, void* hostContext);
typedef int   (*VxProgress)(int position, int total, void* hostContext);   /* 0 cancels */

int vxAdjustRgb(void* pixels, int format, int rowStep, int width, int height, int previewScale,
                VxHostAlloc hostAlloc, VxHostFree hostFree, VxProgress progress, void* hostContext,
                float lumaEqAmount, float lumaEqRadius, float lumaEqPeakGain, float lumaGamma,
                float lumaEqTopCut, float lumaEqFloor,
                float lumaDetailRange, float lumaDetailRadius, float lumaDetailGamma, float lumaDetailGain,
                float sharpenAmount,
                float satEqAmount, float satEqRadius, float satContrast, float satGamma, float hueShift,
                float denoiseStrength, const NoiseProfile* noiseProfile, float grainRestore,
                float unblockStrength, int denoiseMode);

int vxUnblock(int deep, void* pixels, int pixelStep, int rowStep, int width, int height,
              int quality, int jpegMode, int shiftStep, int reserved);

int vxDenoiseEstNoise(const void* pixels, int format, int rowStep, int width, int height,
                      NoiseProfile* noiseProfile);

int vxYUVEdgeRGB(int deep, void* pixels, int rowStep, int width, int height,
                 double baseGain, double rangeFloor, double blurSigmaX, double blurSigmaY, double adaptiveGain,
                 double chromaBlurX, double chromaBlurY, int chromaShiftX, int chromaShiftY,
                 double alignSigmaX, double alignSigmaY, double alignThreshold, int edgeReserved);

int  vxSetupLib(int mask, const char* folder);
void setDebugTrace(int mask, const char* folder);

#ifdef __cplusplus
}
#endif

#endif
