#include "adjust/adjust_driver.h"
#include "frame/exports/export.h"
#include "prim/float_mode.h"
#include "vxicore26.h"

VX_EXPORT int vxAdjustRgb(void* pixels, int format, int rowStep, int width, int height,
                          int previewScale, VxHostAlloc hostAlloc, VxHostFree hostFree,
                          VxProgress progress, void* hostContext, float lumaEqAmount,
                          float lumaEqRadius, float lumaEqPeakGain, float lumaGamma,
                          float lumaEqTopCut, float lumaEqFloor, float lumaDetailRange,
                          float lumaDetailRadius, float lumaDetailGamma, float lumaDetailGain,
                          float sharpenAmount, float satEqAmount, float satEqRadius,
                          float satContrast, float satGamma, float hueShift, float denoiseStrength,
                          const NoiseProfile* noiseProfile, float grainRestore,
                          float unblockStrength, int denoiseMode) {
  const vx::prim::FloatModeGuard floatMode;
  const vx::HostCallbacks host(hostAlloc, hostFree, progress, hostContext, floatMode);
  const vx::HostImage image = {pixels, format, rowStep, width, height};
  const vx::AdjustSettings settings = {.previewScale = previewScale,
                                       .lumaEqAmount = lumaEqAmount,
                                       .lumaEqRadius = lumaEqRadius,
                                       .lumaEqPeakGain = lumaEqPeakGain,
                                       .lumaGamma = lumaGamma,
                                       .lumaEqTopCut = lumaEqTopCut,
                                       .lumaEqFloor = lumaEqFloor,
                                       .lumaDetailRange = lumaDetailRange,
                                       .lumaDetailRadius = lumaDetailRadius,
                                       .lumaDetailGamma = lumaDetailGamma,
                                       .lumaDetailGain = lumaDetailGain,
                                       .sharpenAmount = sharpenAmount,
                                       .satEqAmount = satEqAmount,
                                       .satEqRadius = satEqRadius,
                                       .satContrast = satContrast,
                                       .satGamma = satGamma,
                                       .hueShift = hueShift,
                                       .denoiseStrength = denoiseStrength,
                                       .noiseProfile = noiseProfile,
                                       .grainRestore = grainRestore,
                                       .unblockStrength = unblockStrength,
                                       .denoiseMode = denoiseMode};
  return vx::adjustRgb(image, host, settings);
}
