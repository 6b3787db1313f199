#include "adjust/unblock_stage.h"

#include <algorithm>

#include "frame/to_int.h"
#include "prim/arith.h"
#include "prim/convert.h"
#include "vxicore26.h"

namespace vx {

int unblockQuality(float strength) {
  const int quality = toInt(100.0f - strength * 85.0f) & 255;
  return std::clamp(quality, 1, 99);
}

bool unblockActive(const AdjustSettings& settings) {
  return static_cast<double>(settings.unblockStrength) > 0.02 && settings.previewScale == 1;
}

void removeBlockArtifacts(IMG3<float>& image, const AdjustSettings& settings) {
  if (!unblockActive(settings)) return;
  const int w = image.roiWidth, h = image.roiHeight;
  IMG3<unsigned char> bytes(w, h);
  if (bytes.data == nullptr || image.data == nullptr) return;
  const float up[] = {255.0f, 255.0f, 255.0f};
  const float down[] = {0.003921569f, 0.003921569f, 0.003921569f};
  prim::primMulC_32f_C3IR(up, image.data, image.step, w, h);
  prim::primConvert_32f8u_C3R(image.data, image.step, bytes.data, bytes.step, w, h,
                              prim::primRndNear);
  constexpr int kHalfWidthChroma = 1, kEveryShift = 1;
  vxUnblock(0, bytes.data, 3, bytes.step, w, h, unblockQuality(settings.unblockStrength),
            kHalfWidthChroma, kEveryShift, 0);
  prim::primConvert_8u32f_C3R(bytes.data, bytes.step, image.data, image.step, w, h);
  prim::primMulC_32f_C3IR(down, image.data, image.step, w, h);
}

}  // namespace vx
